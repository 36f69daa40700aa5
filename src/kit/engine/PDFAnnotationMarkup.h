#pragma once

// A mark over text: highlight, strike-out or underline, over quadrilaterals of four points each
// (top-left, top-right, bottom-left, bottom-right), relative to the lower-left corner of the
// bounds. Main thread only.

#include "PDFAnnotation.h"

#include <QList>
#include <QPointF>

class PDFAnnotationMarkup : public PDFAnnotation
{
public:
    // As the platform numbers them.
    enum MarkupType { Highlight = 0, StrikeOut = 1, Underline = 2 };

    PDFAnnotationMarkup(); // a highlight

    // Follows type(): "StrikeOut" 1, "Underline" 2, anything else 0. Setting it sets the type.
    int markupType() const;
    void setMarkupType(int markupType);

    QList<QPointF> quadrilateralPoints() const { return m_quadrilateralPoints; }
    void setQuadrilateralPoints(const QList<QPointF> &points);

    bool isAppearanceSynthesised() const override { return true; }
    // Highlights fill each quadrilateral; underlines and strike-outs draw a line along it.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "markupType" (int) and "quadrilateralPoints" (QVariantList of QPointF).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    QList<QPointF> m_quadrilateralPoints;
};
