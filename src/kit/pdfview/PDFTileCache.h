#pragma once

// Rendered tiles kept for reuse, bounded by a budget of pixels rather than pages: the least
// recently used tiles go first. Tiles of other scales or older revisions of a page stand in,
// stretched, while the exact ones render. Main thread only.

#include "PDFTileKey.h"

#include <QImage>

#include <list>
#include <unordered_map>
#include <vector>

class PDFTileCache
{
public:
    explicit PDFTileCache(qint64 pixelBudget = 32LL * 1024 * 1024);

    void setPixelBudget(qint64 pixels);
    qint64 pixelBudget() const { return m_budget; }
    qint64 pixelCount() const { return m_pixels; }
    int tileCount() const { return static_cast<int>(m_entries.size()); }

    void insert(const PDFTileKey &key, const QImage &image);
    // The exact tile, marked as recently used; null when absent.
    const QImage *find(const PDFTileKey &key);
    bool contains(const PDFTileKey &key) const { return m_entries.count(key) != 0; }
    // The exact tile, leaving its place in the order of use as it is; null when absent. A tile
    // may hold only its top rows while the rest is drawn.
    const QImage *peek(const PDFTileKey &key) const;

    struct Candidate
    {
        PDFTileKey key;
        const QImage *image = nullptr;
    };
    // Tiles of the page that can stand in for its tiles at (revision, scale): other scales of the
    // same revision first, nearest scale first, then older revisions. Best candidates come last,
    // so that drawing them in order leaves the best on top.
    std::vector<Candidate> standIns(const void *page, quint64 revision, qint64 scale) const;

    // Drops the page's tiles of other revisions.
    void removeOtherRevisions(const void *page, quint64 revision);
    void clear();

private:
    struct Entry
    {
        QImage image;
        std::list<PDFTileKey>::iterator use;
    };
    void erase(PDFTileKey key);
    void trim();
    // The tiles erase() took out are freed off this thread.
    void letGoOfEvicted();

    qint64 m_budget;
    qint64 m_pixels = 0;
    std::unordered_map<PDFTileKey, Entry, PDFTileKeyHash> m_entries;
    std::unordered_map<const void *, std::vector<PDFTileKey>> m_byPage;
    std::list<PDFTileKey> m_uses; // most recent at the back
    std::vector<QImage> m_evicted;
};
