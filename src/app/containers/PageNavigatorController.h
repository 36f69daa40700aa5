#pragma once

// The page field that the page indicator turns into: the current page number, digits only, and
// the page count beside it. Return goes to the typed page (1 is the first; a number that names no
// page goes nowhere) and closes the field; Escape, or leaving the field by any other way, closes
// it without moving. Closing is asked of the view, whose container then drops this field.
// Main thread only.

#include <QFrame>
#include <QPointer>

class FDPDFView;
class QLabel;
class QLineEdit;

class PageNavigatorController : public QFrame
{
    Q_OBJECT

public:
    explicit PageNavigatorController(FDPDFView *pdfView, QWidget *parent = nullptr);
    ~PageNavigatorController() override;

    FDPDFView *pdfView() const { return m_pdfView; }
    QLineEdit *pageField() const { return m_pageField; }
    QLabel *totalLabel() const { return m_totalLabel; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void goToTypedPage();
    void hideNavigator();

    QPointer<FDPDFView> m_pdfView;
    QLineEdit *m_pageField = nullptr;
    QLabel *m_totalLabel = nullptr;
    bool m_isHiding = false;
};
