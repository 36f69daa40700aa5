#include "PDFAnnotationListDelegate.h"

#include "PDFAnnotationListModel.h"
#include "PDFSidebarTabContents.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>

#include <QIcon>
#include <QPainter>

namespace {

constexpr int margin = 8;
constexpr int iconSize = 20;
// The text starts after the icon column.
constexpr int textLeft = margin + iconSize + margin;

QRect textRect(const QRect &row)
{
    return row.adjusted(textLeft, margin, -margin, 0);
}

} // namespace

PDFAnnotationListDelegate::PDFAnnotationListDelegate(QObject *parent)
    : PDFSidebarListDelegate(
        PDFAnnotationListModel::IsGroupRole, PDFAnnotationListModel::RowKeyRole, parent)
{ }

int PDFAnnotationListDelegate::measureRowHeight(
    const QStyleOptionViewItem &option, const QModelIndex &index, int width) const
{
    const QFontMetrics metrics(option.font);
    QString text = index.data().toString();
    // An empty note is as tall as a line.
    if (text.isEmpty())
        text = QStringLiteral("--");
    const QRect bounds = metrics.boundingRect(
        QRect(0, 0, qMax(20, width - textLeft - margin), 10000), Qt::TextWordWrap, text);
    return margin + bounds.height() + 4 + metrics.height() + margin;
}

void PDFAnnotationListDelegate::paint(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const FDTheme *const theme = FDThemeProvider::current();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect rect = option.rect;
    if (index.data(PDFAnnotationListModel::IsGroupRole).toBool()) {
        paintPageBubble(painter, option, rect.left() + margin,
            index.data(PDFAnnotationListModel::PageNumberRole).toString());
        painter->restore();
        return;
    }
    const bool selected = option.state & QStyle::State_Selected;
    if (selected)
        painter->fillRect(rect, option.palette.highlight());
    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    icon.paint(painter, QRect(rect.left() + margin, rect.top() + margin, iconSize, iconSize));
    // The swatch under the icon.
    const QColor color = index.data(PDFAnnotationListModel::ColorRole).value<QColor>();
    if (color.isValid()) {
        painter->setPen(theme->color(FDTheme::secondaryLabelColor));
        painter->setBrush(color);
        painter->drawRoundedRect(
            QRect(rect.left() + margin + 4, rect.top() + margin + iconSize + 4, 12, 12), 3, 3);
    }
    const QColor textColor
        = theme->color(selected ? FDTheme::selectedTextColor : FDTheme::secondaryLabelColor);
    painter->setPen(textColor);
    const QRect text = textRect(rect);
    QRect used;
    painter->drawText(text, Qt::TextWordWrap, index.data().toString(), &used);
    const int top = index.data().toString().isEmpty() ? text.top() + option.fontMetrics.height()
                                                      : used.bottom();
    QFont small = option.font;
    small.setPointSizeF(option.font.pointSizeF() * 0.9);
    painter->setFont(small);
    const QRect line(text.left(), top + 4, text.width(), option.fontMetrics.height());
    painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
        index.data(PDFAnnotationListModel::AuthorRole).toString());
    painter->drawText(line, Qt::AlignRight | Qt::AlignVCenter,
        index.data(PDFAnnotationListModel::DateRole).toString());
    painter->restore();
}
