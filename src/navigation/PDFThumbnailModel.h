#pragma once

// One row per page of a document, for the thumbnails list. A row's picture comes from the
// shared thumbnail cache or, when it is missing, is asked of the renderer, which draws it on a
// worker; the row changes when it arrives. Annotation changes of a page are counted here, so
// that they make a new picture even when the engine's drawing of the page is unchanged.
// Main thread only.

#include <kit/engine/PDFDisplayBox.h>

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QSet>
#include <QTimer>

#include <memory>

class FDDocument;
class FDPage;
class PDFThumbnailRenderer;

class PDFThumbnailModel : public QAbstractListModel
{
    Q_OBJECT

public:
    explicit PDFThumbnailModel(QObject *parent = nullptr);

    void setDocument(const std::shared_ptr<FDDocument> &document);
    std::shared_ptr<FDDocument> document() const { return m_document.lock(); }
    void setDisplayBox(PDFDisplayBox box) { m_box = box; }
    // The longer side of the pictures in pixels.
    void setPixelLength(int pixels) { m_pixelLength = pixels; }
    int pixelLength() const { return m_pixelLength; }
    PDFThumbnailRenderer *renderer() const { return m_renderer; }

    std::shared_ptr<FDPage> pageAt(int row) const;
    // The cache key of the row's picture as the page is now; empty without a page.
    QString keyForRow(int row) const;
    // The picture if it is ready; otherwise a null image, and the picture is asked for.
    QImage thumbnailForRow(int row);
    // The page's size in its box and rotation, for a placeholder of the right shape.
    QSizeF pageSizeForRow(int row) const;

    // Something on the row's page changed: its picture is drawn again.
    void pageDidChange(int row);
    // Drops the pictures asked for that are not among these keys, waiting or being drawn.
    void retainOnly(const QSet<QString> &keys);
    // Pictures asked for and not yet arrived.
    int pendingCount() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    // Rows may be dragged where the view lets them (the pages editor does).
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    // What to draw is fixed on the main thread, one page per turn while no worker draws.
    void feedRenderer();
    // Gives back what drawing pages loaded into the engine once enough pages were drawn or it
    // grew by a bound, so that scrolling through the pictures of a long document keeps memory
    // near what one stretch of pages needs.
    void releaseIfGrown();

    static constexpr int ReleaseAfterPages = 32;
    static constexpr qint64 ReleaseAfterBytes = 16 << 20;

    std::weak_ptr<FDDocument> m_document;
    PDFDisplayBox m_box = PDFDisplayBox::CropBox;
    int m_pixelLength = 240;
    PDFThumbnailRenderer *m_renderer = nullptr;
    QHash<QString, quint64> m_annotationGenerations; // by page uuid
    QList<QPair<QString, int>> m_waiting; // key and row, in the order asked
    QSet<QString> m_waitingKeys;
    QTimer *m_feedTimer = nullptr;
    int m_drawnSinceRelease = 0;
};
