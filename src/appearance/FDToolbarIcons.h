#pragma once

// The pictures of the toolbar buttons, drawn by code (or from the annotation kinds' vector
// images) in the colour asked for, at ratios 1 and 2 so that they stay sharp. Main thread only.

#include <QColor>
#include <QIcon>
#include <QString>

#include <functional>

class QPainter;

class FDToolbarIcons
{
public:
    FDToolbarIcons() = delete;

    enum Kind {
        Sidebar,
        AnnotationBar,
        Layout,
        Zoom,
        Theme,
        PagesEditor,
        TextSelection,
        Font,
        LineAspect,
    };

    static QIcon icon(Kind kind, const QColor &color);
    // The picture of an annotation kind ("Highlight", "Ink"...), tinted.
    static QIcon annotationIcon(const QString &type, const QColor &color);
    // A ring of the given colour (clear: a crossed ring), as the colour button shows.
    static QIcon colorIcon(const QColor &fill, const QColor &color);
    // A picture of the given size in points drawn by draw, at the densities of 1 and 2.
    static QIcon drawnIcon(const QSizeF &size, const std::function<void(QPainter &)> &draw);
};
