#pragma once

// The base of the sidebar's tabs: it knows the document tab and follows its selected view.
// A change of the selected view remakes every observer (the base's, then the subclass's in
// onResetObservers) and reloads the tab; a change of the view's document only reloads it.
// Main thread only.

#include <QPointer>
#include <QString>
#include <QWidget>

class FDDocument;
class FDPDFView;
class PDFContents;
class PDFSidebarTabContentsDelegate;

class PDFSidebarTabContents : public QWidget
{
    Q_OBJECT

public:
    // The height of group rows in every tab.
    static constexpr double sectionRowHeight = 48.0;

    explicit PDFSidebarTabContents(QWidget *parent = nullptr);
    ~PDFSidebarTabContents() override;

    PDFContents *contents() const;
    // Starts following the tab, reading the document its view has now; the frame calls this
    // once, before the first showing.
    void setContents(PDFContents *contents);
    PDFSidebarTabContentsDelegate *delegate() const { return m_delegate; }
    void setDelegate(PDFSidebarTabContentsDelegate *delegate) { m_delegate = delegate; }

    // The line the frame shows above the tab.
    QString title() const { return m_title; }

    // The tab's selected view, and its document; null without them.
    FDPDFView *selectedPDFView() const;
    std::shared_ptr<FDDocument> document() const;

protected:
    // Stores the title and tells the delegate.
    void setTitle(const QString &title);
    virtual void onThemeChanged() { }
    // The view or its document changed: reload everything shown.
    virtual void onPDFViewChanged() { }
    // Observers were all removed; the base's are back. A subclass adds its own here.
    virtual void onResetObservers() { }

private:
    void resetObservers();
    void onSelectedPDFViewChanged();

    QPointer<PDFContents> m_contents;
    PDFSidebarTabContentsDelegate *m_delegate = nullptr;
    QString m_title;
};
