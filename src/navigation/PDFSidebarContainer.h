#pragma once

// The place of a document tab's sidebar in its layout: it owns the sidebar's controller, fills
// itself with it, and shows or hides itself as the tab's sidebar visibility says.
// Main thread only.

#include <QPointer>
#include <QWidget>

class PDFContents;
class PDFSidebarController;

class PDFSidebarContainer : public QWidget
{
    Q_OBJECT

public:
    PDFSidebarContainer(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFSidebarContainer() override;

    PDFSidebarController *controller() const { return m_controller; }

private:
    void onSidebarVisibilityChanged();

    QPointer<PDFContents> m_contents;
    PDFSidebarController *m_controller = nullptr;
};
