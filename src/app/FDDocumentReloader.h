#pragma once

// Keeps one reading view in step with its file on disk: a change by another program reloads the
// document in place, at the same position and zoom, when it has no unsaved changes; with unsaved
// changes the person chooses between reloading and keeping their version (whose save then asks
// before replacing the file). Main thread only.

#include <QFileSystemWatcher>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

#include <document/FileIdentity.h>

class FDPDFView;

class FDDocumentReloader : public QObject
{
    Q_OBJECT

public:
    // How long a burst of file events settles before the file is looked at, in milliseconds.
    static constexpr int settleMs = 250;

    explicit FDDocumentReloader(FDPDFView *view, QObject *parent = nullptr);
    ~FDDocumentReloader() override;

    // The person asked for a reload: it happens even when the file looks unchanged, after
    // asking when there are unsaved changes.
    void reloadByHand();

    // The watched file, empty while the view shows no file.
    QString watchedPath() const { return m_path; }

private:
    void watchDocumentOfView();
    void onFileEvent();
    void checkFile();
    // Answers whether the person lets the changes go.
    bool askToDropChanges() const;
    void reload();

    QPointer<FDPDFView> m_view;
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
    QString m_path;
    // A change the person chose to keep their version over: not asked about again.
    std::optional<FileIdentity> m_declined;
};
