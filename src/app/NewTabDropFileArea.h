#pragma once

// The picture a start tab shows when there are no recent documents: a dashed frame with three
// soft circles and "Drop PDF here". It only draws; the window takes the drop. Main thread only.

#include <QWidget>

class NewTabDropFileArea : public QWidget
{
    Q_OBJECT

public:
    explicit NewTabDropFileArea(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};
