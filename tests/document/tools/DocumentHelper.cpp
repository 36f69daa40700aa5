// A separate process for the document tests.
//   document_helper set-xattr FILE NAME_LENGTH   sets an attribute with a name of that many bytes
//   document_helper get-xattr FILE NAME_LENGTH   reads it; prints its bytes
//   document_helper save-once FILE               adds a last page, a position to store with it,
//                                                saves and waits until the save has ended

#include <app/Alert.h>
#include <document/Common.h>
#include <document/FDDocument.h>
#include <document/FDPage.h>
#include <document/PDFSavingService.h>

#include <QCoreApplication>
#include <QUrl>

#include <cstdio>

namespace {

int attributeCommand(const QStringList &arguments)
{
    const QUrl url = QUrl::fromLocalFile(arguments.at(2));
    const QString name(arguments.at(3).toInt(), QLatin1Char('n'));
    if (arguments.at(1) == QLatin1String("set-xattr")) {
        FDSetXAttr(url, name, "value");
        return 0;
    }
    const std::optional<QByteArray> value = FDGetXAttr(url, name);
    std::fputs(value ? value->constData() : "(nothing)", stdout);
    return 0;
}

std::shared_ptr<FDDocument> openDocument(const QString &path)
{
    Alert::setHandlerForTesting([](const AlertRequest &request) {
        std::fprintf(stderr, "alert: %s\n", qPrintable(request.messageText));
        return 1000;
    });
    auto document = std::make_shared<FDDocument>();
    if (document->initWithURL(QUrl::fromLocalFile(path), {}))
        return document;
    std::fprintf(stderr, "cannot open %s\n", qPrintable(path));
    return {};
}

void waitForSaves(QCoreApplication &application)
{
    while (PDFSavingService::shared().numberOfTasks() > 0)
        application.processEvents(QEventLoop::WaitForMoreEvents);
}

int saveOnce(QCoreApplication &application, const QString &path)
{
    const auto document = openDocument(path);
    if (!document)
        return 1;
    auto page = std::make_shared<FDPage>();
    page->init();
    document->insertPage(page, document->pageCount());
    document->setXattrItemsToSave(QList<FDXAttrItem> {
        { QStringLiteral("com.Scrollwick.PDFView.LastPosition"), QByteArray("new-position") } });
    document->save();
    waitForSaves(application);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const QString command = arguments.value(1);
    if (arguments.size() == 4
        && (command == QLatin1String("set-xattr") || command == QLatin1String("get-xattr")))
        return attributeCommand(arguments);
    if (arguments.size() == 3 && command == QLatin1String("save-once"))
        return saveOnce(application, arguments.at(2));
    std::fputs(
        "usage: document_helper set-xattr|get-xattr FILE NAME_LENGTH | save-once FILE\n", stderr);
    return 2;
}
