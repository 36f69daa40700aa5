// folidoc-fuzz-seeds FOLDER: writes the starting corpus of every fuzz target into
// FOLDER/<target>/, made from the same generated files and real objects the tests use, so that
// no binary seed lives in the repository.

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <app/FDDefaults.h>
#include <document/Common.h>
#include <kit/base/Archiver.h>
#include <kit/base/BezierPath.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFBorder.h>
#include <view/FDPDFView.h>

#include <kit/engine/support/RawPdf.h>
#include <support/PdfFixtures.h>

#include <QApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QTemporaryDir>

#include <cstdio>

namespace {

QString outputFolder;
int written = 0;

void seed(const QString &target, const QString &name, const QByteArray &bytes)
{
    QDir().mkpath(outputFolder + QLatin1Char('/') + target);
    QFile file(outputFolder + QLatin1Char('/') + target + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
        std::exit(1);
    }
    ++written;
}

void pdfSeeds()
{
    using namespace PdfFixtures;
    const QString target = QStringLiteral("pdf-document");
    Document text = textPages(2, 6, 1);
    seed(target, QStringLiteral("text"), build(text));
    seed(target, QStringLiteral("repaired"), withoutXref(build(text)));
    seed(target, QStringLiteral("truncated"), truncated(build(text), 0.7));

    Document shaped;
    for (int rotate : { 0, 90, 180, 270 }) {
        Page page;
        page.mediaBox = QRectF(0, 0, 200 + rotate, 300);
        page.cropBox = QRectF(10, 10, 150, 250);
        page.rotate = rotate;
        page.lines = { QStringLiteral("Rotated %1 page").arg(rotate) };
        page.textStart = QPointF(20, 200);
        page.fills = { Fill { QRectF(20, 20, 60, 60), 0.2, 0.4, 0.8 } };
        shaped.pages.append(page);
    }
    shaped.pages[0].links
        = { Link { QRectF(20, 20, 60, 20), QStringLiteral("https://example.org"), -1, {} } };
    shaped.pages[1].annotations = {
        RawAnnotation { "/Subtype /Square /Rect [10 10 60 60] /C [1 0 0] /IC [0 0 1]", {}, {} },
        RawAnnotation {
            "/Subtype /Ink /Rect [0 0 100 100] /InkList [[10 10 50 50 90 10]]", {}, {} },
        RawAnnotation { "/Subtype /FreeText /Rect [20 100 180 140] /Contents (Note) "
                        "/DA (/Helv 12 Tf 0 0 1 rg) /Q 1",
            {}, {} },
        RawAnnotation { "/Subtype /Highlight /Rect [20 190 120 210] "
                        "/QuadPoints [20 210 120 210 20 190 120 190] /C [1 1 0]",
            "1 1 0 rg 0 0 100 20 re f", QRectF(0, 0, 100, 20) },
    };
    shaped.outline = { OutlineItem { QStringLiteral("First"), 0, QPointF(0, 300), 0, true,
        { OutlineItem { QStringLiteral("Inner"), 2, {}, 1.5, false, {} } } } };
    shaped.labels
        = { LabelRange { 0, 'r', {}, 1 }, LabelRange { 2, 'D', QStringLiteral("A-"), 1 } };
    seed(target, QStringLiteral("shapes"), build(shaped));

    Document picture;
    Page imagePage;
    imagePage.mediaBox = QRectF(0, 0, 100, 100);
    imagePage.image = photo(8, 8, 7);
    imagePage.imageRect = QRectF(10, 10, 80, 80);
    picture.pages.append(imagePage);
    seed(target, QStringLiteral("image"), build(picture));

    const QByteArray raw = RawPdf::build({ "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", RawPdf::page(2, 4),
        RawPdf::stream("/Filter /FlateDecode", RawPdf::deflatedRepeat("BT ET ", 50)) });
    seed(target, QStringLiteral("deflated"), raw);
    seed(target, QStringLiteral("prev-loop"), RawPdf::withUpdate(raw, -1));
}

QByteArray withSelector(quint8 selector, const QByteArray &archive)
{
    return QByteArray(1, char(selector)) + archive;
}

std::shared_ptr<PDFAnnotation> sample(const QString &type)
{
    const auto annotation = FDPDFView::classForAnnotationClass(type)();
    annotation->initWithBounds(QRectF(40, 50, 120, 80));
    annotation->setContents(QStringLiteral("A note on %1").arg(type));
    annotation->setColor(QColor::fromRgbF(0.9f, 0.3f, 0.1f, 0.8f));
    if (auto *const ink = dynamic_cast<PDFAnnotationInk *>(annotation.get())) {
        auto path = std::make_shared<BezierPath>();
        path->moveTo(QPointF(45, 55));
        path->curveTo(QPointF(150, 120), QPointF(60, 110), QPointF(140, 60));
        ink->addBezierPath(path);
    }
    if (auto *const line = dynamic_cast<PDFAnnotationLine *>(annotation.get())) {
        line->setStartPoint(QPointF(45, 55));
        line->setEndPoint(QPointF(150, 120));
    }
    if (auto *const freeText = dynamic_cast<PDFAnnotationFreeText *>(annotation.get())) {
        freeText->setFont(QFont(QStringLiteral("Helvetica"), 14));
        freeText->setAlignment(2);
    }
    return annotation;
}

void annotationSeeds()
{
    const QString target = QStringLiteral("annotation-archive");
    // The selector's bit 0 picks the archive reader, bit 1 the class table, bits 2 on the kind
    // of the pasteboard type, in the target's order.
    const QStringList pasteKinds { QStringLiteral("Highlight"), QStringLiteral("Ink"),
        QStringLiteral("Line"), QStringLiteral("Circle"), QStringLiteral("Square"),
        QStringLiteral("FreeText"), QStringLiteral("Text") };
    for (int kind = 0; kind < pasteKinds.size(); ++kind) {
        const auto annotation = sample(pasteKinds[kind]);
        seed(target, QStringLiteral("paste-") + pasteKinds[kind],
            withSelector(quint8(kind << 2), Archiver::archivedData(properties(*annotation))));
        QVariantMap coder;
        annotation->encodeWithCoder(coder);
        const QByteArray archive = Archiver::archivedData(coder);
        seed(target, QStringLiteral("coder-app-") + pasteKinds[kind], withSelector(3, archive));
        seed(target, QStringLiteral("coder-engine-") + pasteKinds[kind], withSelector(1, archive));
    }
    const auto stamp = sample(QStringLiteral("Stamp"));
    QVariantMap coder;
    stamp->encodeWithCoder(coder);
    seed(target, QStringLiteral("coder-Stamp"), withSelector(1, Archiver::archivedData(coder)));
}

void storedValueSeeds()
{
    const QString target = QStringLiteral("stored-values");
    const QVariantMap position {
        { QStringLiteral("Destination"), QStringLiteral("3,72.000000,400.000000,1.250000") },
        { QStringLiteral("ScaleMode"), qint64(0) },
        { QStringLiteral("ScaleFactor"), 1.75 },
        { QStringLiteral("DisplayMode"), qint64(3) },
    };
    seed(target, QStringLiteral("position"), withSelector(0, Archiver::archivedData(position)));
    QVariantMap fitted = position;
    fitted.insert(QStringLiteral("ScaleMode"), qint64(1));
    fitted.insert(QStringLiteral("Destination"), QStringLiteral("-1,0,0,0"));
    seed(target, QStringLiteral("position-fit"), withSelector(0, Archiver::archivedData(fitted)));

    // A preference file as the program writes it, with a colour, URL lists and typed numbers.
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setInteger(1, FDDefaults::RememberLastPosition);
    defaults.setDouble(1.5, QStringLiteral("Scale"));
    defaults.setObject(QStringLiteral("Ann Reader"), FDDefaults::UserName);
    setColorForKey(defaults, QColor::fromRgbF(0.2f, 0.5f, 0.7f, 0.9f), QStringLiteral("Colour"));
    const QList<QUrl> urls { QUrl::fromLocalFile(QStringLiteral("/tmp")),
        QUrl(QStringLiteral("https://example.org/a?b=c")) };
    defaults.setObject(FDEncodeURLs(urls), QStringLiteral("URLs"));
    defaults.setObject(QVariantList { QStringLiteral("0.5"), 0.25, 1 }, QStringLiteral("Grey"));
    defaults.setObject(
        QVariantMap { { QStringLiteral("window"),
            QVariantList { QVariantMap { { QStringLiteral("URLs"), FDEncodeURLs(urls) } } } } },
        FDDefaults::LastOpenedWindows);
    QFile store(UserDefaults::storePath());
    if (!store.open(QIODevice::ReadOnly))
        std::exit(1);
    seed(target, QStringLiteral("preferences"), withSelector(1, store.readAll()));

    // Single typed values, as the bytes the store keeps for them.
    const QList<std::pair<QString, QVariant>> values {
        { QStringLiteral("urls"), FDEncodeURLs(urls) },
        { QStringLiteral("colour"), Archiver::archivedData(QColor(Qt::red)) },
        { QStringLiteral("integer"), qint64(42) },
        { QStringLiteral("map"), position },
    };
    for (const auto &[name, value] : values) {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream.setVersion(QDataStream::Qt_6_0);
        stream << value;
        seed(target, QStringLiteral("value-") + name, withSelector(2, bytes));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: folidoc-fuzz-seeds FOLDER\n");
        return 2;
    }
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    outputFolder = QString::fromLocal8Bit(argv[1]);
    FDDefaults::registerDefaults();
    pdfSeeds();
    annotationSeeds();
    storedValueSeeds();
    std::printf("%d seeds in %s\n", written, qPrintable(outputFolder));
    return 0;
}
