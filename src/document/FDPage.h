#pragma once

// The page class of every FDDocument: a page with an identity that survives moves between
// documents, a bookmark flag with the ribbon that shows it, its thumbnail, and a hit test that
// also finds the annotations the view's overlay draws. Main thread only.

#include "PageThumbnail.h"

#include <kit/base/BezierPath.h>
#include <kit/engine/PDFPage.h>

#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QString>

class FDPage : public PDFPage
{
public:
    // The bookmark ribbon at scale 1, in points; its offset from the right edge is not scaled.
    static constexpr double BookmarkIndicatorWidth = 20;
    static constexpr double BookmarkIndicatorHeight = 40;
    static constexpr double BookmarkIndicatorRightOffset = 10;

    FDPage() = default;

    // Made on first reading (upper-case UUID text), then fixed for the life of the object; not
    // stored in the file.
    const QString &uuid() const;

    bool isBookmarked() const { return m_isBookmarked; }
    void setIsBookmarked(bool isBookmarked) { m_isBookmarked = isBookmarked; }

    // The ribbon hanging from the top edge of a page of pageSize, notched at its lower end, in
    // page orientation (y up).
    static BezierPath createBookmarkIndicatorPathWithScale(double scale, QSizeF pageSize);
    // The top right area, larger than the ribbon, where the pointer reaches the ribbon.
    static QRectF bookmarkIndicatorHotAreaWithScale(double scale, QSizeF pageSize);

    // The plain thumbnail on the theme's page background, with the ribbon when bookmarked, in
    // the theme's frame. thumbnailSourceWith() fixes all of it here, for drawing on a worker.
    QImage thumbnailWith(QSizeF size, PDFDisplayBox box) const;
    PageThumbnail thumbnailSourceWith(QSizeF size, PDFDisplayBox box) const;

    // The engine's answer, else the first annotation in page order that the view's overlay draws
    // and whose hit test holds.
    std::shared_ptr<PDFAnnotation> annotationAtPoint(const QPointF &point) const override;

    // Gives the page's annotations what the view and the editor rely on, in memory only: one
    // without a colour gets a transparent one. Nothing is written, so a file that is only opened
    // and saved keeps every annotation the user did not touch as it was. Runs once per page,
    // when its annotations are first built (before its first render or any use of them).
    void sanitizeAnnotations();

protected:
    void didLoadAnnotations() override;

private:
    mutable bool m_isUUIDInited = false;
    mutable QString m_uuid;
    bool m_isBookmarked = false;
};
