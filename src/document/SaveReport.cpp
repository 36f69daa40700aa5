#include "SaveReport.h"

#include "AtomicFileWriter.h"
#include "FDDocument.h"
#include "FDError.h"
#include "Logger.h"

#include <app/Alert.h>
#include <app/FDFilePanel.h>
#include <view/FDPDFView.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QWindow>

namespace {

QString fileNameOf(const QString &path)
{
    return QFileInfo(path).fileName();
}

} // namespace

bool SaveReport::hasWindow()
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    const QList<QWindow *> windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.cbegin(), windows.cend(),
        [](const QWindow *window) { return window->isVisible(); });
}

QString SaveReport::keepUnsavedCopy(const QString &fileName, const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return {};
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation)
        + QStringLiteral("/Unsaved");
    if (!QDir().mkpath(folder))
        return {};
    const QFileInfo name(fileName.isEmpty() ? QStringLiteral("Untitled.pdf") : fileName);
    const QString stem = name.completeBaseName() + QStringLiteral(" (unsaved ")
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh.mm.ss"));
    QString path;
    for (int number = 1; path.isEmpty() || QFileInfo::exists(path); ++number) {
        path = folder + QLatin1Char('/') + stem
            + (number > 1 ? QStringLiteral(" %1").arg(number) : QString())
            + QStringLiteral(").pdf");
    }
    return AtomicFileWriter::write(path, bytes).isEmpty() ? path : QString();
}

void SaveReport::reportFailure(
    const FDDocument &document, const QString &error, const QByteArray &bytes)
{
    const QString path = document.fileURL().toLocalFile();
    const bool window = hasWindow();
    const QString copy
        = !window || !document.pdfView() ? keepUnsavedCopy(fileNameOf(path), bytes) : QString();
    QString description
        = QCoreApplication::translate("SaveReport", "The document “%1” could not be saved. %2")
              .arg(fileNameOf(path), error);
    if (!copy.isEmpty())
        description += QCoreApplication::translate(
            "SaveReport", " A copy of the unsaved document is kept at “%1”.")
                           .arg(copy);
    if (window)
        Alert::runModal(
            Alert::requestWithError(FDError::writeFileErrorWithLocalizedDescription(description)));
    else
        Logger::warn(description);
}

void SaveReport::resolveChangedFile(
    const std::shared_ptr<FDDocument> &document, const QString &path, const QByteArray &bytes)
{
    const QString name = fileNameOf(path);
    if (!hasWindow()) {
        const QString copy = keepUnsavedCopy(name, bytes);
        Logger::warn(QStringLiteral("“%1” was changed by another program; the edits were not "
                                    "saved over it. %2")
                         .arg(path,
                             copy.isEmpty() ? QStringLiteral("No copy could be kept.")
                                            : QStringLiteral("They are kept at “%1”.").arg(copy)));
        return;
    }
    AlertRequest request;
    request.messageText
        = QCoreApplication::translate("SaveReport", "“%1” was changed by another program.")
              .arg(name);
    request.informativeText = QCoreApplication::translate("SaveReport",
        "Your edits have not been saved over it. Save them to another file, overwrite the other "
        "program’s changes, or reload the file and drop your edits.");
    request.buttons = { QCoreApplication::translate("SaveReport", "Save As…"),
        QCoreApplication::translate("SaveReport", "Overwrite"),
        QCoreApplication::translate("SaveReport", "Reload") };
    switch (Alert::runModal(request) - Alert::FirstButtonReturn) {
    case SaveElsewhere: {
        FilePanelRequest panel;
        panel.kind = FilePanelRequest::Save;
        panel.nameFieldStringValue = document->title();
        panel.parent = qobject_cast<QWidget *>(document->pdfView());
        // Cancelled, the edits stay in the document, unsaved.
        if (const QUrl chosen = FDFilePanel::runModal(panel); !chosen.isEmpty())
            document->saveAs(chosen);
        break;
    }
    case Overwrite:
        // The file as it is now is the one the user chose to replace.
        document->setFileIdentity(path, FileIdentity::of(path));
        document->save();
        break;
    case Reload:
        document->setNumberOfChanges(0);
        if (auto *const view = qobject_cast<FDPDFView *>(document->pdfView()))
            view->loadDocument(document->fileURL());
        break;
    default:
        break;
    }
}
