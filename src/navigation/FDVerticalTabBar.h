#pragma once

// The column of tab buttons at the sidebar's edge. Each button carries the raw sidebar mode as
// its tag (the "tag" property); the bar paints its background and the buttons' pictures in the
// current theme's colours. Main thread only.

#include <QList>
#include <QWidget>

class QAbstractButton;
class QToolButton;

class FDVerticalTabBar : public QWidget
{
    Q_OBJECT

public:
    // The width of the bar and the edge of its square buttons.
    static constexpr int barWidth = 34;

    explicit FDVerticalTabBar(QWidget *parent = nullptr);

    // A checkable button tagged with tag, added below the others.
    QToolButton *addTabButton(int tag, const QString &toolTip);
    QList<QAbstractButton *> buttons() const;
    // Draws the buttons' pictures again, for a theme change.
    void repaintButtons();

protected:
    void paintEvent(QPaintEvent *event) override;
};
