#include "support/AppTestEnvironment.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/FDTranslations.h>
#include <app/PDFContents.h>
#include <app/PDFWindowController.h>
#include <appearance/PDFZoomPicker.h>
#include <document/SaveReport.h>
#include <kit/base/Geometry.h>
#include <kit/base/UserDefaults.h>
#include <navigation/PDFAnnotationListModel.h>
#include <pages/PDFPagesEditor.h>
#include <view/FDPDFView.h>

#include <QAction>
#include <QMenuBar>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

// The interface in the person's language, checked in a child process started under each LANG,
// as a desktop session starts the program; and the translation files checked against the sources.
namespace {

const char ProbeVariable[] = "FOLIDOC_TRANSLATION_PROBE";

// What the child reports, one "key<TAB>value" line each.
QMap<QString, QString> probe(const QString &lang)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : { "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_TIME", "LC_NUMERIC" })
        environment.remove(QString::fromLatin1(name));
    environment.insert(QStringLiteral("LANG"), lang);
    environment.insert(QString::fromLatin1(ProbeVariable), QStringLiteral("1"));
    environment.insert(QStringLiteral("FOLIDOC_TEST_CHILD"), QStringLiteral("1"));
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {});
    QMap<QString, QString> report;
    if (!child.waitForFinished(60000) || child.exitCode() != 0) {
        qWarning("%s", child.readAllStandardError().constData());
        return report;
    }
    const QStringList lines = QString::fromUtf8(child.readAllStandardOutput()).split(u'\n');
    for (const QString &line : lines) {
        if (line.contains(u'\t'))
            report.insert(line.section(u'\t', 0, 0), line.section(u'\t', 1));
    }
    return report;
}

void report(const char *key, const QString &value)
{
    QString flat = value;
    flat.replace(u'\n', u' ');
    printf("%s\t%s\n", key, flat.toUtf8().constData());
}

// The child: the program's translator as main() installs it, then the texts people see and the
// values written into files.
int runProbe()
{
    FDTranslations::install();
    FDDefaults::registerDefaults();
    PDFContents::registerAsDocumentContents();
    report("language", FDTranslations::installedLanguage());

    QPointer<PDFWindowController> window = TabWindowController::create<PDFWindowController>();
    window->openNewTab();
    QStringList menus;
    for (const QAction *menu : window->menuBar()->actions())
        menus << menu->text();
    report("menus", menus.join(u'|'));
    report("qtCancel", QCoreApplication::translate("QPlatformTheme", "Cancel"));

    QTemporaryDir folder;
    const QString broken = folder.filePath(QStringLiteral("broken.pdf"));
    QFile file(broken);
    if (!file.open(QIODevice::WriteOnly) || file.write("not a PDF") != 9)
        return 2;
    file.close();
    QString alert;
    Alert::setHandlerForTesting([&alert](const AlertRequest &request) {
        alert = request.messageText;
        return int(Alert::FirstButtonReturn);
    });
    FDPDFView view;
    view.loadDocument(QUrl::fromLocalFile(broken));
    view.show();
    QDeadlineTimer deadline(20000);
    while (alert.isEmpty() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    report("alert", alert.replace(QUrl::fromLocalFile(broken).toString(), QStringLiteral("URL")));

    report("zoom", PDFZoomPicker::zoomText(12.5));
    report("date", PDFAnnotationListModel::formatDate(QDateTime(QDate(2026, 3, 4), QTime(12, 0))));
    report("extract",
        PDFPagesEditor::proposedExtractName(
            QUrl::fromLocalFile(QStringLiteral("/tmp/base.pdf")), { 0, 2, 12 }));
    report("unsavedCopy",
        QFileInfo(SaveReport::keepUnsavedCopy(QStringLiteral("Report.pdf"), "%PDF-1.4\n"))
            .fileName());
    // A preference read back as text and a window frame as it is stored.
    UserDefaults::standard().setDouble(1234.5, QStringLiteral("TranslationsTestScale"));
    report(
        "setting", UserDefaults::standard().stringForKey(QStringLiteral("TranslationsTestScale")));
    report("frame", Geometry::stringFromRect(QRectF(10.5, 20, 1234.5, 800)));
    delete window.data();
    return 0;
}

} // namespace

class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    void theInterfaceFollowsLang_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QStringList>("expected"); // as the keys below
        QTest::newRow("German")
            << "de_DE.UTF-8"
            << QStringList { "de",
                   "&Datei|&Bearbeiten|&Ansicht|&Werkzeuge|&Gehe zu|&Fenster|&Hilfe", "Abbrechen",
                   "Datei kann nicht gelesen werden: „URL“", "1.250\u00a0%", "04.03.26" };
        QTest::newRow("French") << "fr_FR.UTF-8"
                                << QStringList { "fr",
                                       "&Fichier|&Édition|&Affichage|&Outils|A&ller|Fe&nêtre|Ai&de",
                                       "Annuler",
                                       "Impossible de lire le fichier\u00a0: «\u00a0URL\u00a0»",
                                       "1\u202f250\u202f%", "04/03/2026" };
        QTest::newRow("US English")
            << "en_US.UTF-8"
            << QStringList { "", "&File|&Edit|&View|&Tools|&Go|&Window|&Help", "Cancel",
                   "Can't read file: \"URL\"", "1,250%", "03/04/26" };
    }

    void theInterfaceFollowsLang()
    {
        QFETCH(QString, lang);
        QFETCH(QStringList, expected);
        const QMap<QString, QString> seen = probe(lang);
        QVERIFY2(!seen.isEmpty(), "the child process failed");
        const QStringList keys { "language", "menus", "qtCancel", "alert", "zoom", "date" };
        for (qsizetype index = 0; index < keys.size(); ++index)
            QCOMPARE(seen.value(keys[index]), expected.value(index));
        // What goes into files and file names is the same in every language.
        QCOMPARE(seen.value(QStringLiteral("extract")), QStringLiteral("base-0,2,12.pdf"));
        QVERIFY2(QRegularExpression(
                     QStringLiteral(
                         R"(^Report \(unsaved \d{4}-\d\d-\d\d \d\d\.\d\d\.\d\d( \d+)?\)\.pdf$)"))
                     .match(seen.value(QStringLiteral("unsavedCopy")))
                     .hasMatch(),
            qPrintable(seen.value(QStringLiteral("unsavedCopy"))));
        QCOMPARE(seen.value(QStringLiteral("setting")), QStringLiteral("1234.5"));
        QCOMPARE(
            seen.value(QStringLiteral("frame")), QStringLiteral("{{10.5, 20}, {1234.5, 800}}"));
    }

    void placeholdersMatchTheSource_data()
    {
        QTest::addColumn<QString>("path");
        const QDir folder(QStringLiteral(FOLIDOC_TRANSLATIONS_DIR));
        const QStringList files = folder.entryList({ QStringLiteral("folidoc_*.ts") });
        QVERIFY(files.size() >= 2);
        for (const QString &file : files)
            QTest::newRow(qPrintable(file)) << folder.filePath(file);
    }

    void placeholdersMatchTheSource()
    {
        QFETCH(QString, path);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        static const QRegularExpression placeholder(QStringLiteral("%L?\\d+"));
        const auto placeholders = [](const QString &text) {
            QStringList found;
            for (const auto &match : placeholder.globalMatch(text))
                found << match.captured().remove(u'L');
            found.sort();
            return found;
        };
        QXmlStreamReader xml(&file);
        QString context, source;
        int translated = 0;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == u"name") {
                context = xml.readElementText();
            } else if (xml.name() == u"source") {
                source = xml.readElementText();
            } else if (xml.name() == u"translation") {
                const QString translation = xml.readElementText();
                if (translation.isEmpty())
                    continue;
                ++translated;
                QVERIFY2(placeholders(translation) == placeholders(source),
                    qPrintable(
                        QStringLiteral("%1: \"%2\" -> \"%3\"").arg(context, source, translation)));
            }
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QVERIFY(translated > 300);
    }
};

int main(int argc, char *argv[])
{
    AppTestEnvironment::isolate();
    QApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(ProbeVariable))
        return runProbe();
    TranslationsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "TranslationsTest.moc"
