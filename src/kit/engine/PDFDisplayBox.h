#pragma once

// The page boxes a caller can ask for; values as the platform numbers them.

enum class PDFDisplayBox {
    MediaBox = 0,
    CropBox = 1,
    BleedBox = 2,
    TrimBox = 3,
    ArtBox = 4,
};
