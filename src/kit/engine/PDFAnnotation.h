#pragma once

// One annotation of a page: its kind (type), bounds in page space and the properties every kind
// has, with key-value access and observation. It can live without a page; on a page its
// properties are written through to the file. Kinds derive from it. Main thread only.

#include "PDFDisplayBox.h"
#include "PDFDocumentDelegate.h"

#include <QColor>
#include <QDateTime>
#include <QRectF>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

class PDFBorder;
class PDFPage;
class QPainter;
struct PDFAnnotationPrivate;

class PDFAnnotation : public std::enable_shared_from_this<PDFAnnotation>
{
public:
    // Called synchronously by every setter, also when the value is the same. A property without
    // a value (no colour, no border, no contents) is an invalid QVariant.
    using Observer = std::function<void(PDFAnnotation &annotation, const QString &keyPath,
        const QVariant &oldValue, const QVariant &newValue)>;

    PDFAnnotation();
    virtual ~PDFAnnotation();
    PDFAnnotation(const PDFAnnotation &) = delete;
    PDFAnnotation &operator=(const PDFAnnotation &) = delete;

    // Two-phase construction: make_shared of a kind, then one initialiser. Each kind's
    // initialiser sets that kind's defaults; the result has no page.
    virtual bool init();
    virtual bool initWithBounds(const QRectF &bounds);
    // Bounds, subtype ("Square", ...) and property values by key (see setValueForKey).
    virtual bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties);

    // A keyed archive of the annotation: the coder receives "type", "bounds" and the value of
    // every archived key, in forms Archiver turns into bytes (a border as a map of "style",
    // "lineWidth" and "dashPattern"). A key without a value is stored as an invalid QVariant.
    void encodeWithCoder(QVariantMap &coder) const;
    // Makes the annotation that encodeWithCoder described, on no page. False, with nothing set,
    // when the coder has no "type" text or no "bounds" rect; keys it lacks keep their defaults.
    virtual bool initWithCoder(const QVariantMap &coder);
    // The keys an archive holds besides "type" and "bounds". Kinds add their own.
    virtual QStringList archivedKeys() const;

    // The engine's class for a subtype: the kind's class, or PDFAnnotation for other subtypes.
    static PDFAnnotationFactory classForType(const QString &type);

    // "Highlight", "Underline", "StrikeOut", "Ink", "Line", "Circle", "Square", "FreeText",
    // "Text", "Stamp", "Link", "Popup", or the file's subtype for other kinds.
    QString type() const;

    QRectF bounds() const; // page space
    void setBounds(const QRectF &bounds);
    // Null when there is none. Virtual: a kind may derive it when the file stores none.
    virtual QString contents() const;
    void setContents(const QString &contents);
    QColor color() const; // invalid when there is none
    void setColor(const QColor &color);
    // Null when there is none. An installed border reports its in-place edits as "border.*".
    std::shared_ptr<PDFBorder> border() const;
    void setBorder(const std::shared_ptr<PDFBorder> &border);
    QString userName() const;
    void setUserName(const QString &userName);
    QDateTime modificationDate() const;
    void setModificationDate(const QDateTime &date);

    // The page the annotation is on (weak); null for one on no page.
    std::shared_ptr<PDFPage> page() const;
    // Only the back reference: PDFPage::addAnnotation is what puts an annotation on a page.
    void setPage(const std::shared_ptr<PDFPage> &page);

    // Engine drawing (rendering, thumbnails) shows an annotation only while shouldDisplay;
    // printing also needs shouldPrint. Neither is written into the file.
    bool shouldDisplay() const;
    void setShouldDisplay(bool display);
    bool shouldPrint() const;
    void setShouldPrint(bool print);

    // Whether the file holds a picture of the annotation's own (not one the engine makes from
    // its properties).
    bool hasAppearanceStream() const;
    // Kinds whose picture the engine can make from their properties get a fresh one; a stamp,
    // a signature or an unknown kind keeps its picture.
    void removeAllAppearanceStreams();
    // Whether the engine can make this kind's picture from its properties.
    virtual bool isAppearanceSynthesised() const;

    // Draws the annotation into painter, whose coordinates are those of PDFPage::drawWithBox
    // for the box (page space when the annotation has no page).
    virtual void drawWithBox(QPainter &painter, PDFDisplayBox box) const;
    // A hook after each visible change; the engine needs nothing from it.
    virtual void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect);

    // Key-value access: "bounds" (QRectF), "contents" (QString), "color" (QColor), "border"
    // (std::shared_ptr<PDFBorder>), "userName", "modificationDate" (QDateTime),
    // "shouldDisplay", "shouldPrint", the dotted "border.lineWidth" (double), "border.style"
    // (int), "border.dashPattern" (QVariantList of double), and each kind's own keys. An
    // invalid QVariant sets "no value". Unknown keys are ignored.
    virtual QVariant valueForKey(const QString &key) const;
    virtual void setValueForKey(const QVariant &value, const QString &key);
    void setValuesForKeysWithDictionary(const QVariantMap &values);
    // Sets a value for this session only: the file keeps its own until the annotation is next
    // edited, when the value is written with the rest. No observer is told, nothing is redrawn.
    void setValueForKeyInMemory(const QVariant &value, const QString &key);

    // An observer is identified by a pointer of the caller's; removing drops all its callbacks.
    void addObserver(const void *observer, const Observer &callback);
    void removeObserver(const void *observer);

protected:
    // A colour as a key value: an invalid colour is "no value".
    static QVariant colorValue(const QColor &color);
    // Kinds call this after storing a new value: the file is updated while the annotation is on
    // a page, and observers are told.
    void didChange(const QString &keyPath, const QVariant &oldValue, const QVariant &newValue);
    // Sets a value as setValueForKey does and writes it through to the file, but tells no
    // observer. A value that is not drawn (drawn false) leaves the page's picture and revision
    // as they are, so nothing counts it as an edit.
    void setValueForKeyQuietly(const QVariant &value, const QString &key, bool drawn);
    void setType(const QString &type);
    // The transform that puts the painter into this annotation's page space for drawWithBox.
    void beginPageSpace(QPainter &painter, PDFDisplayBox box) const;

private:
    friend class PDFBorder;
    friend struct PDFAnnotationPrivate;
    void borderDidChange(
        const QString &keyPath, const QVariant &oldValue, const QVariant &newValue);
    // Tells observers only: for values that are not in the file.
    void report(const QString &keyPath, const QVariant &oldValue, const QVariant &newValue);

    std::unique_ptr<PDFAnnotationPrivate> d;
};

Q_DECLARE_METATYPE(std::shared_ptr<PDFAnnotation>)
