#pragma once

// Highlight, underline and strike-out as the application makes them: from a text selection to
// per-line rectangles and quadrilateral points, and back to rectangles, a hit area shaped like the
// text block, and the selection it covers. Made only by annotationWith. Main thread only.

#include <kit/base/BezierPath.h>
#include <kit/engine/PDFAnnotationMarkup.h>

#include <QList>
#include <QPointF>
#include <QRectF>

#include <memory>
#include <optional>

class PDFSelection;

class FDAnnotationMarkup : public PDFAnnotationMarkup
{
public:
    FDAnnotationMarkup();

    // A markup of the type over the lines of the selection on its first page that hold more than
    // white space, coloured by the type's default, its contents the selected text. Null when no
    // line is usable: a markup without quadrilaterals is refused, since readers drop it.
    static std::shared_ptr<FDAnnotationMarkup> annotationWith(
        const std::shared_ptr<PDFSelection> &selection, int markupType);

    // Empty stored contents are first filled from the selection, without telling observers: reading
    // never makes a change to undo or count.
    QString contents() const override;

    // The text under the quadrilaterals, built on first use. The annotation must be on a page of a
    // document: asking before stops the process.
    std::shared_ptr<PDFSelection> selection() const;
    // Inside the stepped outline round the marked lines.
    bool hitTest(QPointF point) const;

    // Caches of what the quadrilaterals say, built on first use.
    const BezierPath &enclosedPath() const;
    void setEnclosedPath(const BezierPath &path);
    const QList<QRectF> &rectsInPageCoordinate() const;
    void setRectsInPageCoordinate(const QList<QRectF> &rects);

    // Each clears the caches and the selection before the engine's initialiser.
    bool init() override;
    using PDFAnnotationMarkup::initWithBounds;
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override;
    bool initWithCoder(const QVariantMap &coder) override;

private:
    void clearCaches();

    mutable std::shared_ptr<PDFSelection> m_selection;
    mutable std::optional<BezierPath> m_enclosedPath;
    mutable std::optional<QList<QRectF>> m_rectsInPageCoordinate;
};

// The quadrilateral of a rectangle relative to origin, its corners turned by the page's rotation
// (0, 90, 180 or 270) so that the order is the file's as seen on the rotated page.
QList<QPointF> quadrilateralPointsForRect(int rotation, QRectF rect, QPointF origin);
