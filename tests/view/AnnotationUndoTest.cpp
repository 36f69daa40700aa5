// Changing annotations in a real view over generated PDFs: one named undo step per change, counted
// and announced; what is made is in the saved file, what is not touched stays as the file had it.

#include "app/support/AppWindow.h"

#include <annotation/FDAnnotationInk.h>
#include <annotation/PDFAnnotationInk+XExtensions.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/BezierPath.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFSelection.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Ends the event-loop turn, which closes its undo step.
void turn()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

const QRectF firstLine(72, 716, 300, 14); // page 0's first line of text

std::shared_ptr<PDFAnnotation> create(FDPDFView &view, const QString &kind)
{
    const auto page = view.document()->pageAtIndex(0);
    if (kind == QLatin1String("Ink")) {
        auto ink = std::make_shared<FDAnnotationInk>();
        auto path = std::make_shared<BezierPath>();
        path->moveTo(QPointF(100, 100));
        path->lineTo(QPointF(180, 160));
        if (!initWithPaths(*ink, { path }))
            return nullptr;
        view.addAnnotation(ink, page);
        return ink;
    }
    view.setCurrentSelection(page->selectionForRect(firstLine));
    return view.addAnnotationWithType(kind, page, QRectF(100, 400, 80, 40));
}

// Every annotation dictionary of a file as an independent reader sees it, streams as digests.
QJsonArray dictionaries(const QString &python, const QString &path)
{
    static const char *const script = R"(
import json, sys, hashlib, pikepdf
def norm(o):
    if isinstance(o, pikepdf.Stream):
        d = {k: norm(v) for k, v in o.items() if k not in ('/Length', '/Filter', '/DecodeParms')}
        d['#data'] = hashlib.md5(o.read_bytes()).hexdigest()
        return d
    if isinstance(o, pikepdf.Dictionary):
        return {k: norm(v) for k, v in o.items() if k not in ('/P', '/Parent', '/Popup')}
    if isinstance(o, pikepdf.Array):
        return [norm(v) for v in o]
    try:
        return round(float(o), 3)
    except Exception:
        return str(o)
pdf = pikepdf.open(sys.argv[1])
print(json.dumps([norm(a) for page in pdf.pages for a in page.obj.get('/Annots', [])]))
)";
    return QJsonDocument::fromJson(TestTools::run(python, { "-c", script, path }).out).array();
}

} // namespace

class AnnotationUndoTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AppWindow::reset();
        PdfFixtures::Document document = PdfFixtures::textPages(3, 10, 0);
        // A link, which can never be selected.
        document.pages[0].links.append({ QRectF(72, 40, 100, 20), "https://example.org", -1, {} });
        open(document);
    }
    void cleanup()
    {
        m_view.reset();
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        m_undo.removeAllActions();
    }

    void eachChangeIsOneUndoStep_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("operation");
        for (const char *kind : { "Square", "Circle", "Line", "FreeText", "Text", "Ink",
                 "Highlight", "Underline", "StrikeOut" }) {
            for (const char *operation : { "Add Note", "Delete Annotation", "Edit Note" })
                QTest::addRow("%s: %s", kind, operation) << QString(kind) << QString(operation);
        }
    }
    void eachChangeIsOneUndoStep()
    {
        QFETCH(QString, kind);
        QFETCH(QString, operation);
        const bool adds = operation == "Add Note", removes = operation == "Delete Annotation";
        const int before = count();
        std::shared_ptr<PDFAnnotation> annotation;
        if (!adds) {
            annotation = create(*m_view, kind);
            m_view->setSelectedAnn(annotation);
            turn();
            m_undo.removeAllActions();
        }
        const QColor original = annotation ? annotation->color() : QColor();
        if (adds)
            annotation = create(*m_view, kind);
        else if (removes)
            m_view->delete_(); // the Edit menu's Delete, on the selected annotation
        else
            annotation->setColor(QColor(10, 20, 200));
        QVERIFY(annotation);
        turn();
        QCOMPARE(count(), before + (removes ? 0 : 1));
        QCOMPARE(m_undo.undoMenuItemTitle(), "Undo " + operation);

        m_undo.undo();
        QVERIFY(!m_undo.canUndo());
        QCOMPARE(count(), before + (adds ? 0 : 1));
        if (!adds && !removes) {
            QCOMPARE(annotation->color(), original);
            QVERIFY(!m_undo.canRedo()); // a property edit has no redo
            return;
        }
        // The inverse names the redo step as it runs.
        QCOMPARE(m_undo.redoActionName(), adds ? "Delete Annotation" : "Add Note");
        m_undo.redo();
        QCOMPARE(count(), before + (removes ? 0 : 1));
        QCOMPARE(annotation->page() != nullptr, adds);
    }

    void changesAreCountedAndAnnounced_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("posted"); // C changed, S selected, A add, R remove, E edit
        QTest::addColumn<int>("counted");
        QTest::newRow("add a square") << "add square" << QStringList { "C", "S", "A" } << 1;
        QTest::newRow("add a highlight") << "add highlight" << QStringList { "C", "A" } << 1;
        QTest::newRow("remove the selected") << "remove" << QStringList { "S", "C", "R" } << 1;
        QTest::newRow("move to the next page") << "move" << QStringList { "C", "C", "R", "A" } << 2;
        // The first edit stamps the modification date, itself an edit.
        QTest::newRow("first edit") << "recolour" << QStringList { "C", "E", "C", "E" } << 2;
        QTest::newRow("second edit") << "recolour twice" << QStringList { "C", "E" } << 1;
        QTest::newRow("same value") << "same colour" << QStringList {} << 0;
        QTest::newRow("select a link") << "select link" << QStringList {} << 0;
        QTest::newRow("select again") << "select again" << QStringList {} << 0;
        QTest::newRow("delete with nothing selected") << "delete nothing" << QStringList {} << 0;
    }
    void changesAreCountedAndAnnounced()
    {
        QFETCH(QString, operation);
        QFETCH(QStringList, posted);
        QFETCH(int, counted);
        const QMap<QString, QString> letters { { "PDFView_DocumentAnnDidChange", "C" },
            { "kPDFViewSelectedAnnotationDidChangeNotification", "S" },
            { "kPDFViewAnnotationDidAddNotification", "A" },
            { "kPDFViewAnnotationDidRemoveNotification", "R" },
            { "kPDFViewAnnotationDidChangeNotification", "E" } };
        const auto page = m_view->document()->pageAtIndex(0);
        const auto next = m_view->document()->pageAtIndex(1);
        std::shared_ptr<PDFAnnotation> subject;
        if (!operation.startsWith("add"))
            subject = create(*m_view, "Square");
        if (operation == "recolour twice")
            subject->setColor(Qt::green);
        if (operation == "delete nothing")
            m_view->setSelectedAnn(nullptr);
        // The user edits a moment after making the annotation, so the date stamp is a change.
        QTest::qWait(5);
        const int before = m_view->fdDocument()->numberOfAnnotationChanges();
        QStringList names;
        QList<QVariantMap> infos;
        QObject observer;
        NotificationCenter::defaultCenter().addObserver(
            &observer, QString(), m_view.get(), [&](const Notification &notification) {
                if (!letters.contains(notification.name))
                    return;
                names << letters[notification.name];
                infos << notification.userInfo;
            });
        if (operation.startsWith("add")) {
            subject = create(*m_view, operation == "add square" ? "Square" : "Highlight");
        } else if (operation == "remove") {
            m_view->removeAnnotation(subject);
        } else if (operation == "move") {
            m_view->moveAnnotation(subject, next);
        } else if (operation.startsWith("recolour")) {
            subject->setColor(Qt::red);
        } else if (operation == "same colour") {
            subject->setColor(subject->color());
        } else if (operation == "delete nothing") {
            QVERIFY(!m_view->validateMenuItem("delete:"));
            m_view->delete_();
        } else {
            m_view->setSelectedAnn(
                operation == "select link" ? page->annotations().front() : subject);
        }
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QCOMPARE(names, posted);
        for (qsizetype i = 0; i < names.size(); ++i) {
            // The add, remove and edit notifications name the annotation and its page.
            if (!QStringList { "A", "R", "E" }.contains(names[i]))
                continue;
            QCOMPARE(infos[i]["Annotation"].value<std::shared_ptr<PDFAnnotation>>(), subject);
            const bool onNext = operation == "move" && names[i] == "A";
            QCOMPARE(infos[i]["Page"].value<std::shared_ptr<PDFPage>>(), onNext ? next : page);
        }
        QCOMPARE(m_view->fdDocument()->numberOfAnnotationChanges() - before, counted);
        const bool deselected = operation == "add highlight" || operation == "remove"
            || operation == "delete nothing";
        QCOMPARE(m_view->selectedAnn(), deselected ? nullptr : subject);
    }

    void propertyEditsShareTheFirstUndoStep()
    {
        const auto first = create(*m_view, "Square");
        const auto second = create(*m_view, "Circle");
        const QColor firstColour = first->color(), secondColour = second->color();
        const QRectF secondBounds = second->bounds();
        turn();
        m_undo.removeAllActions();
        m_view->setSelectedAnn(first);
        first->setColor(Qt::red);
        turn();
        first->setColor(Qt::blue);
        m_view->setSelectedAnn(second);
        second->setBounds(QRectF(10, 10, 50, 50));
        second->setColor(Qt::yellow);
        turn();
        // Only the first edit of the view's life registered a step; its undo restores everything.
        QCOMPARE(m_undo.undoActionName(), "Edit Note");
        m_undo.undo();
        QVERIFY(!m_undo.canUndo() && !m_undo.canRedo());
        QCOMPARE(first->color(), firstColour);
        QCOMPARE(second->color(), secondColour);
        QCOMPARE(second->bounds(), secondBounds);
        second->setColor(Qt::magenta);
        turn();
        QVERIFY(!m_undo.canUndo());
    }

    void markupCommandsMarkUpTheSelectedText_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QRectF>("selected"); // on page 0; empty selects nothing
        QTest::addColumn<QString>("made"); // the subtype made; empty for none
        QTest::newRow("highlight") << "highlight" << firstLine << "Highlight";
        QTest::newRow("underline") << "underline" << firstLine << "Underline";
        QTest::newRow("strike out") << "strikeout" << firstLine << "StrikeOut";
        QTest::newRow("over blank paper") << "highlight" << QRectF(300, 100, 200, 100) << "";
        QTest::newRow("no selection") << "underline" << QRectF() << "";
    }
    void markupCommandsMarkUpTheSelectedText()
    {
        QFETCH(QString, command);
        QFETCH(QRectF, selected);
        QFETCH(QString, made);
        if (!selected.isEmpty())
            m_view->setCurrentSelection(
                m_view->document()->pageAtIndex(0)->selectionForRect(selected));
        const QString text = m_view->currentSelection() ? m_view->currentSelection()->string() : "";
        const int before = count();
        const bool result = command == "highlight" ? m_view->onAddHighlight()
            : command == "underline"               ? m_view->onAddUnderline()
                                                   : m_view->onAddStrikeout();
        turn();
        QCOMPARE(result, !made.isEmpty());
        QCOMPARE(count(), before + (made.isEmpty() ? 0 : 1));
        QCOMPARE(m_undo.canUndo(), !made.isEmpty());
        if (made.isEmpty())
            return;
        // The selection is used up, and the markup is not selected.
        QVERIFY(!m_view->currentSelection() && !m_view->selectedAnn());
        const auto markup = m_view->document()->pageAtIndex(0)->annotations().back();
        QCOMPARE(markup->type(), made);
        QCOMPARE(markup->contents().simplified(), text.simplified());
        m_undo.undo();
        QCOMPARE(count(), before);
    }

    void undoEntriesLeaveWithTheDocument_data()
    {
        QTest::addColumn<QString>("change");
        QTest::newRow("another document") << "another";
        QTest::newRow("no document") << "none";
        QTest::newRow("the view closes") << "closed";
    }
    void undoEntriesLeaveWithTheDocument()
    {
        QFETCH(QString, change);
        const auto document = m_view->fdDocument();
        const auto square = create(*m_view, "Square");
        square->setColor(Qt::red);
        turn();
        QVERIFY(m_undo.canUndo());
        if (change == "another")
            m_view->loadDocument(QUrl::fromLocalFile(m_dir.filePath("document1.pdf")));
        else if (change == "none")
            m_view->setDocument(nullptr);
        else
            m_view.reset();
        QVERIFY(!m_view || m_view->document() != document);
        QVERIFY(!m_undo.canUndo());
        m_undo.undo();
        // The document the view let go keeps the change.
        QCOMPARE(square->page(), document->pageAtIndex(0));
        QCOMPARE(square->color(), QColor(Qt::red));
    }

    void savingKeepsUntouchedAnnotations_data()
    {
        QTest::addColumn<int>("edited"); // among the file's annotations, page 1's after page 0's
        QTest::newRow("the square") << 0;
        QTest::newRow("the circle without a colour") << 1;
        QTest::newRow("the highlight") << 2;
        QTest::newRow("the free text") << 4;
    }
    void savingKeepsUntouchedAnnotations()
    {
        QFETCH(int, edited);
        FOLIDOC_REQUIRE_TOOL(python, "python3");
        PdfFixtures::Document document = PdfFixtures::textPages(2, 10, 0);
        const QByteArray box = "q 1 0 0 RG 2 w 5 5 90 40 re S Q";
        document.pages[0].annotations = {
            { "/Subtype /Square /Rect [100 100 200 150] /C [1 0 0] /Border [0 0 2]", box,
                QRectF(0, 0, 100, 50) },
            { "/Subtype /Circle /Rect [300 100 400 150]", box, QRectF(0, 0, 100, 50) },
            { "/Subtype /Highlight /Rect [72 712 200 730] /C [1 1 0] /QuadPoints [72 730 200 730 "
              "72 "
              "712 200 712] /Contents (Page 1 line 1)",
                "1 1 0 rg 0 0 128 18 re f", QRectF(0, 0, 128, 18) },
        };
        document.pages[1].annotations = {
            { "/Subtype /Text /Rect [400 600 420 620] /C [0 0 1] /Contents (A note)", {}, {} },
            { "/Subtype /FreeText /Rect [100 500 300 540] /DA (/Helv 12 Tf 0 g) /Contents (Box)",
                {}, {} },
            { "/Subtype /Line /Rect [100 300 300 400] /L [110 310 290 390] /C [0 1 0]", {}, {} },
        };
        open(document);
        const QJsonArray before = dictionaries(python, m_path);
        QCOMPARE(before.size(), 6);
        // Every page is shown and rendered, then one annotation is edited.
        for (int index = 0; index < m_view->document()->pageCount(); ++index) {
            m_view->goToPage(m_view->document()->pageAtIndex(index));
            QTRY_VERIFY(m_view->isVisibleAreaRendered());
        }
        const auto annotation
            = m_view->document()->pageAtIndex(edited / 3)->annotations()[size_t(edited % 3)];
        m_view->setSelectedAnn(annotation);
        annotation->setColor(QColor(0, 128, 255));
        m_view->fdDocument()->save();
        QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
        const QJsonArray after = dictionaries(python, m_path);
        QCOMPARE(after.size(), before.size());
        for (int index = 0; index < before.size(); ++index)
            QCOMPARE(after[index] == before[index], index != edited);
    }

private:
    void open(const PdfFixtures::Document &document)
    {
        static int files = 0;
        m_path = m_dir.filePath(QStringLiteral("document%1.pdf").arg(++files));
        QVERIFY(PdfFixtures::write(document, m_path));
        m_view = std::make_unique<FDPDFView>();
        m_view->setUndoManager(&m_undo);
        m_view->resize(600, 500);
        m_view->loadDocument(QUrl::fromLocalFile(m_path));
        m_view->show();
        QTRY_VERIFY(!m_view->isLoading());
    }

    int count() const { return int(m_view->document()->pageAtIndex(0)->annotations().size()); }

    QTemporaryDir m_dir;
    std::unique_ptr<FDPDFView> m_view;
    UndoManager m_undo;
    QString m_path;
};

FOLIDOC_APP_TEST_MAIN(AnnotationUndoTest)

#include "AnnotationUndoTest.moc"
