// Fuzz target: what the program reads back from storage it does not control. The first byte
// chooses the store: the reading-position attribute of a file, restored into a real view of that
// file; the preference file as a whole, read by every typed reader, the colour reader and the
// URL-list reader; or the bytes of one typed value inside a well-formed preference file.

#include "FuzzEnvironment.h"

#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <app/FDDefaults.h>
#include <app/FDRecentDocuments.h>
#include <document/Common.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>

#include <memory>

namespace {

constexpr int maxKeys = 32;

// A view showing a small document of pages of several sizes and rotations, made once and kept
// to the end of the process: destroyed at exit it would outlive the notification centre.
FDPDFView &viewOfDocument(QUrl *url)
{
    static FDPDFView *view = nullptr;
    static QUrl fileURL;
    if (!view) {
        auto document = std::make_shared<PDFDocument>();
        if (!document->init())
            FuzzEnvironment::fail("no blank document");
        for (int index = 0; index < 5; ++index) {
            auto page = std::make_shared<PDFPage>();
            page->init();
            page->setBoundsForBox(QRectF(0, 0, 300 + 100 * index, 400), PDFDisplayBox::MediaBox);
            page->setRotation(90 * index);
            document->insertPage(page, index);
        }
        fileURL = QUrl::fromLocalFile(FuzzEnvironment::scratchPath() + QStringLiteral("/doc.pdf"));
        if (!document->writeToURL(fileURL))
            FuzzEnvironment::fail("cannot write the view's document");
        view = new FDPDFView;
        view->resize(480, 360);
        view->loadDocument(fileURL);
        view->show();
        if (!FuzzEnvironment::spinUntil(
                [] { return !view->isLoading() && view->fdDocument(); }, 20000))
            FuzzEnvironment::fail("the view does not load its document");
    }
    *url = fileURL;
    return *view;
}

void restorePosition(const QByteArray &bytes)
{
    QUrl url;
    FDPDFView &view = viewOfDocument(&url);
    view.setDisplayMode(PDFView::SinglePageContinuous);
    view.setScaleMode(PDFViewScaleMode::none);
    view.setScaleFactor(1.0);
    FDSetXAttr(url, FDPDFView::LastPositionAttributeName, bytes);
    view.restoreStatus();
    // Paint and lay out at whatever was restored, as the window would.
    view.grab(QRect(0, 0, 96, 72));
    QCoreApplication::processEvents();
}

void readEveryWay(const QString &key)
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.objectForKey(key);
    defaults.integerForKey(key);
    defaults.doubleForKey(key);
    defaults.floatForKey(key);
    defaults.boolForKey(key);
    defaults.stringForKey(key);
    defaults.dataForKey(key);
    defaults.arrayForKey(key);
    defaults.dictionaryForKey(key);
    colorForKey(defaults, key);
    FDDecodeURLs(defaults.objectForKey(key));
}

void readPreferences()
{
    const QSettings settings(UserDefaults::storePath(), QSettings::IniFormat);
    QStringList keys = settings.allKeys();
    if (keys.size() > maxKeys)
        keys.resize(maxKeys);
    for (const QString &key : keys)
        readEveryWay(key);
    FDDefaults::savingPrompt();
    FDDefaults::disableHistory();
    FDDefaults::rememberCurrentTheme();
    FDDefaults::rememberLastPosition();
    FDDefaults::alwaysShowSidebar();
    FDDefaults::userName();
    FDDefaults::launchWith();
    FDDefaults::defaultScaleMode();
    FDRecentDocuments::recentDocumentURLs();
}

void writeStore(const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(UserDefaults::storePath()).path());
    QFile file(UserDefaults::storePath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        FuzzEnvironment::fail("cannot write the preference file");
    file.write(bytes);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    FuzzEnvironment::setUp(argc, argv);
    FDDefaults::registerDefaults();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    switch (data[0] % 3) {
    case 0:
        restorePosition(bytes);
        break;
    case 1:
        writeStore(bytes);
        readPreferences();
        break;
    default: {
        writeStore(QByteArray());
        {
            QSettings settings(UserDefaults::storePath(), QSettings::IniFormat);
            settings.setValue(QStringLiteral("Value"),
                QVariantMap { { QStringLiteral("Folidoc.TypedValue"), bytes } });
        }
        readEveryWay(QStringLiteral("Value"));
        break;
    }
    }
    return 0;
}
