#pragma once

// The place of a tab's search results: it owns the results sidebar, fills itself with it and
// carries the keys that step through the hits while it is shown. Main thread only.

#include <QWidget>

class PDFContents;
class PDFSearchSidebarContents;

class PDFSearchSidebarContainer : public QWidget
{
    Q_OBJECT

public:
    PDFSearchSidebarContainer(PDFContents *contents, QWidget *parent = nullptr);

    PDFSearchSidebarContents *controller() const { return m_controller; }

private:
    PDFSearchSidebarContents *m_controller = nullptr;
};
