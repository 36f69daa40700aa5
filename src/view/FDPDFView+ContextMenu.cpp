// FDPDFView: the view's own context menu and the commands that act at the click's place.

#include "FDPDFView.h"

#include "PDFViewDelegate2.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/PDFSelection+XExtensions.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <kit/base/Pasteboard.h>
#include <kit/base/Workspace.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationLink.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QContextMenuEvent>
#include <QMenu>

namespace {

constexpr int LinkTitleLength = 40;

std::optional<QPointF> clickPointOf(const QAction &action)
{
    if (action.data().typeId() == QMetaType::QPointF)
        return action.data().toPointF();
    return std::nullopt;
}

QAction *addItem(QMenu &menu, const QString &title, const char *command, const QVariant &data = {})
{
    QAction *const action = menu.addAction(title);
    action->setObjectName(QLatin1String(command));
    action->setData(data);
    return action;
}

QString quotedURL(const QUrl &url)
{
    QString text = url.toString();
    if (text.size() > LinkTitleLength)
        text = text.left(LinkTitleLength) + QStringLiteral("...");
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

QMenu *FDPDFView::menuForEvent(const QPointF &viewPoint)
{
    auto *const menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("PDFViewContextMenu"));
    const auto page = pageForPoint(viewPoint, true);
    const auto annotation
        = page ? page->annotationAtPoint(convertPointToPage(viewPoint, page)) : nullptr;
    const auto *const link = dynamic_cast<const PDFAnnotationLink *>(annotation.get());
    const bool linkWithURL = annotation && isLink(*annotation) && link && !link->URL().isEmpty();
    const auto selection = currentSelection();
    const bool hasText = selection && hasCharacters(*selection);
    const QVariant point = QVariant::fromValue(viewPoint);
    if (annotation && isValid(*annotation)) {
        setSelectedAnn(annotation);
        addItem(*menu, tr("Copy"), "copy:");
        menu->addSeparator();
        addItem(*menu, tr("Delete"), "delete:");
    } else if (linkWithURL) {
        const QVariant url = QVariant::fromValue(link->URL());
        addItem(*menu, tr("Open Link: %1").arg(quotedURL(link->URL())), "openLink:", url);
        addItem(*menu, tr("Copy Link: %1").arg(quotedURL(link->URL())), "copyLink:", url);
        menu->addSeparator();
    } else if (hasText) {
        addItem(*menu, tr("Copy"), "copy:");
        menu->addSeparator();
        addItem(*menu, tr("Highlight"), "onAddHighlight");
        addItem(*menu, tr("Underline"), "onAddUnderline");
        addItem(*menu, tr("Strikeout"), "onAddStrikeout");
    } else {
        addItem(*menu, tr("Paste"), "paste:", point);
        menu->addSeparator();
        addItem(*menu, tr("Add Note"), "onAddText:", point);
        addItem(*menu, tr("Add Text"), "onAddFreeText:", point);
    }
    menu->addSeparator();
    addItem(*menu, tr("Add Bookmark"), "onAddBookmark:", point);
    addItem(*menu, tr("Add Outline Item"), "onAddOutline:", point);
    if (hasText)
        menu->addSeparator();
    for (QAction *const action : menu->actions()) {
        if (action->isSeparator())
            continue;
        action->setEnabled(validateMenuAction(*action));
        connect(action, &QAction::triggered, this, [this, action] { performMenuAction(*action); });
    }
    return menu;
}

void FDPDFView::contextMenuEvent(QContextMenuEvent *event)
{
    // From the global point: the event comes from the viewport or, by key, from the view.
    QMenu *const menu = menuForEvent(QPointF(viewport()->mapFromGlobal(event->globalPos())));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
    event->accept();
}

bool FDPDFView::validateMenuAction(const QAction &action) const
{
    const QString command = action.objectName();
    if (command == QLatin1String("onAddBookmark:")) {
        const auto page
            = std::dynamic_pointer_cast<FDPage>(placeOfCommand(clickPointOf(action)).page);
        if (page)
            return !page->isBookmarked();
        return false;
    }
    if (command == QLatin1String("copy:")) {
        const auto selection = currentSelection();
        return selectedAnn() || (selection && hasCharacters(*selection));
    }
    if (command == QLatin1String("cut:") || command == QLatin1String("paste:"))
        return validateEditCommand(command);
    if (command == QLatin1String("delete:") || command == QLatin1String("selectAll:")
        || command == QLatin1String("deselectAll:"))
        return validateMenuItem(command);
    return true;
}

void FDPDFView::performMenuAction(const QAction &action)
{
    const QString command = action.objectName();
    const std::optional<QPointF> point = clickPointOf(action);
    if (command == QLatin1String("copy:"))
        copyCommand();
    else if (command == QLatin1String("delete:"))
        delete_();
    else if (command == QLatin1String("paste:"))
        pasteCommand(point);
    else if (command == QLatin1String("openLink:"))
        Workspace::openURL(action.data().toUrl());
    else if (command == QLatin1String("copyLink:") && !action.data().toUrl().isEmpty()) {
        Pasteboard::general().clearContents();
        Pasteboard::general().setString(action.data().toUrl().toString());
    } else if (command == QLatin1String("onAddHighlight"))
        onAddHighlight();
    else if (command == QLatin1String("onAddUnderline"))
        onAddUnderline();
    else if (command == QLatin1String("onAddStrikeout"))
        onAddStrikeout();
    else if (command == QLatin1String("onAddText:"))
        onAddText(point);
    else if (command == QLatin1String("onAddFreeText:"))
        onAddFreeText(point);
    else if (command == QLatin1String("onAddBookmark:"))
        onAddBookmark(point);
    else if (command == QLatin1String("onAddOutline:") && delegate2())
        delegate2()->PDFViewPerformAddOutline(this);
}

void FDPDFView::onAddFreeText(const std::optional<QPointF> &clickPoint)
{
    const CommandPlace place = placeOfCommand(clickPoint);
    if (place.page)
        addAnnotationWithType(
            QStringLiteral("FreeText"), place.page, QRectF(place.point, QSizeF(100.0, 30.0)));
}

void FDPDFView::onAddText(const std::optional<QPointF> &clickPoint)
{
    const CommandPlace place = placeOfCommand(clickPoint);
    if (place.page)
        addAnnotationWithType(QStringLiteral("Text"), place.page, QRectF(place.point, QSizeF()));
}

void FDPDFView::onAddBookmark(const std::optional<QPointF> &clickPoint)
{
    bookmarkPage(placeOfCommand(clickPoint).page);
}
