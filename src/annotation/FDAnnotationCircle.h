#pragma once

// An ellipse as the application makes them: colours, width and dash from the user's last circle.
// Main thread only.

#include <kit/engine/PDFAnnotationCircle.h>

class FDAnnotationCircle : public PDFAnnotationCircle
{
public:
    using PDFAnnotationCircle::initWithBounds;
    // Coloured and stroked as the "Ann_Circle*" settings say; a width of 0 stays a border of width
    // 0, and an interior colour of alpha 0 leaves no fill.
    bool initWithBounds(const QRectF &bounds) override;
    // Takes its properties as given, without the user's settings.
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override;
    // The view tells of changes itself.
    void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect) override;

private:
    bool m_takesProperties = false;
};
