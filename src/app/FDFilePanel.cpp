#include "FDFilePanel.h"

#include <QFileDialog>

namespace {

std::function<QUrl(const FilePanelRequest &)> &testHandler()
{
    static std::function<QUrl(const FilePanelRequest &)> handler;
    return handler;
}

} // namespace

QUrl FDFilePanel::runModal(const FilePanelRequest &request)
{
    if (testHandler())
        return testHandler()(request);
    QStringList patterns;
    for (const QString &type : request.allowedFileTypes)
        patterns << QStringLiteral("*.") + type;
    const QString filter = QObject::tr("PDF documents (%1)").arg(patterns.join(QLatin1Char(' ')));
    QFileDialog dialog(request.parent);
    dialog.setNameFilter(filter);
    if (request.kind == FilePanelRequest::Open) {
        dialog.setFileMode(QFileDialog::ExistingFile);
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
    } else {
        dialog.setFileMode(QFileDialog::AnyFile);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDefaultSuffix(QStringLiteral("pdf"));
        dialog.selectFile(request.nameFieldStringValue);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedUrls().isEmpty())
        return {};
    return dialog.selectedUrls().first();
}

void FDFilePanel::setHandlerForTesting(std::function<QUrl(const FilePanelRequest &)> handler)
{
    testHandler() = std::move(handler);
}
