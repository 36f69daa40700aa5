#include "FDPage.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <kit/engine/PDFAnnotation.h>

#include <QUuid>

const QString &FDPage::uuid() const
{
    if (!m_isUUIDInited) {
        m_uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        m_isUUIDInited = true;
    }
    return m_uuid;
}

void FDPage::sanitizeAnnotations()
{
    // A copy: changing an annotation must not disturb the walk.
    const auto list = annotations();
    for (const auto &annotation : list) {
        if (!annotation->color().isValid())
            annotation->setValueForKeyInMemory(QColor(0, 0, 0, 0), QStringLiteral("color"));
    }
}

void FDPage::didLoadAnnotations()
{
    sanitizeAnnotations();
}

BezierPath FDPage::createBookmarkIndicatorPathWithScale(double scale, QSizeF pageSize)
{
    const double width = BookmarkIndicatorWidth * scale;
    const double height = BookmarkIndicatorHeight * scale;
    BezierPath path;
    path.moveTo({ 0, 0 });
    path.lineTo({ width / 2, height / 3 });
    path.lineTo({ width, 0 });
    path.lineTo({ width, height });
    path.lineTo({ 0, height });
    path.lineTo({ 0, 0 });
    path.closePath();
    path.transform(QTransform::fromTranslate(
        pageSize.width() - width - BookmarkIndicatorRightOffset, pageSize.height() - height));
    return path;
}

QRectF FDPage::bookmarkIndicatorHotAreaWithScale(double scale, QSizeF pageSize)
{
    const double width = BookmarkIndicatorWidth * scale + 50;
    const double height = BookmarkIndicatorHeight * scale + 20;
    return QRectF(pageSize.width() - width, pageSize.height() - height, width, height);
}

QImage FDPage::thumbnailWith(QSizeF size, PDFDisplayBox box) const
{
    return thumbnailSourceWith(size, box).render();
}

PageThumbnail FDPage::thumbnailSourceWith(QSizeF size, PDFDisplayBox box) const
{
    PageThumbnail thumbnail
        = PageThumbnail::plain(*this, std::max(size.width(), size.height()), box);
    const FDTheme *theme = FDThemeProvider::current();
    thumbnail.setBackgroundColor(theme->color(FDTheme::pageBackgroundColor));
    const QSizeF thumbnailSize = thumbnail.size();
    if (m_isBookmarked && !thumbnailSize.isEmpty()) {
        QSizeF pageSize = boundsForBox(box).size();
        if (rotation() % 180 != 0)
            pageSize.transpose();
        const double ratio = thumbnailSize.width() / pageSize.width();
        thumbnail.setOverlayPath(createBookmarkIndicatorPathWithScale(ratio, thumbnailSize),
            theme->color(FDTheme::secondaryColor));
    }
    thumbnail.setFrame(theme->color(FDTheme::secondaryBorderColor), theme->lineWidth());
    return thumbnail;
}

std::shared_ptr<PDFAnnotation> FDPage::annotationAtPoint(const QPointF &point) const
{
    if (auto found = PDFPage::annotationAtPoint(point))
        return found;
    // Engine hit tests pass over annotations hidden from engine drawing; the overlay shows them.
    for (const std::shared_ptr<PDFAnnotation> &annotation : annotations()) {
        if (shouldDisplayOnOverlay(*annotation) && hitTest(*annotation, point))
            return annotation;
    }
    return nullptr;
}
