#include "FDFilePanel.h"

#include <QFileDialog>

namespace {

std::function<QUrl(const FilePanelRequest &)> &testHandler()
{
    static std::function<QUrl(const FilePanelRequest &)> handler;
    return handler;
}

std::function<QList<QUrl>(const FilePanelRequest &)> &testURLsHandler()
{
    static std::function<QList<QUrl>(const FilePanelRequest &)> handler;
    return handler;
}

QList<QUrl> runDialog(const FilePanelRequest &request)
{
    QStringList patterns;
    for (const QString &type : request.allowedFileTypes)
        patterns << QStringLiteral("*.") + type;
    const QString filter
        = QStringLiteral("%1 (%2)").arg(request.fileTypesTitle, patterns.join(QLatin1Char(' ')));
    QFileDialog dialog(request.parent);
    dialog.setNameFilter(filter);
    if (request.kind == FilePanelRequest::Open) {
        dialog.setFileMode(request.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                           : QFileDialog::ExistingFile);
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
    } else {
        dialog.setFileMode(QFileDialog::AnyFile);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDefaultSuffix(QStringLiteral("pdf"));
        dialog.selectFile(request.nameFieldStringValue);
    }
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedUrls();
}

} // namespace

QUrl FDFilePanel::runModal(const FilePanelRequest &request)
{
    if (testHandler())
        return testHandler()(request);
    const QList<QUrl> chosen = runDialog(request);
    return chosen.isEmpty() ? QUrl() : chosen.first();
}

QList<QUrl> FDFilePanel::runModalForURLs(const FilePanelRequest &request)
{
    if (testURLsHandler())
        return testURLsHandler()(request);
    if (testHandler()) {
        const QUrl chosen = testHandler()(request);
        return chosen.isEmpty() ? QList<QUrl>() : QList<QUrl> { chosen };
    }
    return runDialog(request);
}

void FDFilePanel::setHandlerForTesting(std::function<QUrl(const FilePanelRequest &)> handler)
{
    testHandler() = std::move(handler);
}

void FDFilePanel::setURLsHandlerForTesting(
    std::function<QList<QUrl>(const FilePanelRequest &)> handler)
{
    testURLsHandler() = std::move(handler);
}
