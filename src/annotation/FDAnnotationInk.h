#pragma once

// Free-hand strokes as the application makes them: colour and width from the user's last ink.
// Main thread only.

#include <kit/engine/PDFAnnotationInk.h>

class FDAnnotationInk : public PDFAnnotationInk
{
public:
    using PDFAnnotationInk::initWithBounds;
    // The engine's ink with the colour of "Ann_InkColor" and the width of "Ann_InkLineWidth" (no
    // border for a width not above 0).
    bool initWithBounds(const QRectF &bounds) override;
    // Takes its properties as given, without the user's settings.
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override;
    // The view tells of changes itself.
    void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect) override;

private:
    bool m_takesProperties = false;
};
