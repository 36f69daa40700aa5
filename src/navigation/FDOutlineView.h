#pragma once

// A tree view in the theme's colours whose drags of items are moves within this one view: a
// drag carries only the marker type of the model, and a drop is handed to the owner's handlers
// as (target item, child index), never to Qt's copying default. The same drop rules hold for
// the mouse and for tests, which call the handlers directly. Main thread only.

#include <kit/tabs/EditCommandResponder.h>

#include <QTreeView>

#include <functional>

class FDOutlineView : public QTreeView, public EditCommandResponder
{
    Q_OBJECT

public:
    // A proposed drop: on target itself (childIndex -1) or into it at childIndex; an invalid
    // target is the top level.
    using DropHandler = std::function<bool(const QModelIndex &target, int childIndex)>;
    using DragHandler = std::function<void(const QModelIndexList &items)>;

    explicit FDOutlineView(QWidget *parent = nullptr);
    ~FDOutlineView() override;

    void setValidateDrop(DropHandler handler) { m_validateDrop = std::move(handler); }
    void setAcceptDrop(DropHandler handler) { m_acceptDrop = std::move(handler); }
    void setDraggingWillBegin(DragHandler handler) { m_draggingWillBegin = std::move(handler); }
    void setDraggingDidEnd(std::function<void()> handler) { m_draggingDidEnd = std::move(handler); }
    void setDeleteCommand(std::function<bool()> validate, std::function<void()> perform);

    // Where a drop at a point of the viewport goes, as the handlers take it.
    void dropTargetAt(const QPoint &point, QModelIndex *target, int *childIndex) const;

    bool respondsToEditCommand(const QString &command) const override;
    bool validateEditCommand(const QString &command) const override;
    void performEditCommand(const QString &command) override;

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void onThemeChanged();

    DropHandler m_validateDrop;
    DropHandler m_acceptDrop;
    DragHandler m_draggingWillBegin;
    std::function<void()> m_draggingDidEnd;
    std::function<bool()> m_validateDelete;
    std::function<void()> m_performDelete;
};
