#pragma once

// Renders page tiles on worker threads, never on the main thread. The view hands it the whole
// set of tiles it wants, in order of need; whatever left the set is cancelled, display lists are
// built once per page and revision and shared by the tiles, and each finished tile arrives on the
// main thread by a queued signal. The object itself lives on the main thread.

#include "PDFTileKey.h"

#include <QImage>
#include <QObject>
#include <QSize>
#include <QThreadPool>
#include <QTimer>

#include <memory>
#include <vector>

class PDFPageRenderSource;

struct PDFTileRequest
{
    PDFTileKey key;
    QSize pagePixels; // the page's size in device pixels at the key's scale
    std::shared_ptr<PDFPageRenderSource> source;
    // On screen now: rendered at the process's own priority, while tiles for later wait behind
    // whatever else the machine runs.
    bool shown = false;
    // The tile's top rows that are on screen, when the screen's edge cuts the tile: drawn first,
    // and handed over by tileTopDrawn before the rest. 0: the whole tile counts.
    int shownRows = 0;
};

class PDFRenderScheduler : public QObject
{
    Q_OBJECT

public:
    // threads 0: as many as the machine has cores, at most four.
    explicit PDFRenderScheduler(QObject *parent = nullptr, int threads = 0);
    ~PDFRenderScheduler() override;

    // Replaces what is wanted: requests run in the order given; running work on tiles that are
    // no longer wanted is cancelled.
    void setRequests(std::vector<PDFTileRequest> requests);
    // Forgets the page's display lists and cancels its work (its content changed).
    void invalidatePage(const void *page);
    // Keeps the display lists of these pages (those on screen, whose tiles a scroll within them
    // needs); any other page's list goes as soon as no tile of it waits or renders, since a
    // list holds the fonts, pictures and shadings of its page.
    void keepListsOf(const std::vector<const void *> &pages);
    void cancelAll();
    // No tile waits or renders.
    bool isIdle() const;
    // Display lists built so far, for tests and benchmarks.
    int displayListsBuilt() const;

signals:
    void tileFinished(const PDFTileKey &key, const QImage &image);
    // The top rows of a tile still being drawn, those its request had on screen: a copy, which
    // tileFinished's whole tile replaces soon after.
    void tileTopDrawn(const PDFTileKey &key, const QImage &image);
    // The page could not be recorded or drawn at that revision.
    void pageFailed(const void *page, quint64 revision);

private:
    struct State;
    class Worker;
    // Invoked from the workers, queued, on the main thread.
    Q_INVOKABLE void pump();
    Q_INVOKABLE void takeFinished();
    Q_INVOKABLE void workersIdle();

    std::shared_ptr<State> m_state;
    QThreadPool m_pool; // threads of lowered priority
    QThreadPool m_shownPool; // threads of normal priority, for shown tiles only
    QTimer m_giveBackTimer; // restarted whenever the workers go idle
};
