#pragma once

// A list of rows whose text wraps to the list's width: a change of width lays the rows out again
// (a top-to-bottom list would otherwise keep the heights measured for the old width).

#include <QListView>

class PDFSidebarListView : public QListView
{
    Q_OBJECT

public:
    explicit PDFSidebarListView(QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int m_laidOutWidth = -1;
};
