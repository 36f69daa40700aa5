#pragma once

// The second row of a document tab: it shows the annotation bar while the tab asks for it, the
// edit bar while the pages editor is on, and is of no height otherwise. Showing or hiding it leaves
// the page under the reader where it was. Main thread only.

#include <QPointer>
#include <QWidget>

class PDFAnnBar;
class PDFContents;
class PDFEditBar;

class PDFSecondaryToolbar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int shownHeight = 38;

    explicit PDFSecondaryToolbar(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFSecondaryToolbar() override;

    PDFContents *contents() const { return m_contents; }
    // Made at first use.
    PDFAnnBar *annController();
    // Made at first use, over the tab's pages editor.
    PDFEditBar *editBar();
    // Starts following the tab and takes the height it asks for.
    void onViewInit();
    void onSecondaryToolbarVisibilityChanged();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPointer<PDFContents> m_contents;
    QPointer<PDFAnnBar> m_annController;
    QPointer<PDFEditBar> m_editBar;
};
