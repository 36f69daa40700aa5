#include "FDAnnotationMarkup.h"

#include "AnnotationDefaultsKeys.h"
#include "PDFSelection+XExtensions.h"
#include "values/NSUserDefaults+XExtensions.h"

#include <kit/base/Geometry.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QHash>

#include <algorithm>

namespace {

struct MarkedLines
{
    QRectF bounds;
    QList<QRectF> rects;
    QList<QPointF> points;
};

bool isBlank(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSpace(); });
}

// The lines of the selection's first page that hold more than white space, and their
// quadrilaterals relative to the lower-left corner of their union.
MarkedLines markedLines(const PDFSelection &selection)
{
    MarkedLines marked;
    const auto page = safeFirstPage(selection);
    if (!page)
        return marked;
    for (const auto &line : selection.selectionsByLine()) {
        const QRectF rect = line->boundsForPage(page);
        const QString text = line->string();
        if (Geometry::isEmptyRect(rect) || text.isEmpty() || isBlank(text))
            continue;
        marked.rects.append(rect);
        marked.bounds = Geometry::unionRect(marked.bounds, rect);
    }
    if (Geometry::isEmptyRect(marked.bounds))
        return marked;
    for (const QRectF &rect : std::as_const(marked.rects))
        marked.points.append(
            quadrilateralPointsForRect(page->rotation(), rect, marked.bounds.topLeft()));
    return marked;
}

const QString &colorKeyForType(const QString &type)
{
    static const QHash<QString, QString> keys {
        { QStringLiteral("Highlight"), AnnotationDefaultsKeys::HighlightColor },
        { QStringLiteral("Underline"), AnnotationDefaultsKeys::UnderlineColor },
        { QStringLiteral("StrikeOut"), AnnotationDefaultsKeys::StrikeOutColor },
    };
    const auto found = keys.constFind(type);
    return found == keys.constEnd() ? AnnotationDefaultsKeys::HighlightColor : *found;
}

// The box round a quadrilateral, whatever its order or rotation.
QRectF boxAround(const QPointF *points, int count)
{
    if (count == 0)
        return QRectF();
    double minX = points[0].x(), maxX = minX, minY = points[0].y(), maxY = minY;
    for (int i = 1; i < count; ++i) {
        minX = std::min(minX, points[i].x());
        maxX = std::max(maxX, points[i].x());
        minY = std::min(minY, points[i].y());
        maxY = std::max(maxY, points[i].y());
    }
    return QRectF(minX, minY, maxX - minX, maxY - minY);
}

// The rect a hit may land in round a marked line: a highlight covers a little above and below
// its text, an underline a little below; every kind a little to either side.
QRectF outlineRect(QRectF rect, int markupType)
{
    switch (markupType) {
    case PDFAnnotationMarkup::Underline:
        rect.translate(0.0, -1.0);
        break;
    case PDFAnnotationMarkup::StrikeOut:
        break;
    default:
        rect.adjust(0.0, -1.0, 0.0, 1.0);
        break;
    }
    rect.adjust(-2.0, 0.0, 2.0, 0.0);
    return rect;
}

double minX(QRectF r)
{
    return r.left();
}
double maxX(QRectF r)
{
    return r.right();
}
double minY(QRectF r)
{
    return r.top(); // the lower edge: page space is y up
}
double maxY(QRectF r)
{
    return r.bottom();
}

// One polygon round the lines, stepping where neighbouring lines differ in width, each step in
// the middle of the gap between them.
BezierPath steppedOutline(const QList<QRectF> &rects)
{
    BezierPath path;
    const qsizetype n = rects.size();
    // Right side, from the bottom line up.
    QRectF below;
    for (qsizetype i = n - 1; i >= 0; --i) {
        const QRectF c = rects[i];
        if (i == n - 1)
            path.moveTo(QPointF(minX(c), minY(c)));
        if (Geometry::equalRects(below, QRectF())) {
            path.lineTo(QPointF(maxX(c), minY(c)));
        } else {
            const double m = (minY(c) - maxY(below)) * 0.5 + maxY(below);
            path.lineTo(QPointF(maxX(below), m));
            path.lineTo(QPointF(maxX(c), m));
        }
        if (i == 0) {
            path.lineTo(QPointF(maxX(c), maxY(c)));
            path.lineTo(QPointF(minX(c), maxY(c)));
        }
        below = c;
    }
    // Left side, from the top line down.
    QRectF above;
    for (qsizetype i = 0; i < n; ++i) {
        const QRectF c = rects[i];
        if (!Geometry::equalRects(above, QRectF())) {
            const double m = minY(above) - (minY(above) - maxY(c)) * 0.5;
            path.lineTo(QPointF(minX(above), m));
            path.lineTo(QPointF(minX(c), m));
        }
        if (i == n - 1)
            path.lineTo(QPointF(minX(c), minY(c)));
        above = c;
    }
    path.closePath();
    return path;
}

} // namespace

FDAnnotationMarkup::FDAnnotationMarkup() = default;

std::shared_ptr<FDAnnotationMarkup> FDAnnotationMarkup::annotationWith(
    const std::shared_ptr<PDFSelection> &selection, int markupType)
{
    if (!selection)
        return nullptr;
    const MarkedLines marked = markedLines(*selection);
    if (marked.points.isEmpty())
        return nullptr;
    auto annotation = std::make_shared<FDAnnotationMarkup>();
    if (!annotation->initWithBounds(marked.bounds))
        return nullptr;
    annotation->setMarkupType(markupType);
    annotation->setQuadrilateralPoints(marked.points);
    annotation->setColor(
        colorForKey(UserDefaults::standard(), colorKeyForType(annotation->type())));
    annotation->setContents(selection->string());
    return annotation;
}

QString FDAnnotationMarkup::contents() const
{
    const QString stored = PDFAnnotationMarkup::contents();
    if (!stored.isEmpty())
        return stored;
    // Only an annotation on a page of a document has text under it to show.
    const auto owner = page();
    if (!owner || !owner->document())
        return stored;
    const QString marked = selection()->string();
    if (marked.isEmpty())
        return stored;
    // The file gains the text, but nobody is told: reading is not an edit.
    auto &self = const_cast<FDAnnotationMarkup &>(*this);
    self.setValueForKeyQuietly(marked, QStringLiteral("contents"), false);
    return PDFAnnotationMarkup::contents();
}

std::shared_ptr<PDFSelection> FDAnnotationMarkup::selection() const
{
    if (m_selection)
        return m_selection;
    const auto owner = page();
    const auto document = owner ? owner->document() : nullptr;
    if (!document)
        qFatal("FDAnnotationMarkup::selection asked before the annotation is on a page of a "
               "document");
    m_selection = std::make_shared<PDFSelection>(document);
    for (const QRectF &rect : rectsInPageCoordinate()) {
        if (const auto part = owner->selectionForRect(Geometry::insetRect(rect, -1.0, -1.0)))
            m_selection->addSelection(part);
    }
    return m_selection;
}

bool FDAnnotationMarkup::hitTest(QPointF point) const
{
    return enclosedPath().containsPoint(point);
}

const BezierPath &FDAnnotationMarkup::enclosedPath() const
{
    if (!m_enclosedPath) {
        QList<QRectF> outline;
        for (const QRectF &rect : rectsInPageCoordinate())
            outline.append(outlineRect(rect, markupType()));
        m_enclosedPath = steppedOutline(outline);
    }
    return *m_enclosedPath;
}

void FDAnnotationMarkup::setEnclosedPath(const BezierPath &path)
{
    m_enclosedPath = path;
}

const QList<QRectF> &FDAnnotationMarkup::rectsInPageCoordinate() const
{
    if (!m_rectsInPageCoordinate) {
        const QList<QPointF> points = quadrilateralPoints();
        const QPointF origin = bounds().topLeft();
        QList<QRectF> rects;
        // Points beyond the last full group of four are dropped.
        for (qsizetype i = 0; i + 4 <= points.size(); i += 4)
            rects.append(boxAround(points.constData() + i, 4).translated(origin));
        m_rectsInPageCoordinate = rects;
    }
    return *m_rectsInPageCoordinate;
}

void FDAnnotationMarkup::setRectsInPageCoordinate(const QList<QRectF> &rects)
{
    m_rectsInPageCoordinate = rects;
}

bool FDAnnotationMarkup::init()
{
    clearCaches();
    return PDFAnnotationMarkup::init();
}

bool FDAnnotationMarkup::initWithBounds(
    const QRectF &bounds, const QString &type, const QVariantMap &properties)
{
    clearCaches();
    return PDFAnnotationMarkup::initWithBounds(bounds, type, properties);
}

bool FDAnnotationMarkup::initWithCoder(const QVariantMap &coder)
{
    clearCaches();
    return PDFAnnotationMarkup::initWithCoder(coder);
}

void FDAnnotationMarkup::clearCaches()
{
    m_selection.reset();
    m_enclosedPath.reset();
    m_rectsInPageCoordinate.reset();
}

QList<QPointF> quadrilateralPointsForRect(int rotation, QRectF rect, QPointF origin)
{
    const QRectF r = rect.translated(-origin);
    // Only quarter turns are valid; the slot is reduced anyway so that no value reads past it.
    const int k = ((rotation / 90) % 4 + 4) % 4;
    QPointF corners[4];
    corners[k] = QPointF(r.left(), r.bottom());
    corners[(k + 1) % 4] = QPointF(r.right(), r.bottom());
    corners[(k + 2) % 4] = QPointF(r.right(), r.top());
    corners[(k + 3) % 4] = QPointF(r.left(), r.top());
    return { corners[0], corners[1], corners[3], corners[2] };
}
