#include "PDFSearchResultDelegate.h"

#include "PDFSearchResultModel.h"
#include "PDFSidebarTabContents.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QPainter>
#include <QTextLayout>

namespace {

const QColor keywordColor(210, 53, 44);

// Lays the text out in width and returns its height.
qreal layoutText(QTextLayout &layout, qreal width)
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    qreal height = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, height));
        height += line.height();
    }
    layout.endLayout();
    return height;
}

QString rowText(const QModelIndex &index)
{
    // Line breaks of the page text read as spaces in one paragraph.
    QString text = index.data(Qt::DisplayRole).toString();
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    text.replace(QLatin1Char('\r'), QLatin1Char(' '));
    return text;
}

} // namespace

PDFSearchResultDelegate::PDFSearchResultDelegate(QObject *parent)
    : PDFSidebarListDelegate(PDFSearchResultModel::IsGroupRole, 0, parent)
{ }

int PDFSearchResultDelegate::measureRowHeight(
    const QStyleOptionViewItem &option, const QModelIndex &index, int width) const
{
    QTextLayout layout(rowText(index), option.font);
    const qreal textWidth = qMax(20, width - 2 * sideMargin - 4);
    return int(std::ceil(layoutText(layout, textWidth))) + 2 * verticalMargin;
}

void PDFSearchResultDelegate::paint(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const FDTheme *const theme = FDThemeProvider::current();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect rect = option.rect;
    if (index.data(PDFSearchResultModel::IsGroupRole).toBool()) {
        // A bubble with the page number, left aligned in the header row.
        paintPageBubble(painter, option, rect.left() + sideMargin,
            index.data(PDFSearchResultModel::PageNumberRole).toString());
        painter->restore();
        return;
    }
    const bool selected = option.state & QStyle::State_Selected;
    if (selected)
        painter->fillRect(rect, option.palette.highlight());
    QTextLayout layout(rowText(index), option.font);
    const int start = index.data(PDFSearchResultModel::KeywordStartRole).toInt();
    const int length = index.data(PDFSearchResultModel::KeywordLengthRole).toInt();
    if (start >= 0 && length > 0) {
        QTextLayout::FormatRange range;
        range.start = start;
        range.length = length;
        if (selected)
            range.format.setBackground(keywordColor);
        else
            range.format.setForeground(keywordColor);
        layout.setFormats({ range });
    }
    layoutText(layout, qMax(20, rect.width() - 2 * sideMargin - 4));
    painter->setPen(
        theme->color(selected ? FDTheme::selectedTextColor : FDTheme::secondaryLabelColor));
    layout.draw(painter, QPointF(rect.left() + sideMargin, rect.top() + verticalMargin));
    painter->restore();
}
