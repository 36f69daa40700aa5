#pragma once

// The pages editor of a document tab: the thumbnail grid of the tab's document and the page
// operations on its selection (rotate, delete after a prompt, extract into a new file). Every
// operation goes through the document's page methods, so its change counters and the background
// save see it. Main thread only.

#include <kit/tabs/EditCommandResponder.h>

#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <memory>

class FDDocument;
class PDFPage;
class PDFCollectionView;
class PDFContents;
class PDFThumbnailModel;
class QMenu;

class PDFPagesEditor : public QWidget, public EditCommandResponder
{
    Q_OBJECT

public:
    static constexpr int thumbnailLength = 270;
    static const QString
        PageSelectionDidChangeNotification; // "PDFPagesEditor_PageSelectionDidChange"

    // The clipboard type that marks pages copied here, so that a paste uses the page list.
    static const QString PageMarkerType; // "Folidoc.Pasteboard.PDFPage"

    explicit PDFPagesEditor(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFPagesEditor() override;

    PDFCollectionView *collectionView() const { return m_collectionView; }
    std::shared_ptr<FDDocument> document() const;

    // Reads the pages again, after the document changed or the editor appeared.
    void reloadData();

    // The index after the highest selected row, or the end with no selection.
    static int insertionIndex(const QList<int> &selectedRows, int itemCount);
    // "base-0,2.pdf" with zero-based indexes; a fresh UUID name without a URL or rows.
    static QString proposedExtractName(const QUrl &documentURL, QList<int> rows);

    bool canRotate() const;
    bool canDelete() const { return true; }
    bool canExtract() const;

    // Turns each selected page by degrees (90 or -90); the selection stays.
    void rotateSelection(int degrees);
    // Asks first, even with no selection; a confirmed prompt removes the selected pages.
    void deleteSelection();
    // Asks for a file and writes the selected pages into it, in their order.
    void extractSelection();
    // Writes the pages at rows into a new file at url; false when there is nothing to write.
    bool writePages(const QList<int> &rows, const QUrl &url) const;
    // Puts the selected pages on the page clipboard, weakly, and the marker on the clipboard.
    void copySelection();
    // True while the clipboard holds the marker, some copied page still exists and no batch of
    // item changes runs.
    bool canPaste() const;
    // Inserts copies of the copied pages after the highest selected page (at the end without a
    // selection) and selects them.
    void paste();
    // Leaves the editor for the reading view.
    void leave();

    // Copy, Paste, Delete (always, since it asks first) and Select All, from the Edit menu and
    // their keys.
    bool respondsToEditCommand(const QString &command) const override;
    bool validateEditCommand(const QString &command) const override;
    void performEditCommand(const QString &command) override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void didChangePages();
    void showContextMenu(const QPoint &globalPos);

    // Shared by every editor of the process, so pages go between tabs and windows.
    static QList<std::weak_ptr<PDFPage>> &pageClipboard();

    QPointer<PDFContents> m_contents;
    PDFCollectionView *m_collectionView = nullptr;
    PDFThumbnailModel *m_model = nullptr;
};
