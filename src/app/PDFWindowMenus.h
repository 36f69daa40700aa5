#pragma once

// The menu bar of a document window: every command of the window and the application, each an
// action named by its command ("PDF_saveDocument:") with the tag of its item and its keys. The
// window validates an item each time its menu opens, each time a key is pressed in the window
// (before Qt matches the key), and when the item triggers. Main thread only.

#include <QKeySequence>
#include <QObject>
#include <QString>

class PDFWindowController;
class QAction;
class QMenu;
class QMenuBar;

class PDFWindowMenus : public QObject
{
    Q_OBJECT

public:
    PDFWindowMenus(PDFWindowController *window, QMenuBar *menuBar);

    // The item of a command with that tag (-1: the first item of the command).
    QAction *actionForCommand(const QString &command, int tag = -1) const;
    QList<QAction *> allActions() const;
    // Validates every item of menu, as when the person opens it; the recent documents are read
    // anew then.
    void validateMenu(QMenu *menu);
    // Validates every item that has keys, before a key press is matched against them: a command
    // that is off now leaves its key to the widget with the focus, one that is on takes it,
    // whatever the state was when its menu was last shown.
    void validateKeys();
    // File > Open Recent: one item per recent document ("openRecentDocument:", its index as tag),
    // newest first, then "Clear" ("clearRecentDocuments:").
    QMenu *recentMenu() const { return m_recentMenu; }
    QMenuBar *menuBar() const { return m_menuBar; }

    // The platform's keys for a standard command; a desktop without a binding for it gets the
    // usual one.
    static QList<QKeySequence> standardKeys(
        QKeySequence::StandardKey key, const QKeySequence &fallback);

private:
    // first, then each of more that first lacks.
    static QList<QKeySequence> keys(
        const QList<QKeySequence> &first, const QList<QKeySequence> &more);
    QMenu *addMenu(const QString &title);
    QAction *add(QMenu *menu, const QString &title, const QString &command, int tag = 0,
        const QList<QKeySequence> &keys = {});
    void fillFileMenu();
    void fillRecentMenu();
    void fillEditMenu();
    void fillToolsMenu();
    void fillViewMenu();
    void fillGoMenu();
    void fillWindowMenu();
    void fillHelpMenu();

    PDFWindowController *m_window;
    QMenuBar *m_menuBar;
    QMenu *m_recentMenu = nullptr;
};
