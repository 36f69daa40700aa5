#pragma once

// Bitmaps for cropping: the box of what stands out from the background, and wiping to zero.
// Pure functions, any thread.

#include <QImage>
#include <QRect>

// The box of the pixels that differ from the background (the pixel at (2, 2)) and have enough
// differing neighbours, so that lone specks and small blots are ignored. Pixel units, origin at
// the lower-left corner (y upward). The zero rect when nothing stands out or the image is
// smaller than 5 by 5 pixels.
QRect foregroundRect(const QImage &image);

// Sets every byte of the image to 0.
void clear(QImage &image);
