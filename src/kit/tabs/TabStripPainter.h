#pragma once

// Draws the parts of a tab strip in the current frame theme: a tab with its title and close
// button, and the new-tab button. It holds no state of the strip; the view says what each part
// shows. Main thread only.

#include <QRectF>
#include <QString>

class QPainter;
class QWidget;

class TabStripPainter
{
public:
    // The outward curves at the foot of the selected tab reach this far beyond its sides.
    static constexpr double footRadius = 6;

    struct Tab
    {
        QRectF rect;
        QString title;
        bool selected = false;
        // Hovered, or dragged: drawn as a pill.
        bool highlighted = false;
        // A separator on the right edge (neither this tab nor the next one stands out).
        bool separator = false;
        bool closeShown = false;
        QRectF closeRect;
        bool closeHovered = false;
        bool closePressed = false;
    };

    // Paints on painter in widget's font, pixel ratio and line width.
    TabStripPainter(QPainter &painter, const QWidget &widget);

    void paintTab(const Tab &tab) const;
    void paintNewTabButton(const QRectF &rect, bool hovered, bool pressed) const;

private:
    void paintCloseButton(const QRectF &rect, bool hovered, bool pressed, bool selected) const;

    QPainter &m_painter;
    const QWidget &m_widget;
};
