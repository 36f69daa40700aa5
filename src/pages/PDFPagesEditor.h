#pragma once

// The pages editor of a document tab: a thumbnail pane per view of the tab (two while it is
// split) and the page operations on the selected pane's selection, made through the document's
// page methods so that its change counters and the background save see them. Main thread only.

#include "PDFCollectionViewDragDelegate.h"

#include <kit/tabs/EditCommandResponder.h>

#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <memory>
#include <optional>

class FDDocument;
class FDPDFView;
class PDFDocumentDelegate;
class PDFPage;
class PDFCollectionView;
class PDFContents;
class PDFThumbnailModel;
class QMenu;
class QSplitter;

class PDFPagesEditor : public QWidget,
                       public EditCommandResponder,
                       public PDFCollectionViewDragDelegate
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

    // The tab's two views, whose documents the panes show.
    void setPDFViews(FDPDFView *primary, FDPDFView *secondary);

    // The pane of the primary view, and that of the secondary one, shown while the tab is split.
    PDFCollectionView *primaryCollectionView() const { return m_primaryPane; }
    PDFCollectionView *secondaryCollectionView() const { return m_secondaryPane; }
    PDFCollectionView *collectionView() const { return m_primaryPane; }
    // The pane that operations act on: the one whose view is the tab's selected view; the
    // primary one when both show the same view or the tab is not split.
    PDFCollectionView *selectedCollectionView() const;
    // The selected pane's document.
    std::shared_ptr<FDDocument> document() const;
    // The document of the pane's view; null without one.
    std::shared_ptr<FDDocument> documentOf(const PDFCollectionView *pane) const;

    // A pane taking the focus makes its view the tab's selected view.
    void collectionViewDidBecomeFirstResponder(PDFCollectionView *pane);

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
    bool writePages(const PDFCollectionView *pane, const QList<int> &rows, const QUrl &url) const;
    // Puts the selected pages on the page clipboard, weakly, and the marker on the clipboard.
    void copySelection();
    // True, while no batch of item changes runs, when the clipboard holds PDF files or images of
    // another program, or some copied page still exists.
    bool canPaste() const;
    // Inserts, after the highest selected page (at the end without a selection), the files on the
    // clipboard, or else copies of the copied pages, and selects what went in.
    void paste();
    // Inserts the pages of the files at urls into the pane's document at index, in their order:
    // an image (PNG, JPEG, GIF) makes one page, a PDF gives copies of all its pages. A file that
    // can't be read, a PDF without pages and any other type are skipped, and the next file goes
    // to the same place. Nothing happens for an index outside 0..pageCount. The inserted pages
    // end up selected. Answers how many pages went in. Without a pane: the selected one.
    int insertURLs(const QList<QUrl> &urls, int index);
    int insertURLs(PDFCollectionView *pane, const QList<QUrl> &urls, int index);
    // Ask for images, or PDF files, several at once, and insert them after the selection.
    void addPagesWithImages();
    void addPagesWithPDF();
    // Leaves the editor for the reading view.
    void leave();

    // Copy, Paste, Delete (always, since it asks first) and Select All, from the Edit menu and
    // their keys.
    bool respondsToEditCommand(const QString &command) const override;
    bool validateEditCommand(const QString &command) const override;
    void performEditCommand(const QString &command) override;

    // Dragging pages: within a pane, to the other pane, to other tabs and windows (a move, with
    // the pages themselves), out to the file manager (a PDF file of them, written when asked for)
    // and in from it (PDF files and images, inserted at the drop place).
    QMimeData *collectionViewWillBeginDrag(
        PDFCollectionView *pane, const QList<int> &rows) override;
    void collectionViewDragDidEnd(PDFCollectionView *pane) override;
    Qt::DropAction collectionViewValidateDrop(
        PDFCollectionView *pane, const QMimeData *mime) override;
    bool collectionViewAcceptDrop(
        PDFCollectionView *pane, const QMimeData *mime, int index) override;

    // Where pages dragged from rows land when dropped before the item at dropIndex: the drop
    // place less the dragged rows above it when they leave the same document first.
    static int moveInsertionIndex(const QList<int> &rows, int dropIndex, bool sameDocument);
    // Writes the pages of document at rows, in their order, into a new file at url.
    static bool writePagesOf(
        const std::shared_ptr<FDDocument> &document, const QList<int> &rows, const QUrl &url);

protected:
    void showEvent(QShowEvent *event) override;

private:
    PDFCollectionView *makePane(const QString &name);
    void reloadPane(PDFCollectionView *pane);
    void onSplitModeChanged();
    // Shows the panes' documents again and has each changed one saved on the next turn.
    void didChangePages();
    void saveChangedDocuments();
    void addPagesFromPanel(const QStringList &types, const QString &typesTitle);
    // Makes a pane take part in page drags, as source and as target.
    void registerForDragAndDrop(PDFCollectionView *pane);
    // Moves the dragged pages into pane before index; false when a part is missing.
    bool moveDraggedPages(PDFCollectionView *pane, int index);
    // Inserts page files at index of pane; true when any page came in.
    bool insertDroppedURLs(PDFCollectionView *pane, const QList<QUrl> &urls, int index);
    static PDFPagesEditor *editorOf(const PDFCollectionView *pane);

    // The one drag of pages of the process: the pane it left and the rows it took, ascending.
    static QPointer<PDFCollectionView> &dragSource();
    static std::optional<QList<int>> &dragIndexPaths();

    void showContextMenu(const QPoint &globalPos);

    // Shared by every editor of the process, so pages go between tabs and windows.
    static QList<std::weak_ptr<PDFPage>> &pageClipboard();

    QPointer<PDFContents> m_contents;
    QSplitter *m_splitter = nullptr;
    PDFCollectionView *m_primaryPane = nullptr;
    PDFCollectionView *m_secondaryPane = nullptr;
    // Gives documents opened here to take pages from the application's page and annotation
    // classes.
    std::shared_ptr<PDFDocumentDelegate> m_documentDelegate;
    bool m_isSaveQueued = false;
};
