#include "PDFBorder.h"

#include "PDFAnnotation.h"

#include <QVariant>

QVariant PDFBorder::dashPatternValue(const QList<double> &pattern)
{
    QVariantList list;
    for (const double value : pattern)
        list.append(value);
    return list;
}

QList<double> PDFBorder::dashPatternFromValue(const QVariant &value)
{
    QList<double> pattern;
    for (const QVariant &length : value.toList())
        pattern.append(length.toDouble());
    return pattern;
}

void PDFBorder::setStyle(int style)
{
    const int old = m_style;
    m_style = style;
    if (m_owner)
        m_owner->borderDidChange(QStringLiteral("border.style"), old, style);
}

void PDFBorder::setLineWidth(double width)
{
    const double old = m_lineWidth;
    m_lineWidth = width;
    if (m_owner)
        m_owner->borderDidChange(QStringLiteral("border.lineWidth"), old, width);
}

void PDFBorder::setDashPattern(const QList<double> &pattern)
{
    const QList<double> old = m_dashPattern;
    m_dashPattern = pattern;
    if (m_owner)
        m_owner->borderDidChange(
            QStringLiteral("border.dashPattern"), dashPatternValue(old), dashPatternValue(pattern));
}

std::shared_ptr<PDFBorder> PDFBorder::copy() const
{
    auto border = std::make_shared<PDFBorder>();
    border->m_style = m_style;
    border->m_lineWidth = m_lineWidth;
    border->m_dashPattern = m_dashPattern;
    return border;
}
