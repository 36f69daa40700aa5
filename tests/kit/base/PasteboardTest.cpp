#include <kit/base/Pasteboard.h>

#include <QClipboard>
#include <QColor>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

namespace {

const QString inkType = QStringLiteral("Folidoc.Pasteboard.Annotation.Ink");
const QString noteType = QStringLiteral("Folidoc.Pasteboard.Annotation.Note");
const QByteArray pdfBytes("%PDF-1.4\n%\xe2\xe3\xcf\xd3\n");
const QVariantMap ink { { QStringLiteral("Color"), QColor(Qt::red) },
    { QStringLiteral("Points"), QVariantList { 1.5, 2.5 } }, { QStringLiteral("Page"), 3 } };

} // namespace

class PasteboardTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { Pasteboard::general().clearContents(); }

    void writesAccumulateUntilClear()
    {
        Pasteboard &board = Pasteboard::general();
        const QList<QUrl> urls { QUrl::fromLocalFile(QStringLiteral("/tmp/a b.pdf")),
            QUrl(QStringLiteral("https://example.org/x?y=1")) };
        QVERIFY(board.setString(QStringLiteral("Zoë's note")));
        QVERIFY(board.setPropertyList(ink, inkType));
        QVERIFY(board.setData(pdfBytes, Pasteboard::PDFType));
        QVERIFY(board.writeURLs(urls));
        for (const QString &type :
            { Pasteboard::StringType, inkType, Pasteboard::PDFType, Pasteboard::URLType })
            QVERIFY2(board.types().contains(type), qPrintable(type));
        QCOMPARE(board.stringForType(), QStringLiteral("Zoë's note"));
        QCOMPARE(board.propertyListForType(inkType), QVariant(ink));
        QCOMPARE(board.dataForType(Pasteboard::PDFType), pdfBytes);
        QCOMPARE(board.readURLs(), urls);
        // Other programs see the same contents through the system clipboard.
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Zoë's note"));
        QCOMPARE(
            QGuiApplication::clipboard()->mimeData()->data(inkType), board.dataForType(inkType));

        const int before = board.changeCount();
        board.clearContents();
        QCOMPARE(board.changeCount(), before + 1);
        QVERIFY(board.types().isEmpty());
        QVERIFY(!board.propertyListForType(inkType).isValid());
        QVERIFY(board.setData(QByteArrayLiteral("x"), noteType));
        QCOMPARE(board.types(), QStringList { noteType });
    }

    void readsFollowTheCallersTypeOrder_data()
    {
        QTest::addColumn<QStringList>("wanted");
        QTest::addColumn<QString>("available");
        QTest::addColumn<QVariant>("object");
        QTest::newRow("property list") << QStringList { noteType, inkType, Pasteboard::StringType }
                                       << inkType << QVariant(ink);
        QTest::newRow("string") << QStringList { Pasteboard::StringType, inkType }
                                << Pasteboard::StringType << QVariant(QStringLiteral("hello"));
        QTest::newRow("raw bytes") << QStringList { Pasteboard::PNGType, Pasteboard::PDFType }
                                   << Pasteboard::PDFType << QVariant(pdfBytes);
        QTest::newRow("none") << QStringList { noteType } << QString() << QVariant();
    }
    void readsFollowTheCallersTypeOrder()
    {
        QFETCH(QStringList, wanted);
        QFETCH(QString, available);
        QFETCH(QVariant, object);
        Pasteboard &board = Pasteboard::general();
        board.setPropertyList(ink, inkType);
        board.setString(QStringLiteral("hello"));
        board.setData(pdfBytes, Pasteboard::PDFType);
        QCOMPARE(board.availableTypeFromArray(wanted), available);
        QCOMPARE(board.readFirstObjectOfTypes(wanted), object);
    }

    void foreignContentsAreReadableButNotMixedIn()
    {
        Pasteboard &board = Pasteboard::general();
        board.setPropertyList(ink, inkType);
        // Another program takes the clipboard with plain text only.
        QGuiApplication::clipboard()->setText(QStringLiteral("from elsewhere"));
        QVERIFY(!board.canReadType(inkType));
        QVERIFY(board.canReadType(Pasteboard::StringType));
        QCOMPARE(board.stringForType(), QStringLiteral("from elsewhere"));
        board.setData(pdfBytes, Pasteboard::PDFType);
        QCOMPARE(board.types(), QStringList { Pasteboard::PDFType });
    }
};

QTEST_MAIN(PasteboardTest)
#include "PasteboardTest.moc"
