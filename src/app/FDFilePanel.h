#pragma once

// Modal open and save panels for PDF files (or images), one file or several, with handlers that
// tests install to answer them without a dialog. Main thread only.

#include <QObject>
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
    // What the allowed types are called in the panel's filter.
    QString fileTypesTitle = QObject::tr("PDF documents");
    // An open panel that lets the user choose several files (runModalForURLs).
    bool allowsMultipleSelection = false;
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
    // The chosen files in the order the panel gives them; empty when it was cancelled.
    static QList<QUrl> runModalForURLs(const FilePanelRequest &request);

    // Replaces the panel by handler until it is reset with an empty function.
    static void setHandlerForTesting(std::function<QUrl(const FilePanelRequest &)> handler);
    // The same for runModalForURLs; without it, that panel asks the single-file handler.
    static void setURLsHandlerForTesting(
        std::function<QList<QUrl>(const FilePanelRequest &)> handler);
};
