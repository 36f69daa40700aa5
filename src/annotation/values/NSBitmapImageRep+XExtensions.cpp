#include "NSBitmapImageRep+XExtensions.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// A range of pixels to weigh around a candidate, clamped to the allowed band.
struct Window
{
    int x0, x1, y0, y1;
};

class ForegroundScan
{
public:
    explicit ForegroundScan(const QImage &image)
        : m_image(image.convertToFormat(QImage::Format_ARGB32))
        , m_width(m_image.width())
        , m_height(m_image.height())
        , m_background(m_image.pixel(std::min(2, m_width - 2), std::min(2, m_height - 2)))
    { }

    int width() const { return m_width; }
    int height() const { return m_height; }

    // Whether (x, y) differs from the background and enough of the window does too. A differing
    // pixel near the candidate weighs 2, one farther away 1; more than 8 in all is enough.
    bool isForegroundPixel(int x, int y, Window window, bool inner) const
    {
        if (!differs(x, y))
            return false;
        const int minX = inner ? 2 : 0, maxX = inner ? m_width - 3 : m_width - 1;
        const int minY = inner ? 2 : 0, maxY = inner ? m_height - 3 : m_height - 1;
        int score = 0;
        for (int j = std::max(window.y0, minY); j <= std::min(window.y1, maxY); ++j) {
            for (int i = std::max(window.x0, minX); i <= std::min(window.x1, maxX); ++i) {
                if (!differs(i, j))
                    continue;
                score += std::abs(i - x) > 3 ? 1 : std::abs(j - y) < 4 ? 2 : 1;
                if (score > 8)
                    return true;
            }
        }
        return false;
    }

private:
    bool differs(int x, int y) const
    {
        const QRgb pixel = reinterpret_cast<const QRgb *>(m_image.constScanLine(y))[x];
        return std::abs(qRed(pixel) - qRed(m_background)) > 2
            || std::abs(qGreen(pixel) - qGreen(m_background)) > 2
            || std::abs(qBlue(pixel) - qBlue(m_background)) > 2
            || std::abs(qAlpha(pixel) - qAlpha(m_background)) > 2;
    }

    QImage m_image;
    int m_width;
    int m_height;
    QRgb m_background;
};

} // namespace

QRect foregroundRect(const QImage &image)
{
    if (image.width() < 5 || image.height() < 5)
        return {};
    const ForegroundScan scan(image);
    const int w = scan.width();
    const int h = scan.height();
    // The two outer rows and columns are left out at first: scanners and cameras put their
    // noise there.
    int top = -1, bottom = -1, left = -1, right = -1;
    for (int y = 2; y < h - 2 && top < 0; ++y) {
        for (int x = 2; x < w - 2; ++x) {
            if (scan.isForegroundPixel(x, y, { x - 5, x + 5, y - 1, y + 5 }, true)) {
                top = bottom = y;
                left = right = x;
                break;
            }
        }
    }
    if (top < 0)
        return {};
    for (int y = h - 3, found = false; y > top && !found; --y) {
        for (int x = 2; x < w - 2; ++x) {
            if (scan.isForegroundPixel(x, y, { x - 5, x + 5, y - 5, y + 1 }, true)) {
                bottom = y;
                left = std::min(left, x);
                right = std::max(right, x);
                found = true;
                break;
            }
        }
    }
    const auto columnHit = [&](int x, Window (*window)(int, int), bool inner) {
        for (int y = top; y <= bottom; ++y) {
            if (scan.isForegroundPixel(x, y, window(x, y), inner))
                return true;
        }
        return false;
    };
    const auto leftWindow = [](int x, int y) { return Window { x - 1, x + 5, y - 5, y + 5 }; };
    const auto rightWindow = [](int x, int y) { return Window { x - 5, x + 1, y - 5, y + 5 }; };
    for (int x = 2; x < left; ++x) {
        if (columnHit(x, leftWindow, true)) {
            left = x;
            break;
        }
    }
    for (int x = w - 3; x > right; --x) {
        if (columnHit(x, rightWindow, true)) {
            right = x;
            break;
        }
    }
    // What reaches the inner margin may go on to the image's edge.
    const auto rowHit = [&](int y, Window (*window)(int, int)) {
        for (int x = 0; x < w; ++x) {
            if (scan.isForegroundPixel(x, y, window(x, y), false))
                return true;
        }
        return false;
    };
    if (top == 2) {
        for (int y = 1; y >= 0; --y) {
            if (rowHit(y, [](int x, int yy) { return Window { x - 5, x + 5, yy - 1, yy + 5 }; }))
                top = y;
        }
    }
    if (bottom == h - 3) {
        for (int y = h - 2; y < h; ++y) {
            if (rowHit(y, [](int x, int yy) { return Window { x - 5, x + 5, yy - 5, yy + 1 }; }))
                bottom = y;
        }
    }
    if (left == 2) {
        for (int x = 1; x >= 0; --x) {
            if (columnHit(x, leftWindow, false))
                left = x;
        }
    }
    if (right == w - 3) {
        for (int x = w - 2; x < w; ++x) {
            if (columnHit(x, rightWindow, false))
                right = x;
        }
    }
    return QRect(left, h - 1 - bottom, right - left + 1, bottom - top + 1);
}

void clear(QImage &image)
{
    if (!image.isNull())
        std::memset(image.bits(), 0, size_t(image.sizeInBytes()));
}
