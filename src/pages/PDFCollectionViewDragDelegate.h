#pragma once

// What a pages grid asks of its owner when pages are dragged out of it or something is dropped
// on it; the grid itself only tracks the pointer, the drop place and its indicator.

#include <QList>
#include <Qt>

class PDFCollectionView;
class QMimeData;

class PDFCollectionViewDragDelegate
{
public:
    virtual ~PDFCollectionViewDragDelegate() = default;

    // The data of a drag of rows (ascending) out of pane, or null to refuse it. The drag is
    // under way from here until collectionViewDragDidEnd.
    virtual QMimeData *collectionViewWillBeginDrag(PDFCollectionView *pane, const QList<int> &rows)
        = 0;
    virtual void collectionViewDragDidEnd(PDFCollectionView *pane) = 0;
    // The action a drop of mime data on pane would have; Qt::IgnoreAction refuses it.
    virtual Qt::DropAction collectionViewValidateDrop(
        PDFCollectionView *pane, const QMimeData *mime)
        = 0;
    // Carries out a drop of mime data before the item at index (the item count: at the end).
    virtual bool collectionViewAcceptDrop(PDFCollectionView *pane, const QMimeData *mime, int index)
        = 0;
};
