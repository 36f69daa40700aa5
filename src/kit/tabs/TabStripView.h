#pragma once

// The row of tabs above a window's contents, drawn from a TabStripModel in the current frame
// theme: elided titles, a close button per tab, a new-tab button, drag to reorder or out of the
// strip, middle-click to close. Tabs shrink to a minimum width; beyond that the strip scrolls. It
// changes the model only through its public operations. Main thread only.

#include "TabStripModelObserver.h"
#include "TabStripPainter.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

class TabContents;
class TabStripModel;
class QVariantAnimation;

class TabStripView : public QWidget, private TabStripModelObserver
{
    Q_OBJECT

public:
    // Observes model until either goes away; the model is not owned.
    explicit TabStripView(TabStripModel *model, QWidget *parent = nullptr);
    ~TabStripView() override;

    TabStripModel *tabStripModel() const { return m_model; }

    // Where tab index sits when not dragged; an empty rect for an index out of range.
    QRect tabRectAt(int index) const;
    QRect closeButtonRectAt(int index) const;
    QRect newTabButtonRect() const;
    // The tab under point, or -1.
    int tabIndexAt(QPoint point) const;

    // Where a tab dropped at point would go, from 0 to the count of tabs.
    int insertionIndexAt(QPoint point) const;
    // How far the tabs are scrolled to the left, in pixels; 0 while they all fit.
    double scrollOffset() const;
    void setScrollOffset(double offset);
    void scrollToShow(int index);

    QSize sizeHint() const override;

signals:
    void newTabButtonClicked();
    // A dragged tab was let go away from the strip, at globalPos.
    void tabDraggedOut(TabContents *contents, QPoint globalPos);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Layout
    {
        double tabWidth = 0;
        // The first tab's left edge, scrolled.
        double left = 0;
        // The room for tabs, and how far they can scroll when they need more.
        double visibleWidth = 0;
        double maxScroll = 0;
    };

    // TabStripModelObserver
    void tabInsertedAt(TabContents *contents, int index, bool foreground) override;
    void tabDetachedAt(TabContents *contents, int index) override;
    void tabSelectedAt(
        TabContents *oldContents, TabContents *newContents, int index, bool userGesture) override;
    void tabMoved(TabContents *contents, int fromIndex, int toIndex) override;
    void tabChangedAt(TabContents *contents, int index, TabChangeType change) override;
    void tabReplacedAt(TabContents *oldContents, TabContents *newContents, int index) override;
    void tabStripEmpty() override;
    void tabStripModelDeleted(TabStripModel *model) override;

    Layout layout() const;
    QRectF tabRectF(int index) const;
    // Where tab index is drawn: its place, or under the pointer while it is dragged.
    QRectF drawnTabRect(int index) const;
    QRectF closeButtonRectIn(const QRectF &tabRect) const;
    bool showsCloseButton(int index) const;
    // What tab index at rect shows now.
    TabStripPainter::Tab tabToPaint(int index, const QRectF &rect) const;
    void slideFromShownPlaces();
    void updateHover(QPoint point);
    void updateHoverFromPointer();
    void dragTo(double pointerX);
    void endDrag();
    void closeTab(TabContents *contents);

    TabStripModel *m_model = nullptr;

    int m_hoverIndex = -1;
    bool m_hoverClose = false;
    bool m_hoverNewTab = false;

    QPointer<TabContents> m_pressedCloseContents;
    QPointer<TabContents> m_middlePressContents;
    bool m_pressedNewTab = false;

    // Left press on a tab, and the drag it may become.
    QPointer<TabContents> m_pressContents;
    QPoint m_pressPoint;
    double m_grabOffset = 0;
    bool m_dragging = false;
    double m_dragX = 0;
    double m_scrollX = 0;

    // Left edges of the tabs as last painted, and the distances tabs glide back over after a
    // move or a close.
    QHash<const TabContents *, double> m_shownLefts;
    QHash<const TabContents *, double> m_slideFrom;
    QVariantAnimation *m_slide = nullptr;
};
