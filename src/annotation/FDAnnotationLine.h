#pragma once

// A line as the application makes them: colour, width, dash and arrows from the user's last line.
// Main thread only.

#include <kit/engine/PDFAnnotationLine.h>

class FDAnnotationLine : public PDFAnnotationLine
{
public:
    using PDFAnnotationLine::initWithBounds;
    // From (0, 0) to the far corner, coloured, dashed and arrowed as the "Ann_Line*" settings say
    // (no border for a width not above 0).
    bool initWithBounds(const QRectF &bounds) override;
    // Takes its properties as given, without the user's settings.
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override;
    // The view tells of changes itself.
    void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect) override;

private:
    bool m_takesProperties = false;
};
