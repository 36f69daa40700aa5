#pragma once

// A tabbed document window: turns URLs into tabs (reusing a start tab), closes tabs and itself in
// the order that their prompts need, and carries the commands of the menus, which act on the
// selected tab. Main thread only.

#include <kit/tabs/TabWindowController.h>

#include <QUrl>

#include <functional>
#include <memory>

class EditCommandResponder;
class FDContents;
class FDPDFView;
class FDToolbarController;
class PDFContents;
class PDFWindowMenus;
class QAction;

class PDFWindowController : public TabWindowController
{
    Q_OBJECT

public:
    static inline const QString DidCreateNotification = QStringLiteral("PDFWindow_DidCreate");
    static inline const QString ShouldCloseNotification = QStringLiteral("PDFWindow_ShouldClose");
    static inline const QString PerformFindPanelActionNotification
        = QStringLiteral("Global_PerformFindPanelAction");
    static inline const QString UserDidDropFileNotification
        = QStringLiteral("Global_UserDidDropFile");

    // Makes the tab of a document at a URL (empty: a new untitled document). Document tabs are
    // registered by the document side; without a maker no document tab can be made.
    using DocumentContentsMaker = std::function<std::unique_ptr<FDContents>(const QUrl &url)>;
    static void setDocumentContentsMaker(DocumentContentsMaker maker);

    explicit PDFWindowController(QWidget *parent = nullptr);
    ~PDFWindowController() override;

    static QList<PDFWindowController *> all();
    // Every tab of every window, windows in order.
    static QList<TabContents *> allContents();
    // Selects the tab showing the file at url in whichever window has it and brings that window
    // forward. A file is found by its canonical path, whatever the fragment and the spelling
    // of its path (links, "..").
    static bool selectContentsBy(const QUrl &url);

    QWidget *infoBannerContainer() const { return m_infoBannerContainer; }
    bool isClosingTabByUser() const { return m_isClosingTabByUser; }
    FDContents *selectedContents() const;
    // The selected tab if it shows a document, and its view that commands act on.
    PDFContents *selectedPDFContents() const;
    FDPDFView *selectedPDFView() const;
    FDToolbarController *toolbarController();

    // The tab now showing url: an open one is selected, else a new one replaces the selected
    // start tab (reuseNewTab) or is appended. Null when no document tab could be made.
    TabContents *openPDFDocumentWithURL(const QUrl &url, bool reuseNewTab, bool foreground);
    void openNewTab();
    void newPDFDocument();
    void openCompressTab();
    void openDocument();
    void newDocument();
    void userDropFileWithURL(const QUrl &url);
    void showInfoBanner(QWidget *banner);
    void hideInfoBanner();
    void makeKeyAndOrderFront();
    // Shows the theme picker below the toolbar's theme button.
    void onThemeButtonClickedWithButton(QWidget *button);

    // The menu commands: each item is named by its command and carries its tag. A command is
    // validated when its menu opens, when a key is pressed and when its item triggers, and does
    // nothing when it is off.
    PDFWindowMenus *menus() const { return m_menus; }
    bool validateMenuItem(QAction *item);
    void performCommand(QAction *item);
    // "undo:", "redo:", "cut:", "copy:", "paste:", "delete:", "selectAll:": they go to the focus
    // widget and up its parents (EditCommandResponder); undo and redo end at undoManager().
    static const QStringList &editCommands();

    std::unique_ptr<TabContents> createBlankTabContents() override;
    TabWindowController *createWindowForDetachedTab() override;
    std::unique_ptr<ContentsToolbarController> createToolbarController() override;
    bool windowShouldClose(QWidget *sender) override;
    bool shouldCloseContentsAt(int index) override;

protected:
    void commonInit() override;
    // Keys are matched against the commands as they are now (PDFWindowMenus::validateKeys).
    bool event(QEvent *event) override;
    // Document tabs get the window's undo manager as they arrive.
    void tabInsertedAt(TabContents *contents, int index, bool foreground) override;
    void tabReplacedAt(TabContents *oldContents, TabContents *newContents, int index) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    // selectContentsBy, answering the tab it selected.
    static TabContents *selectContentsWithFile(const QUrl &url);
    // In place of a selected start tab when reuseNewTab allows, else appended.
    void placeContents(std::unique_ptr<TabContents> contents, bool reuseNewTab, bool foreground);
    bool closeTabAt(int index);
    bool validateDocumentCommand(QAction *item);
    void performDocumentCommand(QAction *item);
    // The first in the chain from the focus widget that takes command; holder keeps one made
    // for a widget that has no responder of its own.
    EditCommandResponder *editCommandResponder(
        const QString &command, std::unique_ptr<EditCommandResponder> &holder);
    bool validateEditCommand(QAction *item);
    void performEditCommand(QAction *item);
    void applyTheme();
    void onUserDropFile(const QUrl &url);

    QWidget *m_infoBannerContainer = nullptr;
    PDFWindowMenus *m_menus = nullptr;
    bool m_isClosingTabByUser = true;
};
