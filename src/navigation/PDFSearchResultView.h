#pragma once

// The list of search results: one column of rows whose heights are measured only when shown,
// so that appending thousands of hits costs a walk over the rows and no measuring of them.

#include <QTreeView>

class PDFSearchResultView : public QTreeView
{
    Q_OBJECT

public:
    explicit PDFSearchResultView(QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int m_laidOutWidth = -1;
};
