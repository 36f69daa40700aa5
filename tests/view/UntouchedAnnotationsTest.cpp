// Opening a file in the view, reading every page and saving it after one edit leaves every other
// annotation's dictionary as the file had it, pictures included: compared by an independent
// reader (Debian's pikepdf).

#include "app/support/AppTestEnvironment.h"

#include <app/FDDefaults.h>
#include <document/FDDocument.h>
#include <document/PDFSavingService.h>
#include <kit/base/UndoManager.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFPage.h>
#include <support/PdfFixtures.h>
#include <support/TestTools.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Each annotation of the file, every key but the back references, streams as a digest of their
// decoded data, in page order.
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
    if isinstance(o, (pikepdf.Name, pikepdf.String)):
        return str(o)
    try:
        return round(float(o), 3)
    except Exception:
        return str(o)
pdf = pikepdf.open(sys.argv[1])
print(json.dumps([norm(a) for page in pdf.pages for a in page.obj.get('/Annots', [])]))
)";
    const auto result = TestTools::run(python, { QStringLiteral("-c"), script, path });
    return QJsonDocument::fromJson(result.out).array();
}

PdfFixtures::Document annotatedDocument()
{
    PdfFixtures::Document document = PdfFixtures::textPages(2, 10, 0);
    const QByteArray box = "q 1 0 0 RG 2 w 5 5 90 40 re S Q";
    document.pages[0].annotations = {
        { "/Subtype /Square /Rect [100 100 200 150] /C [1 0 0] /Border [0 0 2]", box,
            QRectF(0, 0, 100, 50) },
        { "/Subtype /Circle /Rect [300 100 400 150]", box, QRectF(0, 0, 100, 50) },
        { "/Subtype /Highlight /Rect [72 712 200 730] /C [1 1 0] /QuadPoints [72 730 200 730 72 "
          "712 200 712] /Contents (Page 1 line 1)",
            "q 1 1 0 rg 0 0 128 18 re f Q", QRectF(0, 0, 128, 18) },
    };
    document.pages[1].annotations = {
        { "/Subtype /Text /Rect [400 600 420 620] /C [0 0 1] /Contents (A note) /Name /Comment", {},
            {} },
        { "/Subtype /FreeText /Rect [100 500 300 540] /DA (/Helv 12 Tf 0 g) /Contents (Boxed)", {},
            {} },
        { "/Subtype /Line /Rect [100 300 300 400] /L [110 310 290 390] /C [0 1 0]", {}, {} },
    };
    return document;
}

} // namespace

class UntouchedAnnotationsTest : public QObject
{
    Q_OBJECT

private slots:
    void savingChangesOnlyTheEditedAnnotation_data();
    void savingChangesOnlyTheEditedAnnotation();
};

void UntouchedAnnotationsTest::savingChangesOnlyTheEditedAnnotation_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("edited"); // index among all annotations of the file
    QTest::newRow("the square") << 0 << 0;
    QTest::newRow("the circle without a colour") << 0 << 1;
    QTest::newRow("the highlight") << 0 << 2;
    QTest::newRow("the free text") << 1 << 4;
}

void UntouchedAnnotationsTest::savingChangesOnlyTheEditedAnnotation()
{
    QFETCH(int, page);
    QFETCH(int, edited);
    FOLIDOC_REQUIRE_TOOL(python, "python3");
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("annotated.pdf"));
    QVERIFY(PdfFixtures::write(annotatedDocument(), path));
    const QJsonArray before = dictionaries(python, path);
    QCOMPARE(before.size(), 6);

    AppTestEnvironment::clearStore();
    FDDefaults::registerDefaults();
    UndoManager undo;
    auto view = std::make_unique<FDPDFView>();
    view->setUndoManager(&undo);
    view->resize(600, 500);
    view->loadDocument(QUrl::fromLocalFile(path));
    view->show();
    QTRY_VERIFY(!view->isLoading());
    for (int index = 0; index < view->document()->pageCount(); ++index) {
        view->goToPage(view->document()->pageAtIndex(index));
        QTRY_VERIFY(view->isVisibleAreaRendered());
    }
    const auto annotations = view->document()->pageAtIndex(page)->annotations();
    const auto annotation = annotations[size_t(page == 0 ? edited : edited - 3)];
    view->setSelectedAnn(annotation);
    annotation->setColor(QColor(0, 128, 255));
    view->fdDocument()->save();
    QTRY_COMPARE(PDFSavingService::shared().numberOfTasks(), 0);

    const QJsonArray after = dictionaries(python, path);
    QCOMPARE(after.size(), before.size());
    for (int index = 0; index < before.size(); ++index) {
        if (index == edited) {
            QVERIFY(after[index] != before[index]);
            continue;
        }
        QVERIFY2(after[index] == before[index],
            qPrintable(
                QStringLiteral("annotation %1 changed:\n%2\n%3")
                    .arg(index)
                    .arg(QString::fromUtf8(QJsonDocument(before[index].toObject()).toJson()),
                        QString::fromUtf8(QJsonDocument(after[index].toObject()).toJson()))));
    }
}

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    UntouchedAnnotationsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "UntouchedAnnotationsTest.moc"
