#include "PDFPageAccessible.h"

#include "PDFView.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QTextBoundaryFinder>

PDFPageAccessible::PDFPageAccessible(
    PDFView *view, QAccessibleInterface *parent, const std::shared_ptr<PDFPage> &page)
    : m_view(view)
    , m_parent(parent)
    , m_page(page)
{ }

bool PDFPageAccessible::isValid() const
{
    const auto document = m_view ? m_view->document() : nullptr;
    return document && document->indexForPage(m_page) >= 0;
}

QWindow *PDFPageAccessible::window() const
{
    return m_parent->window();
}

QString PDFPageAccessible::text(QAccessible::Text t) const
{
    if (!isValid())
        return {};
    if (t == QAccessible::Name)
        return PDFView::tr("Page %1").arg(m_page->label());
    if (t == QAccessible::Value)
        return pageText();
    return {};
}

QRect PDFPageAccessible::rect() const
{
    if (!isValid())
        return {};
    const QRect local
        = m_view->convertRectFromPage(m_page->boundsForBox(m_view->displayBox()), m_page)
              .toAlignedRect();
    return QRect(m_view->viewport()->mapToGlobal(local.topLeft()), local.size());
}

QAccessible::State PDFPageAccessible::state() const
{
    QAccessible::State s;
    s.readOnly = true;
    s.multiLine = true;
    s.selectableText = true;
    if (m_view
        && !rect().intersects(
            QRect(m_view->viewport()->mapToGlobal(QPoint(0, 0)), m_view->viewport()->size())))
        s.offscreen = true;
    return s;
}

void *PDFPageAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                              : nullptr;
}

QString PDFPageAccessible::pageText() const
{
    return isValid() ? m_page->string() : QString();
}

int PDFPageAccessible::characterCount() const
{
    return int(pageText().size());
}

QString PDFPageAccessible::text(int startOffset, int endOffset) const
{
    const QString all = pageText();
    const int start = std::clamp(startOffset, 0, int(all.size()));
    const int end = endOffset < 0 ? int(all.size()) : std::clamp(endOffset, start, int(all.size()));
    return all.mid(start, end - start);
}

std::pair<int, int> PDFPageAccessible::unitAt(
    int offset, QAccessible::TextBoundaryType boundaryType) const
{
    const QString all = pageText();
    const int size = int(all.size());
    if (offset < 0 || offset >= size)
        return { size, size };
    switch (boundaryType) {
    case QAccessible::CharBoundary:
        return { offset, offset + 1 };
    case QAccessible::NoBoundary:
        return { 0, size };
    case QAccessible::LineBoundary:
    case QAccessible::ParagraphBoundary: {
        // The layout ends each line with a line break, which belongs to its line.
        const int start = offset == 0 ? 0 : int(all.lastIndexOf(QLatin1Char('\n'), offset - 1)) + 1;
        const int br = int(all.indexOf(QLatin1Char('\n'), offset));
        return { start, br < 0 ? size : br + 1 };
    }
    case QAccessible::WordBoundary:
    case QAccessible::SentenceBoundary: {
        QTextBoundaryFinder finder(boundaryType == QAccessible::WordBoundary
                ? QTextBoundaryFinder::Word
                : QTextBoundaryFinder::Sentence,
            all);
        finder.setPosition(offset);
        const int start = finder.isAtBoundary() ? offset : int(finder.toPreviousBoundary());
        finder.setPosition(offset);
        const int end = int(finder.toNextBoundary());
        return { std::max(0, start), end < 0 ? size : end };
    }
    }
    return { offset, offset + 1 };
}

QString PDFPageAccessible::textAtOffset(
    int offset, QAccessible::TextBoundaryType boundaryType, int *startOffset, int *endOffset) const
{
    const auto [start, end] = unitAt(offset, boundaryType);
    *startOffset = start;
    *endOffset = end;
    return text(start, end);
}

QString PDFPageAccessible::textBeforeOffset(
    int offset, QAccessible::TextBoundaryType boundaryType, int *startOffset, int *endOffset) const
{
    const int current = unitAt(std::min(offset, characterCount() - 1), boundaryType).first;
    if (current <= 0) {
        *startOffset = *endOffset = 0;
        return {};
    }
    return textAtOffset(current - 1, boundaryType, startOffset, endOffset);
}

QString PDFPageAccessible::textAfterOffset(
    int offset, QAccessible::TextBoundaryType boundaryType, int *startOffset, int *endOffset) const
{
    const int next = unitAt(offset, boundaryType).second;
    return textAtOffset(next, boundaryType, startOffset, endOffset);
}

int PDFPageAccessible::selectionCount() const
{
    const auto selection = m_view && isValid() ? m_view->currentSelection() : nullptr;
    return selection ? selection->numberOfTextRangesOnPage(m_page) : 0;
}

void PDFPageAccessible::selection(int selectionIndex, int *startOffset, int *endOffset) const
{
    *startOffset = *endOffset = 0;
    if (selectionIndex < 0 || selectionIndex >= selectionCount())
        return;
    const PDFTextRange range = m_view->currentSelection()->rangeAtIndex(selectionIndex, m_page);
    *startOffset = range.location;
    *endOffset = range.end();
}

void PDFPageAccessible::addSelection(int startOffset, int endOffset)
{
    setSelection(0, startOffset, endOffset);
}

void PDFPageAccessible::removeSelection(int selectionIndex)
{
    if (selectionIndex >= 0 && selectionIndex < selectionCount())
        m_view->clearSelection();
}

void PDFPageAccessible::setSelection(int, int startOffset, int endOffset)
{
    if (!isValid())
        return;
    const int size = characterCount();
    const int start = std::clamp(std::min(startOffset, endOffset), 0, size);
    const int end = std::clamp(std::max(startOffset, endOffset), 0, size);
    if (end <= start) {
        m_view->clearSelection();
        return;
    }
    m_view->setCurrentSelection(m_page->selectionForRange({ start, end - start }));
}

void PDFPageAccessible::setCursorPosition(int position)
{
    m_caret = std::clamp(position, 0, characterCount());
}

QRect PDFPageAccessible::characterRect(int offset) const
{
    if (!isValid() || offset < 0 || offset >= characterCount())
        return {};
    const QRect local = m_view->convertRectFromPage(m_page->characterBoundsAtIndex(offset), m_page)
                            .toAlignedRect();
    return QRect(m_view->viewport()->mapToGlobal(local.topLeft()), local.size());
}

int PDFPageAccessible::offsetAtPoint(const QPoint &point) const
{
    if (!isValid())
        return -1;
    const QPointF local = m_view->viewport()->mapFromGlobal(QPointF(point));
    return m_page->characterIndexAtPoint(m_view->convertPointToPage(local, m_page));
}

void PDFPageAccessible::scrollToSubstring(int startIndex, int endIndex)
{
    if (!isValid() || startIndex < 0 || startIndex >= characterCount())
        return;
    QRectF bounds = m_page->characterBoundsAtIndex(startIndex);
    if (endIndex > startIndex && endIndex <= characterCount())
        bounds = bounds.united(m_page->characterBoundsAtIndex(endIndex - 1));
    m_view->goToRect(bounds, m_page);
}

QString PDFPageAccessible::attributes(int offset, int *startOffset, int *endOffset) const
{
    // The layout carries no styles: one run over the whole text.
    *startOffset = 0;
    *endOffset = offset < 0 ? 0 : characterCount();
    return {};
}
