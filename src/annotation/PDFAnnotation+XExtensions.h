#pragma once

// What every annotation is and does for the application, whatever its class: the predicates the
// view decides by, the border setters, hit tests, resize handles and repaint rectangles, undo
// keys, the pasteboard form and cloning. Each operation answers first by the application's
// class, then by the engine's kind, then by the base rule, so that an annotation of an engine
// class (one read without the application's delegate) still answers by its kind.
// Main thread only.

#include "AnnotationResizeHandle.h"

#include <QIcon>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <memory>

class PDFAnnotation;
class PDFDestination;

// The kinds, by type().
bool isHighlight(const PDFAnnotation &annotation);
bool isUnderline(const PDFAnnotation &annotation);
bool isStrikeOut(const PDFAnnotation &annotation);
bool isInk(const PDFAnnotation &annotation);
bool isLine(const PDFAnnotation &annotation);
bool isCircle(const PDFAnnotation &annotation);
bool isSquare(const PDFAnnotation &annotation);
bool isFreeText(const PDFAnnotation &annotation);
bool isText(const PDFAnnotation &annotation);
bool isStamp(const PDFAnnotation &annotation);
bool isLink(const PDFAnnotation &annotation);

// What the view decides by.
bool isMarkup(const PDFAnnotation &annotation); // highlight, underline or strike-out
bool isResizable(const PDFAnnotation &annotation); // none of markup, ink, text
bool isMovable(const PDFAnnotation &annotation); // not markup
bool isEditable(const PDFAnnotation &annotation); // text or free text
bool isLiteral(const PDFAnnotation &annotation); // markup, free text or text
bool hasBorder(const PDFAnnotation &annotation); // not markup
bool isValid(const PDFAnnotation &annotation); // neither a popup nor a link
// Square, circle, line, ink, free text, text and stamp: drawn by the view's overlay, not the
// engine.
bool shouldDisplayOnOverlay(const PDFAnnotation &annotation);

// Only the application's free text and note keep a real flag; others read false and ignore it.
bool isEditing(const PDFAnnotation &annotation);
void setIsEditing(PDFAnnotation &annotation, bool editing);

// The page's index, or NotFound (the largest qint64) on no page.
qint64 pageIndex(const PDFAnnotation &annotation);
// The top-left corner of the bounds on the annotation's page.
std::shared_ptr<PDFDestination> destination(const PDFAnnotation &annotation);

// Read through the border: 0, 0.0 and an empty list when there is none.
int borderStyle(const PDFAnnotation &annotation);
double borderLineWidth(const PDFAnnotation &annotation);
QList<double> borderDashPattern(const PDFAnnotation &annotation);
// Each installs a new border (one change of "border"); all do nothing without hasBorder. A width
// not above 0 removes the border.
void setBorderStyle(PDFAnnotation &annotation, int style);
void setBorderLineWidth(PDFAnnotation &annotation, double width);
void setBorderDashPattern(PDFAnnotation &annotation, const QList<double> &pattern);

// Geometry in page space.
bool hitTest(const PDFAnnotation &annotation, QPointF point);
QRectF enclosedBounds(const PDFAnnotation &annotation);
// The region the view repaints for the annotation: displayRectForBounds of bounds and border width.
QRectF displayRect(const PDFAnnotation &annotation);
QRectF displayRectForBounds(const PDFAnnotation &annotation, QRectF bounds, double lineWidth);
// The handle under a page point at the view's scale; handles keep their size on screen.
AnnotationResizeHandle resizeHandleForPoint(
    const PDFAnnotation &annotation, QPointF point, double scaleFactor);
// The handle of a rect under a page point, within margin of it: corners before sides.
AnnotationResizeHandle resizeHandleForRect(const QRectF &rect, QPointF point, double margin);
// A line whose start and end points coincide.
bool isEmptyLine(const PDFAnnotation &annotation);

// Stamps the author (the "UserName" default, when set) and the present time.
void registerUserName(PDFAnnotation &annotation);

// The keys the view observes for undo, by type; null for kinds that take no part in undo.
const QStringList *keysForValuesToObserveForUndo(const PDFAnnotation &annotation);

// The pasteboard form: one flat map, with the losses the form has by design (no interior colour,
// first ink path only, no quadrilaterals or markup type, no note icon, no stamp picture).
QVariantMap properties(const PDFAnnotation &annotation);
// Reads the form into an annotation of the caller's class, which the pasteboard type decided:
// init() first, on no page. False when init() fails.
bool initWithPasteboardPropertyList(
    PDFAnnotation &annotation, const QVariantMap &propertyList, const QString &type);
// A new annotation of the same class through the pasteboard form: no page, the same losses.
std::shared_ptr<PDFAnnotation> clone(const PDFAnnotation &annotation);

// "Folidoc.Pasteboard.Annotation.<Kind>" by class; empty for stamps, links, popups and others.
QStringList typesForPasteboard(const PDFAnnotation &annotation);
QStringList readableTypesForPasteboard(const PDFAnnotation &annotation);
QStringList writableTypesForPasteboard(const PDFAnnotation &annotation);
// 2: the data is handed over as a property list.
int readingOptionsForType(const QString &type);
QVariant pasteboardPropertyListForType(const PDFAnnotation &annotation, const QString &type);

// The icon "Ann_<type>_18pt", tinted like text; a null icon (and a log line) when there is none.
QIcon iconForType(const QString &type);
QIcon typeIcon(const PDFAnnotation &annotation);
