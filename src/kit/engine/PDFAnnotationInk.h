#pragma once

// Free-hand strokes: paths relative to the lower-left corner of the bounds, kept as shared
// objects so that a caller may hold and change one in place. Main thread only.

#include "PDFAnnotation.h"

#include <kit/base/BezierPath.h>

#include <QList>

#include <memory>

class PDFAnnotationInk : public PDFAnnotation
{
public:
    PDFAnnotationInk();
    // A solid border of width 1 and no paths.
    bool init() override;

    QList<std::shared_ptr<BezierPath>> paths() const { return m_paths; }
    // Appends the path (kept, not copied); a path changed in place afterwards reaches the file
    // when it is removed and added again or another property changes.
    void addBezierPath(const std::shared_ptr<BezierPath> &path);
    // Removes that very path object, keeping the others in order.
    void removeBezierPath(const std::shared_ptr<BezierPath> &path);

    bool isAppearanceSynthesised() const override { return true; }
    // Each path stroked with colour, border width and dash; nothing for empty bounds.
    void drawWithBox(QPainter &painter, PDFDisplayBox box) const override;

    // Adds "paths": a QVariantList of BezierPath values (copies).
    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    QVariant pathsValue() const;
    QList<std::shared_ptr<BezierPath>> m_paths;
};
