// Annotations in the file: written and read back, observed as they change, moved with pages.

#include "support/AnnotationFixtures.h"

#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/base/Archiver.h>
#include <kit/base/BezierPath.h>
#include <kit/engine/PDFActionGoTo.h>
#include <kit/engine/PDFActionRemoteGoTo.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationLink.h>
#include <kit/engine/PDFAnnotationMarkup.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFDocumentDelegate.h>
#include <kit/engine/PDFPage.h>

#include <QElapsedTimer>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <limits>
#include <thread>

using namespace AnnotationFixtures;

namespace {

struct Change
{
    QString key;
    QVariant oldValue;
    QVariant newValue;
};

// Records every report of the annotations it observes.
class Recorder
{
public:
    void observe(PDFAnnotation &annotation)
    {
        annotation.addObserver(this,
            [this](PDFAnnotation &, const QString &key, const QVariant &oldValue,
                const QVariant &newValue) {
                changes.append({ key, oldValue, newValue });
            });
    }
    QStringList keys() const
    {
        QStringList list;
        for (const Change &change : changes)
            list.append(change.key);
        return list;
    }
    QList<Change> changes;
};

std::shared_ptr<PDFAnnotation> only(const std::shared_ptr<PDFPage> &page, const QString &type)
{
    for (const auto &annotation : page->annotations()) {
        if (annotation->type() == type)
            return annotation;
    }
    return nullptr;
}

class MarkingDelegate : public PDFDocumentDelegate
{
public:
    class Marked : public PDFAnnotationSquare
    {
    };
    PDFAnnotationFactory classForAnnotationClass(const QString &type) const override
    {
        asked.append(type);
        if (type == QLatin1String("Square"))
            return [] { return std::make_shared<Marked>(); };
        return {};
    }
    mutable QStringList asked;
};

} // namespace

class PDFAnnotationTest : public QObject
{
    Q_OBJECT

private slots:
    void kindsComeBackFromTheFile_data()
    {
        QTest::addColumn<QString>("type");
        for (const char *type : { "Highlight", "Underline", "StrikeOut", "Ink", "Line", "Circle",
                 "Square", "FreeText", "Text" })
            QTest::newRow(type) << QString::fromLatin1(type);
    }
    void kindsComeBackFromTheFile()
    {
        QFETCH(QString, type);
        auto doc = textDocument();
        const auto page = doc->pageAtIndex(0);
        const QRectF bounds(100, 500, 120, 60);
        const auto annotation = makeAnnotation(type, bounds);
        page->addAnnotation(annotation);
        QCOMPARE(annotation->page(), page);
        QCOMPARE(page->annotations().back(), annotation);

        const auto again = reopen(*doc);
        QVERIFY(again);
        const auto read = only(again->pageAtIndex(0), type);
        QVERIFY(read);
        QCOMPARE(read->contents(), annotation->contents());
        QVERIFY(read->hasAppearanceStream());
        // Kinds whose rect is their shape keep it exactly; others may grow to hold their drawing.
        if (type == QLatin1String("Square") || type == QLatin1String("Circle")
            || type == QLatin1String("FreeText"))
            QCOMPARE(read->bounds(), bounds);
        else
            QVERIFY(read->bounds().intersects(bounds));
        if (annotation->color().alpha() > 0)
            QCOMPARE(read->color().rgb(), annotation->color().rgb());
        if (auto line = std::dynamic_pointer_cast<PDFAnnotationLine>(read)) {
            QCOMPARE(line->bounds().topLeft() + line->startPoint(), bounds.topLeft());
            QCOMPARE(line->bounds().topLeft() + line->endPoint(), bounds.bottomRight());
            QCOMPARE(line->endLineStyle(), int(PDFAnnotationLine::OpenArrow));
        }
        if (type == QLatin1String("FreeText"))
            QVERIFY(!read->border());
        if (auto markup = std::dynamic_pointer_cast<PDFAnnotationMarkup>(read)) {
            QCOMPARE(markup->quadrilateralPoints().size(), 4);
            QCOMPARE(
                markup->bounds().topLeft() + markup->quadrilateralPoints()[0], QPointF(100, 560));
        }
    }

    void settersWriteThroughAndReportOldAndNewValues()
    {
        auto doc = textDocument();
        const auto page = doc->pageAtIndex(0);
        auto square = std::static_pointer_cast<PDFAnnotationSquare>(
            makeAnnotation(QStringLiteral("Square"), QRectF(50, 50, 100, 100)));
        page->addAnnotation(square);
        Recorder recorder;
        recorder.observe(*square);
        const quint64 revision = page->revision();

        square->setColor(QColor(0, 0, 255));
        square->setColor(QColor(0, 0, 255)); // the same value is reported too
        square->border()->setLineWidth(7); // in place on the installed border
        square->setInteriorColor(QColor(0, 255, 0));
        QVERIFY(page->revision() > revision);
        QCOMPARE(recorder.keys(),
            QStringList({ "color", "color", "border.lineWidth", "interiorColor" }));
        QCOMPARE(recorder.changes[0].oldValue.value<QColor>(), QColor(255, 0, 0));
        QCOMPARE(recorder.changes[1].oldValue, recorder.changes[1].newValue);
        QCOMPARE(recorder.changes[2].oldValue.toDouble(), 4.0);
        QCOMPARE(recorder.changes[2].newValue.toDouble(), 7.0);
        QVERIFY(!recorder.changes[3].oldValue.isValid()); // "no value" is an invalid variant
        QCOMPARE(recorder.changes[3].newValue.value<QColor>(), QColor(0, 255, 0));

        // A replaced border no longer reports for the annotation.
        const auto old = square->border();
        square->setBorder(std::make_shared<PDFBorder>());
        recorder.changes.clear();
        old->setLineWidth(20);
        QVERIFY(recorder.changes.isEmpty());

        // Undo restores values by key, dotted paths and "no value" included.
        square->setValuesForKeysWithDictionary(
            { { "color", QVariant() }, { "border.lineWidth", 3.0 }, { "border.style", 1 },
                { "bounds", QRectF(60, 70, 80, 90) } });
        QCOMPARE(recorder.keys(),
            QStringList({ "border.lineWidth", "border.style", "bounds", "color" }));
        square->removeObserver(&recorder);
        square->setContents(QStringLiteral("unseen"));
        QCOMPARE(recorder.changes.size(), 4);
        square->border()->setDashPattern({ 8, 8 }); // in place, on the page

        // The bytes are made on a worker, as a save makes them.
        QByteArray bytes;
        std::thread worker([&] { bytes = doc->dataRepresentation(); });
        worker.join();
        const auto read = std::dynamic_pointer_cast<PDFAnnotationSquare>(
            only(open(bytes)->pageAtIndex(0), QStringLiteral("Square")));
        QVERIFY(read);
        QVERIFY(read->hasAppearanceStream());
        QCOMPARE(read->bounds(), QRectF(60, 70, 80, 90));
        QVERIFY(!read->color().isValid());
        QCOMPARE(read->interiorColor(), QColor(0, 255, 0));
        QCOMPARE(read->border()->lineWidth(), 3.0);
        QCOMPARE(read->border()->style(), int(PDFBorder::Dashed));
        QCOMPARE(read->border()->dashPattern(), QList<double>({ 8, 8 }));
        QCOMPARE(read->contents(), QStringLiteral("unseen"));
    }

    void editsDoNotWaitForAWorkerInTheDocument()
    {
        auto doc = open(PdfFixtures::build(PdfFixtures::textPages(2000, 40, 0)));
        const auto square = makeAnnotation(QStringLiteral("Square"), QRectF(50, 50, 100, 100));
        doc->pageAtIndex(0)->addAnnotation(square);
        QElapsedTimer timer;
        timer.start();
        doc->dataRepresentation();
        const double saveMs = double(timer.nsecsElapsed()) / 1e6;
        if (saveMs < 20)
            QSKIP("serialising is too quick here to hold the document for long");
        // A worker holds the document while it serialises; the edits on this thread go on.
        std::atomic<bool> started { false };
        std::thread worker([&] {
            started = true;
            doc->dataRepresentation();
        });
        while (!started)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        timer.restart();
        for (int step = 1; step <= 20; ++step)
            square->setBounds(QRectF(50 + step, 50, 100, 100));
        const double editMs = double(timer.nsecsElapsed()) / 1e6;
        worker.join();
        QVERIFY2(editMs < saveMs / 4,
            qPrintable(QStringLiteral("edits %1 ms, a save %2 ms").arg(editMs).arg(saveMs)));
        // Written by the next turn of the event loop, and before any bytes are taken.
        QCoreApplication::processEvents();
        const auto read = only(reopen(*doc)->pageAtIndex(0), QStringLiteral("Square"));
        QVERIFY(read);
        QCOMPARE(read->bounds(), QRectF(70, 50, 100, 100));
    }

    void nonsenseValuesLeaveASoundFile()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        auto doc = textDocument();
        const auto page = doc->pageAtIndex(0);
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        auto line = std::static_pointer_cast<PDFAnnotationLine>(
            makeAnnotation(QStringLiteral("Line"), QRectF(nan, 10, inf, -5)));
        line->setEndPoint(QPointF(-inf, 1e300));
        line->setEndLineStyle(99);
        line->border()->setLineWidth(-3);
        line->border()->setStyle(PDFBorder::Dashed);
        line->border()->setDashPattern({ -1, 0, nan });
        auto ink = std::static_pointer_cast<PDFAnnotationInk>(
            makeAnnotation(QStringLiteral("Ink"), QRectF(0, 0, 0, 0)));
        auto stroke = std::make_shared<BezierPath>();
        stroke->moveTo({ nan, nan });
        ink->addBezierPath(stroke);
        ink->addBezierPath(std::make_shared<BezierPath>());
        const auto note = makeAnnotation(QStringLiteral("Text"), QRectF(1e12, -1e12, 0, 0));
        note->setModificationDate(QDateTime());
        note->setContents(QString(QChar(0)) + QStringLiteral(") \\ ( \xfffd"));
        for (const auto &annotation :
            { std::shared_ptr<PDFAnnotation>(line), std::shared_ptr<PDFAnnotation>(ink), note })
            page->addAnnotation(annotation);
        QVERIFY(!page->imageForBox(PDFDisplayBox::CropBox, QSize(61, 79)).isNull());
        QImage overlay(100, 100, QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&overlay);
        for (const auto &annotation : page->annotations())
            annotation->drawWithBox(painter, PDFDisplayBox::CropBox);
        painter.end();

        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("nonsense.pdf"));
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(path)));
        const auto check = TestTools::run(qpdf, { QStringLiteral("--check"), path });
        QVERIFY2(check.exitCode == 0, check.out.constData());
        QCOMPARE(reopen(*doc)->pageAtIndex(0)->annotations().size(), size_t(3));
    }

    void archivedAnnotationsComeBackAsTheyWere_data() { kindsComeBackFromTheFile_data(); }
    void archivedAnnotationsComeBackAsTheyWere()
    {
        QFETCH(QString, type);
        const QRectF bounds(100, 500, 120, 60);
        const auto original = makeAnnotation(type, bounds);
        original->setUserName(QStringLiteral("Ada"));
        original->setModificationDate(QDateTime(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC));
        QVariantMap coder;
        original->encodeWithCoder(coder);
        const QByteArray bytes = Archiver::archivedData(coder);
        QVERIFY(!bytes.isEmpty());

        const QVariantMap decoded = Archiver::unarchive(bytes).toMap();
        const auto restored = PDFAnnotation::classForType(type)();
        QVERIFY(restored->initWithCoder(decoded));
        QVERIFY(!restored->page());
        QCOMPARE(restored->type(), type);
        QCOMPARE(restored->bounds(), bounds);
        QCOMPARE(restored->contents(), original->contents());
        QVariantMap again;
        restored->encodeWithCoder(again);
        QCOMPARE(Archiver::archivedData(again), bytes);
        if (original->border()) {
            QVERIFY(restored->border() != original->border()); // a border of its own
            QCOMPARE(restored->border()->dashPattern(), original->border()->dashPattern());
        }

        // On a page, the copy draws what the original draws.
        auto first = textDocument();
        auto second = textDocument();
        first->pageAtIndex(0)->addAnnotation(original);
        second->pageAtIndex(0)->addAnnotation(restored);
        const QImage drawn
            = first->pageAtIndex(0)->imageForBox(PDFDisplayBox::MediaBox, { 306, 396 });
        QCOMPARE(second->pageAtIndex(0)->imageForBox(PDFDisplayBox::MediaBox, { 306, 396 }), drawn);
        QVERIFY(drawn
            != textDocument()->pageAtIndex(0)->imageForBox(PDFDisplayBox::MediaBox, { 306, 396 }));
    }

    void damagedArchivesMakeNoAnnotation()
    {
        QVariantMap coder;
        makeAnnotation(QStringLiteral("Line"), QRectF(0, 0, 50, 50))->encodeWithCoder(coder);
        for (const char *key : { "type", "bounds" }) {
            QVariantMap damaged = coder;
            damaged.remove(QLatin1String(key));
            QVERIFY(!PDFAnnotationLine().initWithCoder(damaged));
            damaged.insert(QLatin1String(key), 7);
            QVERIFY(!PDFAnnotationLine().initWithCoder(damaged));
        }
        QVERIFY(!PDFAnnotationLine().initWithCoder(Archiver::unarchive("not an archive").toMap()));

        // Wrong values under known keys give a sound annotation a file can hold.
        QVariantMap odd = coder;
        odd.insert(QStringLiteral("border"), QStringLiteral("thick"));
        odd.insert(QStringLiteral("startPoint"), QStringLiteral("left"));
        odd.insert(QStringLiteral("color"), QVariant());
        auto line = std::make_shared<PDFAnnotationLine>();
        QVERIFY(line->initWithCoder(odd));
        QVERIFY(!line->border());
        QVERIFY(!line->color().isValid());
        auto doc = textDocument();
        doc->pageAtIndex(0)->addAnnotation(line);
        QCOMPARE(reopen(*doc)->pageAtIndex(0)->annotations().size(), size_t(1));
    }

    void annotationsMoveWithTheirPageIntoAnotherDocument()
    {
        auto source = textDocument();
        const auto page = source->pageAtIndex(0);
        const auto ink = makeAnnotation(QStringLiteral("Ink"), QRectF(20, 20, 100, 100));
        const auto note = makeAnnotation(QStringLiteral("Text"), QRectF(300, 300, 0, 0));
        page->addAnnotation(ink);
        page->addAnnotation(note);
        const auto before = page->annotations();

        auto target = std::make_shared<PDFDocument>();
        QVERIFY(target->init());
        target->insertPage(page, 0);
        QCOMPARE(source->pageCount(), 0);
        QCOMPARE(target->pageAtIndex(0), page);
        QVERIFY(page->annotations() == before);
        QCOMPARE(ink->page(), page);
        note->setContents(QStringLiteral("after the move"));

        const auto read = reopen(*target)->pageAtIndex(0);
        QCOMPARE(read->annotations().size(), size_t(2));
        QCOMPARE(only(read, QStringLiteral("Text"))->contents(), QStringLiteral("after the move"));
        QCOMPARE(only(read, QStringLiteral("Text"))->bounds().size(), QSizeF(24, 24));
        const auto inkRead
            = std::dynamic_pointer_cast<PDFAnnotationInk>(only(read, QStringLiteral("Ink")));
        QVERIFY(inkRead);
        QCOMPARE(inkRead->paths().size(), 1);

        // Removing after the move takes it out of the new file.
        page->removeAnnotation(ink);
        QCOMPARE(reopen(*target)->pageAtIndex(0)->annotations().size(), size_t(1));
    }

    void removedNoteTakesItsPopupAlongAndComesBackAlone()
    {
        PdfFixtures::Page page;
        page.annotations = {
            { "/Subtype /Text /Rect [100 100 124 124] /Contents (note) /Popup 7 0 R", {}, {} },
            { "/Subtype /Popup /Rect [200 200 300 300] /Parent 6 0 R", {}, {} },
        };
        PdfFixtures::Document description;
        description.pages = { page };
        const QByteArray pdf = PdfFixtures::build(description);
        QVERIFY(pdf.contains("6 0 obj\n<< /Type /Annot /Subtype /Text"));
        auto doc = open(pdf);
        const auto first = doc->pageAtIndex(0);
        QCOMPARE(first->annotations().size(), size_t(2));
        QCOMPARE(first->annotations()[1]->type(), QStringLiteral("Popup"));
        const auto note = first->annotations()[0];
        first->removeAnnotation(note);
        QVERIFY(!note->page());
        QVERIFY(first->annotations().empty());
        QCOMPARE(reopen(*doc)->pageAtIndex(0)->annotations().size(), size_t(0));
        // Edited off the page and added again, the note comes back alone, as edited.
        note->setContents(QStringLiteral("edited while off the page"));
        first->addAnnotation(note);
        const auto read = reopen(*doc)->pageAtIndex(0)->annotations();
        QCOMPARE(read.size(), size_t(1));
        QCOMPARE(read[0]->contents(), QStringLiteral("edited while off the page"));
    }

    void existingAnnotationsAreReadWithTheirGeometry()
    {
        PdfFixtures::Page page;
        page.links
            = { { QRectF(72, 600, 200, 20), QStringLiteral("https://example.org/a"), -1, {} },
                  { QRectF(72, 560, 200, 20), QString(), 1, QPointF(30, 700) } };
        page.annotations = {
            { "/Subtype /Line /Rect [90 90 210 160] /L [100 100 200 150] /LE [/Circle "
              "/ClosedArrow] "
              "/C [0 0 1] /BS << /W 3 /S /D /D [4 2] >> /Contents (a line)",
                {}, {} },
            { "/Subtype /Ink /Rect [0 0 100 100] /InkList [[10 10 20 30 40 20]]", {}, {} },
            { "/Subtype /StrikeOut /Rect [70 700 300 720] "
              "/QuadPoints [72 718 290 718 72 702 290 702]",
                {}, {} },
            { "/Subtype /Polygon /Rect [300 300 400 400] /Vertices [300 300 400 300 350 400]", {},
                {} },
            { "/Subtype /Link /Rect [400 600 500 620] "
              "/A << /S /GoToR /F (other.pdf) /D [3 /XYZ 10 20 null] >>",
                {}, {} },
        };
        PdfFixtures::Document description;
        description.pages = { page, PdfFixtures::Page() };
        auto delegate = std::make_shared<MarkingDelegate>();
        auto doc = std::make_shared<PDFDocument>();
        doc->setDelegate(delegate);
        QVERIFY(doc->initWithData(PdfFixtures::build(description)));
        const auto &annotations = doc->pageAtIndex(0)->annotations();
        QStringList types;
        for (const auto &annotation : annotations)
            types.append(annotation->type());
        QCOMPARE(
            types, QStringList({ "Link", "Link", "Line", "Ink", "StrikeOut", "Polygon", "Link" }));
        QCOMPARE(delegate->asked, types);
        // A copy of the page, in no document yet, builds its annotations the same way.
        delegate->asked.clear();
        const auto copy = doc->pageAtIndex(0)->copy();
        QCOMPARE(copy->annotations().size(), annotations.size());
        QCOMPARE(delegate->asked, types);
        QCOMPARE(copy->annotations()[2]->bounds(), annotations[2]->bounds());

        const auto url = std::dynamic_pointer_cast<PDFAnnotationLink>(annotations[0]);
        QCOMPARE(url->URL(), QUrl(QStringLiteral("https://example.org/a")));
        const auto jump = std::dynamic_pointer_cast<PDFAnnotationLink>(annotations[1]);
        QCOMPARE(jump->destination()->page(), doc->pageAtIndex(1));
        QCOMPARE(jump->destination()->point(), QPointF(30, 700));
        QCOMPARE(doc->pageAtIndex(0)->annotationAtPoint(QPointF(80, 565)), annotations[1]);
        const auto remote = std::dynamic_pointer_cast<PDFActionRemoteGoTo>(
            std::dynamic_pointer_cast<PDFAnnotationLink>(annotations[6])->action());
        QVERIFY(remote);
        QCOMPARE(remote->URL(), QUrl(QStringLiteral("other.pdf")));
        QCOMPARE(remote->pageIndex(), 3);
        QCOMPARE(remote->point(), QPointF(10, 20));

        const auto line = std::dynamic_pointer_cast<PDFAnnotationLine>(annotations[2]);
        QCOMPARE(line->bounds(), QRectF(90, 90, 120, 70));
        QCOMPARE(line->startPoint(), QPointF(10, 10));
        QCOMPARE(line->endPoint(), QPointF(110, 60));
        QCOMPARE(line->startLineStyle(), int(PDFAnnotationLine::Circle));
        QCOMPARE(line->endLineStyle(), int(PDFAnnotationLine::ClosedArrow));
        QCOMPARE(line->border()->dashPattern(), QList<double>({ 4, 2 }));
        const auto ink = std::dynamic_pointer_cast<PDFAnnotationInk>(annotations[3]);
        QCOMPARE(ink->paths().size(), 1);
        QCOMPARE(ink->paths()[0]->elementCount(), 3);
        const auto strike = std::dynamic_pointer_cast<PDFAnnotationMarkup>(annotations[4]);
        QCOMPARE(strike->markupType(), int(PDFAnnotationMarkup::StrikeOut));
        QCOMPARE(strike->quadrilateralPoints()[3], QPointF(220, 2));
        // A kind the engine has no class for keeps what its dictionary held when added again.
        const auto polygon = annotations[5];
        const auto first = doc->pageAtIndex(0);
        first->removeAnnotation(polygon);
        QVERIFY(!doc->dataRepresentation().contains("/Vertices"));
        first->addAnnotation(polygon);
        static const QRegularExpression vertices(
            QStringLiteral("/Vertices\\s*\\[\\s*300 300 400 300 350 400\\s*\\]"));
        QVERIFY(QString::fromLatin1(doc->dataRepresentation()).contains(vertices));
        QCOMPARE(
            reopen(*doc)->pageAtIndex(0)->annotations().back()->type(), QStringLiteral("Polygon"));
    }

    // A link, direct or through a named destination, leads to its page wherever that page is now.
    void linksLeadToTheirPageWhereverItIsNow()
    {
        const QByteArray page = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] ";
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(PdfFixtures::fromObjects({
            "<< /Type /Catalog /Pages 2 0 R "
            "/Names << /Dests << /Names [(results) [5 0 R /XYZ 30 500 null]] >> >> >>",
            "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 >>",
            page + "/Annots [6 0 R 7 0 R] >>",
            page + ">>",
            page + ">>",
            "<< /Type /Annot /Subtype /Link /Rect [10 10 100 30] /Dest (results) >>",
            "<< /Type /Annot /Subtype /Link /Rect [10 40 100 60] "
            "/A << /S /GoTo /D [4 0 R /XYZ 0 700 null] >> >>",
        })));
        const auto links = doc->pageAtIndex(0)->annotations();
        QCOMPARE(links.size(), size_t(2));
        const auto second = doc->pageAtIndex(1);
        const auto third = doc->pageAtIndex(2);
        // The last page moves to the front before either link is followed.
        doc->insertPage(third, 0);
        QCOMPARE(doc->pageAtIndex(0), third);
        const auto named = std::dynamic_pointer_cast<PDFAnnotationLink>(links[0]);
        QVERIFY(named && named->destination());
        QCOMPARE(named->destination()->page(), third);
        QCOMPARE(named->destination()->point(), QPointF(30, 500));
        const auto goTo = std::dynamic_pointer_cast<PDFActionGoTo>(
            std::dynamic_pointer_cast<PDFAnnotationLink>(links[1])->action());
        QVERIFY(goTo);
        QCOMPARE(goTo->destination()->page(), second);

        // Edited before it is ever followed, a link keeps its target in the file.
        const auto reread = reopen(*doc);
        const auto unread = reread->pageAtIndex(1)->annotations();
        QCOMPARE(unread.size(), size_t(2));
        unread[0]->setBounds(QRectF(10, 10, 120, 30));
        const auto again = reopen(*reread);
        const auto edited
            = std::dynamic_pointer_cast<PDFAnnotationLink>(again->pageAtIndex(1)->annotations()[0]);
        QCOMPARE(edited->bounds(), QRectF(10, 10, 120, 30));
        QVERIFY(edited->destination());
        QCOMPARE(edited->destination()->page(), again->pageAtIndex(0));
    }
};

QTEST_MAIN(PDFAnnotationTest)
#include "PDFAnnotationTest.moc"
