#pragma once

// The start tab: the recently opened documents as a grid of thumbnails (or, with none, a drop
// area) and the buttons open, new, merge, convert, compress and clear. Choosing a document opens
// it in place of this tab. Main thread only.

#include "FDContents.h"
#include "FDFilePanel.h"

#include <QImage>
#include <QList>
#include <QUrl>

class NewTabDropFileArea;
class PDFWindowController;
class QListWidget;
class QListWidgetItem;
class QPushButton;

class NewTabContents : public FDContents
{
    Q_OBJECT

public:
    struct RecentItem
    {
        QString title;
        QUrl URL;
        QImage thumb; // null where none could be made
    };

    explicit NewTabContents(QObject *parent = nullptr);
    ~NewTabContents() override;

    QString nibName() const override { return QStringLiteral("NewTabContents"); }
    QString title() const override;
    QVariantMap lastOpenedWindowsRecord() const override;

    PDFWindowController *windowController();

    void onOpen();
    void onNew();
    void onClear();
    void onCompress();
    void onConvert();
    void onMergeSplit();
    // Asks for files and opens a new untitled document of their pages in the pages editor.
    void openNewDocumentWithPagesOf(FilePanelRequest request);
    void loadRecents();

    const QList<RecentItem> &recentItems() const { return m_recentItems; }
    QListWidget *recentsCollectionView() const { return m_recentsCollectionView; }
    NewTabDropFileArea *dragAndDropView() const { return m_dragAndDropView; }
    QPushButton *clearButton() const { return m_clearButton; }
    QPushButton *openButton() const { return m_openButton; }
    QPushButton *newButton() const { return m_newButton; }
    QPushButton *compressButton() const { return m_compressButton; }
    QPushButton *mergeButton() const { return m_mergeButton; }
    QPushButton *convertButton() const { return m_convertButton; }
    // Whether the grid of recent documents (rather than the drop area) is in the container.
    bool isShowingRecents() const;

signals:
    // The view was built again after a clear.
    void viewRebuilt();

protected:
    std::unique_ptr<QWidget> loadView() override;

private:
    void buildContents();
    void applyTheme();
    void openItem(QListWidgetItem *item);
    QPushButton *makeButton(const QString &text, bool prominent);

    QWidget *m_root = nullptr;
    QWidget *m_contentsContainer = nullptr;
    NewTabDropFileArea *m_dragAndDropView = nullptr;
    QWidget *m_recentsView = nullptr;
    QListWidget *m_recentsCollectionView = nullptr;
    QPushButton *m_clearButton = nullptr;
    QPushButton *m_openButton = nullptr;
    QPushButton *m_newButton = nullptr;
    QPushButton *m_mergeButton = nullptr;
    QPushButton *m_convertButton = nullptr;
    QPushButton *m_compressButton = nullptr;
    QList<RecentItem> m_recentItems;
    bool m_isClearing = false;
};
