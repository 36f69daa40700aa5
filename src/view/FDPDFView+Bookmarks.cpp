// FDPDFView: the bookmark ribbon at the top right of each page, which the pointer previews and a
// click toggles, and the cursors of the annotation tools.

#include "FDPDFView.h"

#include <appearance/FDCursors.h>

#include <document/FDBookmark.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/BezierPath.h>
#include <kit/base/Geometry.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QMouseEvent>
#include <QTransform>

#include <map>

const QString FDPDFView::BookmarkHotAreaDidChangeNotification
    = QStringLiteral("kPDFViewBookmarkHotAreaDidChangeNotification");

namespace {

// A title made from the page's text takes at most this many characters.
constexpr int TitleLength = 30;

// The page as an FDPage of an FDDocument, which alone have bookmarks.
std::shared_ptr<FDPage> bookmarkablePage(
    const std::shared_ptr<FDDocument> &document, const std::shared_ptr<PDFPage> &page)
{
    if (!document || !page || document->indexForPage(page) < 0)
        return nullptr;
    return std::dynamic_pointer_cast<FDPage>(page);
}

} // namespace

QCursor FDPDFView::cursorForToolMode(int mode) const
{
    return FDCursors::cursorForToolMode(mode, devicePixelRatioF());
}

BezierPath FDPDFView::bookmarkIndicatorPathWithPage(const std::shared_ptr<PDFPage> &page) const
{
    if (!page)
        return {};
    const QRectF box = page->boundsForBox(displayBox());
    BezierPath path = FDPage::createBookmarkIndicatorPathWithScale(1.0, box.size());
    path.transform(QTransform::fromTranslate(box.x(), box.y()));
    return path;
}

QRectF FDPDFView::bookmarkIndicatorHotAreaWithPage(const std::shared_ptr<PDFPage> &page) const
{
    if (!page)
        return {};
    const QRectF box = page->boundsForBox(displayBox());
    return FDPage::bookmarkIndicatorHotAreaWithScale(1.0, box.size()).translated(box.topLeft());
}

bool FDPDFView::isMouseInBookmarkHotArea(const std::shared_ptr<PDFPage> &page) const
{
    return page && m_bookmarkHotAreaPage.lock() == page;
}

bool FDPDFView::bookmarkPage(const std::shared_ptr<PDFPage> &page)
{
    const auto current = fdDocument();
    const auto fdPage = bookmarkablePage(current, page);
    // A page without text gets no bookmark.
    if (!fdPage || fdPage->string().isNull())
        return false;
    QString title;
    const auto selection = currentSelection();
    if (selection && !selection->string().isEmpty()) {
        title = selection->string();
    } else {
        const QString text = fdPage->string();
        title = (text.size() <= TitleLength ? text : text.left(TitleLength)).trimmed();
    }
    if (title.isEmpty())
        title = FDDocument::untitledTitle();
    return current->addBookmarkWith(fdPage, title);
}

bool FDPDFView::hitBookmarkIndicatorWithPoint(QPointF point, const std::shared_ptr<PDFPage> &page)
{
    const auto current = fdDocument();
    const auto fdPage = bookmarkablePage(current, page);
    if (!fdPage || !bookmarkIndicatorPathWithPage(page).containsPoint(point))
        return false;
    if (const auto bookmark = current->bookmarkFor(page))
        current->removeBookmark(bookmark);
    else
        bookmarkPage(page);
    setNeedsDisplayInRect(bookmarkIndicatorHotAreaWithPage(page), page);
    return true;
}

void FDPDFView::mouseMoveEvent(QMouseEvent *event)
{
    XPDFView::mouseMoveEvent(event);
    std::shared_ptr<PDFPage> hot;
    if (event->buttons() == Qt::NoButton) {
        const auto page = pageForPoint(event->position(), false);
        if (page && bookmarkablePage(fdDocument(), page)
            && Geometry::pointInRect(convertPointToPage(event->position(), page),
                bookmarkIndicatorHotAreaWithPage(page)))
            hot = page;
    }
    updateBookmarkHotArea(hot);
}

bool FDPDFView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave)
        updateBookmarkHotArea(nullptr);
    return XPDFView::viewportEvent(event);
}

void FDPDFView::updateBookmarkHotArea(const std::shared_ptr<PDFPage> &page)
{
    const auto old = m_bookmarkHotAreaPage.lock();
    if (old == page)
        return;
    m_bookmarkHotAreaPage = page;
    if (old)
        setNeedsDisplayInRect(bookmarkIndicatorHotAreaWithPage(old), old);
    if (page)
        setNeedsDisplayInRect(bookmarkIndicatorHotAreaWithPage(page), page);
    NotificationCenter::defaultCenter().post(BookmarkHotAreaDidChangeNotification, this,
        { { QStringLiteral("OldPage"), QVariant::fromValue(old) },
            { QStringLiteral("Page"), QVariant::fromValue(page) } });
}
