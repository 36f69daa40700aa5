#include "PDFTileCache.h"

#include <kit/base/BackgroundQueue.h>

#include <algorithm>
#include <cmath>

PDFTileCache::PDFTileCache(qint64 pixelBudget)
    : m_budget(pixelBudget)
{ }

void PDFTileCache::setPixelBudget(qint64 pixels)
{
    m_budget = std::max<qint64>(pixels, 0);
    trim();
}

void PDFTileCache::insert(const PDFTileKey &key, const QImage &image)
{
    if (image.isNull())
        return;
    erase(key);
    m_uses.push_back(key);
    m_entries.emplace(key, Entry { image, std::prev(m_uses.end()) });
    m_byPage[key.page].push_back(key);
    m_pixels += qint64(image.width()) * image.height();
    trim();
}

const QImage *PDFTileCache::find(const PDFTileKey &key)
{
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return nullptr;
    m_uses.splice(m_uses.end(), m_uses, found->second.use);
    return &found->second.image;
}

const QImage *PDFTileCache::peek(const PDFTileKey &key) const
{
    const auto found = m_entries.find(key);
    return found == m_entries.end() ? nullptr : &found->second.image;
}

std::vector<PDFTileCache::Candidate> PDFTileCache::standIns(
    const void *page, quint64 revision, qint64 scale) const
{
    std::vector<Candidate> result;
    const auto found = m_byPage.find(page);
    if (found == m_byPage.end())
        return result;
    // Rank groups of (revision, scale): the current revision beats older ones, then the scale
    // nearest in ratio, a finer one winning a tie.
    const auto rank = [&](const PDFTileKey &key) {
        const double ratio
            = std::abs(std::log(double(key.scale) / double(std::max<qint64>(scale, 1))));
        return std::make_tuple(key.revision == revision ? 0 : 1, ratio, key.scale < scale ? 1 : 0);
    };
    // Each rank is worked out once, not at every comparison of the sort.
    std::vector<std::pair<std::tuple<int, double, int>, Candidate>> ranked;
    for (const PDFTileKey &key : found->second) {
        if (key.revision == revision && key.scale == scale)
            continue;
        ranked.push_back({ rank(key), Candidate { key, &m_entries.at(key).image } });
    }
    std::sort(ranked.begin(), ranked.end(),
        [](const auto &a, const auto &b) { return a.first > b.first; });
    result.reserve(ranked.size());
    for (auto &entry : ranked)
        result.push_back(entry.second);
    return result;
}

void PDFTileCache::removeOtherRevisions(const void *page, quint64 revision)
{
    const auto found = m_byPage.find(page);
    if (found == m_byPage.end())
        return;
    // Called for every drawn page at every finished tile: usually nothing is stale, and then
    // nothing is copied.
    std::vector<PDFTileKey> stale;
    for (const PDFTileKey &key : found->second) {
        if (key.revision != revision)
            stale.push_back(key);
    }
    for (const PDFTileKey &key : stale)
        erase(key);
    letGoOfEvicted();
}

void PDFTileCache::clear()
{
    for (auto &entry : m_entries)
        m_evicted.push_back(std::move(entry.second.image));
    letGoOfEvicted();
    m_entries.clear();
    m_byPage.clear();
    m_uses.clear();
    m_pixels = 0;
}

// By value: the key may be the element of m_uses that this removes.
void PDFTileCache::erase(PDFTileKey key)
{
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return;
    m_pixels -= qint64(found->second.image.width()) * found->second.image.height();
    m_evicted.push_back(std::move(found->second.image));
    m_uses.erase(found->second.use);
    m_entries.erase(found);
    auto page = m_byPage.find(key.page);
    auto &keys = page->second;
    keys.erase(std::find(keys.begin(), keys.end(), key));
    if (keys.empty())
        m_byPage.erase(page);
}

void PDFTileCache::trim()
{
    while (m_pixels > m_budget && !m_uses.empty())
        erase(m_uses.front());
    letGoOfEvicted();
}

void PDFTileCache::letGoOfEvicted()
{
    if (m_evicted.empty())
        return;
    // Freeing a tile's pixels may hand pages back to the system, which every core then has to
    // forget: on the main thread that costs a frame now and then while scrolling.
    BackgroundQueue::dispose(std::move(m_evicted));
    m_evicted.clear();
}
