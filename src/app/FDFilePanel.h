#pragma once

// Modal open and save panels for PDF files, with a handler that tests install to answer them
// without a dialog. Main thread only.

#include <QStringList>
#include <QUrl>

#include <functional>

class QWidget;

struct FilePanelRequest
{
    enum Kind { Open, Save };
    Kind kind = Open;
    // Allowed file name extensions; other types are not allowed.
    QStringList allowedFileTypes { QStringLiteral("pdf"), QStringLiteral("PDF") };
    // The name field of a save panel.
    QString nameFieldStringValue;
    QWidget *parent = nullptr;
};

class FDFilePanel
{
public:
    FDFilePanel() = delete;

    // The chosen file, or an empty URL when the panel was cancelled.
    static QUrl runModal(const FilePanelRequest &request);

    // Replaces the panel by handler until it is reset with an empty function.
    static void setHandlerForTesting(std::function<QUrl(const FilePanelRequest &)> handler);
};
