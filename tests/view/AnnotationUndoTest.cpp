// Changing annotations in a real view over a generated PDF: each add, remove, move and property
// edit is one undo step with its Edit-menu name, counts as the document's change and is
// announced; markup commands work from a real text selection; what is created is in the saved
// file; and undo entries never outlive the view's document.

#include "app/support/AppTestEnvironment.h"

#include <annotation/FDAnnotationInk.h>
#include <annotation/PDFAnnotationInk+XExtensions.h>
#include <app/FDDefaults.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/BezierPath.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>
#include <support/PdfFixtures.h>
#include <view/FDPDFView.h>
#include <view/PDFViewDelegate2.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QtTest>

namespace {

class ToolOwner : public PDFViewDelegate2
{
public:
    PDFToolMode tool = PDFToolModeTextSelection;
    PDFToolMode toolMode() const override { return tool; }
    void PDFViewESCKeyDown(XPDFView *) override { }
    void PDFViewDidBecomeFirstResponder(XPDFView *) override { }
    void PDFViewPerformAddOutline(XPDFView *) override { }
};

// Ends the event-loop turn, which closes the undo step of that turn.
void turn()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

const QStringList kinds { "Square", "Circle", "Line", "FreeText", "Text", "Ink", "Highlight",
    "Underline", "StrikeOut" };

// The first line of page 0 as the user would select it.
void selectFirstLine(FDPDFView &view)
{
    const auto page = view.document()->pageAtIndex(0);
    view.setCurrentSelection(page->selectionForRect(QRectF(72, 716, 300, 14)));
}

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
    if (kind == QLatin1String("Highlight") || kind == QLatin1String("Underline")
        || kind == QLatin1String("StrikeOut"))
        selectFirstLine(view);
    return view.addAnnotationWithType(kind, page, QRectF(100, 400, 80, 40));
}

} // namespace

class AnnotationUndoTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void eachChangeIsOneUndoStep_data();
    void eachChangeIsOneUndoStep();
    void changesAreCountedAndAnnounced_data();
    void changesAreCountedAndAnnounced();
    void propertyEditsShareTheFirstUndoStep();
    void markupCommandsMarkUpTheSelectedText_data();
    void markupCommandsMarkUpTheSelectedText();
    void editCommands_data();
    void editCommands();
    void undoEntriesLeaveWithTheDocument_data();
    void undoEntriesLeaveWithTheDocument();

private:
    QUrl writeFixture(const QString &name);
    int annotationCount(int pageIndex = 0) const
    {
        return int(m_view->document()->pageAtIndex(pageIndex)->annotations().size());
    }

    QTemporaryDir m_dir;
    std::unique_ptr<FDPDFView> m_view;
    ToolOwner m_owner;
    UndoManager m_undo;
};

QUrl AnnotationUndoTest::writeFixture(const QString &name)
{
    const QString path = m_dir.filePath(name);
    PdfFixtures::Document document = PdfFixtures::textPages(3, 10, 0);
    // A link, which can never be selected.
    document.pages[0].links.append({ QRectF(72, 40, 100, 20), "https://example.org", -1, {} });
    PdfFixtures::write(document, path);
    return QUrl::fromLocalFile(path);
}

void AnnotationUndoTest::init()
{
    AppTestEnvironment::clearStore();
    FDDefaults::registerDefaults();
    m_owner.tool = PDFToolModeTextSelection;
    m_view = std::make_unique<FDPDFView>();
    m_view->setDelegate2(&m_owner);
    m_view->setUndoManager(&m_undo);
    m_view->resize(700, 600);
    static int documents = 0;
    m_view->loadDocument(writeFixture(QStringLiteral("document%1.pdf").arg(++documents)));
    m_view->show();
    QTRY_VERIFY(!m_view->isLoading());
    QVERIFY(m_view->document());
}

void AnnotationUndoTest::cleanup()
{
    m_view.reset();
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    m_undo.removeAllActions();
}

void AnnotationUndoTest::eachChangeIsOneUndoStep_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("operation");
    for (const QString &kind : kinds) {
        for (const char *operation : { "add", "remove", "recolour" })
            QTest::addRow("%s %s", operation, qPrintable(kind)) << kind << QString(operation);
    }
}

void AnnotationUndoTest::eachChangeIsOneUndoStep()
{
    QFETCH(QString, kind);
    QFETCH(QString, operation);
    const int before = annotationCount();
    std::shared_ptr<PDFAnnotation> annotation;
    if (operation != QLatin1String("add")) {
        annotation = create(*m_view, kind);
        QVERIFY(annotation);
        m_view->setSelectedAnn(annotation);
        turn();
        m_undo.removeAllActions();
    }
    const QColor original = annotation ? annotation->color() : QColor();
    if (operation == QLatin1String("add"))
        annotation = create(*m_view, kind);
    else if (operation == QLatin1String("remove"))
        m_view->removeAnnotation(annotation);
    else
        annotation->setColor(QColor(10, 20, 200));
    QVERIFY(annotation);
    turn();
    const bool onPage = operation != QLatin1String("remove");
    QCOMPARE(annotation->page() != nullptr, onPage);
    QCOMPARE(annotationCount(), before + (onPage ? 1 : 0));
    const QString name = operation == QLatin1String("add") ? "Add Note"
        : operation == QLatin1String("remove")             ? "Delete Annotation"
                                                           : "Edit Note";
    QCOMPARE(m_undo.undoMenuItemTitle(), QStringLiteral("Undo ") + name);

    m_undo.undo();
    QVERIFY(!m_undo.canUndo());
    QCOMPARE(annotation->page() != nullptr, !onPage || operation == QLatin1String("recolour"));
    if (operation == QLatin1String("recolour")) {
        QCOMPARE(annotation->color(), original);
        // A property edit has no redo.
        QVERIFY(!m_undo.canRedo());
        return;
    }
    QCOMPARE(annotationCount(), before + (onPage ? 0 : 1));
    // The inverse names the redo step as it runs.
    QCOMPARE(m_undo.redoActionName(), onPage ? "Delete Annotation" : "Add Note");
    m_undo.redo();
    QCOMPARE(annotation->page() != nullptr, onPage);
    QCOMPARE(annotationCount(), before + (onPage ? 1 : 0));
    QVERIFY(m_undo.canUndo());
}

void AnnotationUndoTest::changesAreCountedAndAnnounced_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("posted");
    QTest::addColumn<int>("counted");
    const QString changed = QStringLiteral("PDFView_DocumentAnnDidChange");
    const QString selected = QStringLiteral("kPDFViewSelectedAnnotationDidChangeNotification");
    const QString add = QStringLiteral("kPDFViewAnnotationDidAddNotification");
    const QString remove = QStringLiteral("kPDFViewAnnotationDidRemoveNotification");
    const QString edit = QStringLiteral("kPDFViewAnnotationDidChangeNotification");
    QTest::newRow("add a square") << "add square" << QStringList { changed, selected, add } << 1;
    QTest::newRow("add a highlight") << "add highlight" << QStringList { changed, add } << 1;
    QTest::newRow("remove the selected")
        << "remove" << QStringList { selected, changed, remove } << 1;
    QTest::newRow("move to the next page")
        << "move" << QStringList { changed, changed, remove, add } << 2;
    // The first edit stamps the modification date, itself an edit.
    QTest::newRow("first edit") << "recolour" << QStringList { changed, edit, changed, edit } << 2;
    QTest::newRow("second edit") << "recolour twice" << QStringList { changed, edit } << 1;
    QTest::newRow("same value") << "same colour" << QStringList {} << 0;
    QTest::newRow("select a link") << "select link" << QStringList {} << 0;
    QTest::newRow("select again") << "select again" << QStringList {} << 0;
}

void AnnotationUndoTest::changesAreCountedAndAnnounced()
{
    QFETCH(QString, operation);
    QFETCH(QStringList, posted);
    QFETCH(int, counted);
    const QString changed = QStringLiteral("PDFView_DocumentAnnDidChange");
    const QString selected = QStringLiteral("kPDFViewSelectedAnnotationDidChangeNotification");
    const QString add = QStringLiteral("kPDFViewAnnotationDidAddNotification");
    const QString remove = QStringLiteral("kPDFViewAnnotationDidRemoveNotification");
    const QString edit = QStringLiteral("kPDFViewAnnotationDidChangeNotification");
    const auto page = m_view->document()->pageAtIndex(0);
    const auto next = m_view->document()->pageAtIndex(1);
    std::shared_ptr<PDFAnnotation> square;
    if (!operation.startsWith(QLatin1String("add"))) {
        square = create(*m_view, QStringLiteral("Square"));
        if (operation == QLatin1String("recolour twice"))
            square->setColor(Qt::green);
    }
    const auto document = m_view->fdDocument();
    const int before = document->numberOfAnnotationChanges();
    QStringList names;
    QList<QVariantMap> infos;
    QObject observer;
    NotificationCenter::defaultCenter().addObserver(
        &observer, QString(), m_view.get(), [&](const Notification &notification) {
            if (!QStringList { changed, selected, add, remove, edit }.contains(notification.name))
                return;
            names << notification.name;
            infos << notification.userInfo;
        });
    std::shared_ptr<PDFAnnotation> subject = square;
    std::shared_ptr<PDFPage> where = page;
    if (operation == QLatin1String("add square"))
        subject = create(*m_view, QStringLiteral("Square"));
    else if (operation == QLatin1String("add highlight"))
        subject = create(*m_view, QStringLiteral("Highlight"));
    else if (operation == QLatin1String("remove"))
        m_view->removeAnnotation(square);
    else if (operation == QLatin1String("move"))
        m_view->moveAnnotation(square, next);
    else if (operation.startsWith(QLatin1String("recolour")))
        square->setColor(Qt::red);
    else if (operation == QLatin1String("same colour"))
        square->setColor(square->color());
    else if (operation == QLatin1String("select again"))
        m_view->setSelectedAnn(square);
    else if (operation == QLatin1String("select link"))
        m_view->setSelectedAnn(page->annotations().front());
    NotificationCenter::defaultCenter().removeObserver(&observer);

    QCOMPARE(names, posted);
    QCOMPARE(document->numberOfAnnotationChanges() - before, counted);
    QCOMPARE(m_view->selectedAnn(),
        operation == "add highlight" || operation == "remove" ? nullptr : subject);
    for (qsizetype i = 0; i < names.size(); ++i) {
        if (!names[i].startsWith(QLatin1String("kPDFViewAnnotation")))
            continue;
        QCOMPARE(infos[i].value("Annotation").value<std::shared_ptr<PDFAnnotation>>(), subject);
        const bool onNext
            = operation == QLatin1String("move") && names[i].endsWith("AddNotification");
        QCOMPARE(infos[i].value("Page").value<std::shared_ptr<PDFPage>>(), onNext ? next : where);
    }
}

void AnnotationUndoTest::propertyEditsShareTheFirstUndoStep()
{
    const auto first = create(*m_view, QStringLiteral("Square"));
    const auto second = create(*m_view, QStringLiteral("Circle"));
    const QColor firstColour = first->color();
    const QColor secondColour = second->color();
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
    // Only the first edit of the view's life registered a step.
    QCOMPARE(m_undo.undoActionName(), QStringLiteral("Edit Note"));
    m_undo.undo();
    QVERIFY(!m_undo.canUndo());
    QVERIFY(!m_undo.canRedo());
    QCOMPARE(first->color(), firstColour);
    QCOMPARE(second->color(), secondColour);
    QCOMPARE(second->bounds(), secondBounds);
    // After that undo, edits register nothing.
    second->setColor(Qt::magenta);
    turn();
    QVERIFY(!m_undo.canUndo());
}

void AnnotationUndoTest::markupCommandsMarkUpTheSelectedText_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QRectF>("selected"); // page-space rect on page 0; empty selects nothing
    QTest::addColumn<QString>("made"); // the subtype in the saved file, empty for none
    const QRectF line(72, 716, 300, 14);
    const QRectF blank(300, 100, 200, 100);
    QTest::newRow("highlight") << "highlight" << line << "Highlight";
    QTest::newRow("underline") << "underline" << line << "Underline";
    QTest::newRow("strike out") << "strikeout" << line << "StrikeOut";
    QTest::newRow("highlight over blank paper") << "highlight" << blank << "";
    QTest::newRow("underline with no selection") << "underline" << QRectF() << "";
}

void AnnotationUndoTest::markupCommandsMarkUpTheSelectedText()
{
    QFETCH(QString, command);
    QFETCH(QRectF, selected);
    QFETCH(QString, made);
    const auto page = m_view->document()->pageAtIndex(0);
    if (!selected.isEmpty())
        m_view->setCurrentSelection(page->selectionForRect(selected));
    const QString text = m_view->currentSelection() ? m_view->currentSelection()->string() : "";
    const int before = annotationCount();
    const bool result = command == "highlight" ? m_view->onAddHighlight()
        : command == "underline"               ? m_view->onAddUnderline()
                                               : m_view->onAddStrikeout();
    turn();
    QCOMPARE(result, !made.isEmpty());
    QCOMPARE(annotationCount(), before + (made.isEmpty() ? 0 : 1));
    QCOMPARE(m_undo.canUndo(), !made.isEmpty());
    if (made.isEmpty())
        return;
    // The selection is used up, and the markup is not selected.
    QVERIFY(!m_view->currentSelection());
    QVERIFY(!m_view->selectedAnn());
    QCOMPARE(m_undo.undoActionName(), QStringLiteral("Add Note"));

    m_view->fdDocument()->save();
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    auto saved = std::make_shared<PDFDocument>();
    QVERIFY(saved->initWithURL(m_view->fileURL()));
    const auto &annotations = saved->pageAtIndex(0)->annotations();
    QCOMPARE(int(annotations.size()), before + 1);
    QCOMPARE(annotations.back()->type(), made);
    QVERIFY(!text.isEmpty());
    QCOMPARE(annotations.back()->contents().simplified(), text.simplified());

    m_undo.undo();
    QCOMPARE(annotationCount(), before);
}

void AnnotationUndoTest::editCommands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("tool");
    QTest::addColumn<bool>("withSelection");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("delete the selected") << "delete:" << 0 << true << true;
    QTest::newRow("delete with nothing selected") << "delete:" << 0 << false << false;
    QTest::newRow("select all in the text tool") << "selectAll:" << 0 << false << true;
    QTest::newRow("select all in the ink tool") << "selectAll:" << 120 << false << false;
}

void AnnotationUndoTest::editCommands()
{
    QFETCH(QString, command);
    QFETCH(int, tool);
    QFETCH(bool, withSelection);
    QFETCH(bool, enabled);
    m_owner.tool = PDFToolMode(tool);
    const auto square = create(*m_view, QStringLiteral("Square"));
    if (!withSelection)
        m_view->setSelectedAnn(nullptr);
    turn();
    m_undo.removeAllActions();
    const int before = annotationCount();
    QCOMPARE(m_view->validateMenuItem(command), enabled);
    if (command == QLatin1String("delete:"))
        m_view->delete_();
    else
        m_view->selectAllCommand();
    turn();
    if (command == QLatin1String("delete:")) {
        QCOMPARE(annotationCount(), before - (enabled ? 1 : 0));
        QCOMPARE(m_undo.canUndo(), enabled);
        return;
    }
    const auto selection = m_view->currentSelection();
    QCOMPARE(selection != nullptr, enabled);
    if (selection)
        QCOMPARE(int(selection->pages().size()), m_view->document()->pageCount());
}

void AnnotationUndoTest::undoEntriesLeaveWithTheDocument_data()
{
    QTest::addColumn<QString>("change");
    QTest::newRow("another document") << "another";
    QTest::newRow("no document") << "none";
    QTest::newRow("the view closes") << "closed";
}

void AnnotationUndoTest::undoEntriesLeaveWithTheDocument()
{
    QFETCH(QString, change);
    const auto document = m_view->fdDocument();
    const auto square = create(*m_view, QStringLiteral("Square"));
    square->setColor(Qt::red);
    turn();
    QVERIFY(m_undo.canUndo());
    if (change == QLatin1String("another")) {
        m_view->loadDocument(writeFixture(QStringLiteral("other.pdf")));
        QTRY_VERIFY(m_view->document() != document);
    } else if (change == QLatin1String("none")) {
        m_view->setDocument(nullptr);
    } else {
        m_view.reset();
    }
    QVERIFY(!m_undo.canUndo());
    m_undo.undo();
    // The document the view let go keeps the change, and the saving service writes it.
    QCOMPARE(square->page(), document->pageAtIndex(0));
    QCOMPARE(square->color(), QColor(Qt::red));
    if (change == QLatin1String("closed"))
        return;
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);
    auto saved = std::make_shared<PDFDocument>();
    QVERIFY(saved->initWithURL(document->fileURL()));
    QCOMPARE(saved->pageAtIndex(0)->annotations().size(), 2u);
    QCOMPARE(saved->pageAtIndex(0)->annotations().back()->type(), QStringLiteral("Square"));
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    AnnotationUndoTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "AnnotationUndoTest.moc"
