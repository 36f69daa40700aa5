#include "PageNavigatorController.h"

#include <kit/base/MainQueue.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>

PageNavigatorController::PageNavigatorController(FDPDFView *pdfView, QWidget *parent)
    : QFrame(parent)
    , m_pdfView(pdfView)
{
    setObjectName(QStringLiteral("PageNavigatorController"));
    setFrameStyle(QFrame::NoFrame);
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, QColor(0, 0, 0, 160));
    palette.setColor(QPalette::WindowText, Qt::white);
    setPalette(palette);
    auto *const layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->setSpacing(4);
    m_pageField = new QLineEdit;
    m_pageField->setObjectName(QStringLiteral("pageField"));
    m_pageField->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,9}")), m_pageField));
    m_pageField->setAlignment(Qt::AlignRight);
    m_pageField->setFixedWidth(56);
    m_pageField->installEventFilter(this);
    m_totalLabel = new QLabel;
    m_totalLabel->setObjectName(QStringLiteral("totalLabel"));
    layout->addWidget(m_pageField);
    layout->addWidget(m_totalLabel);
    const auto document = pdfView ? pdfView->document() : nullptr;
    const auto page = pdfView ? pdfView->currentPage() : nullptr;
    if (document && page)
        m_pageField->setText(QString::number(document->indexForPage(page) + 1));
    m_totalLabel->setText(QStringLiteral("/ %1").arg(document ? document->pageCount() : 0));
    m_pageField->selectAll();
    connect(m_pageField, &QLineEdit::editingFinished, this, [this] {
        // Return is handled as a key; this is the field losing the focus.
        if (!m_pageField->hasFocus())
            hideNavigator();
    });
    MainQueue::async(this, [this] { m_pageField->setFocus(Qt::OtherFocusReason); });
}

PageNavigatorController::~PageNavigatorController() = default;

bool PageNavigatorController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_pageField || event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        goToTypedPage();
        return true;
    }
    if (key == Qt::Key_Escape) {
        hideNavigator();
        return true;
    }
    // A tab stays in the field, as digits only are taken.
    return key == Qt::Key_Tab;
}

void PageNavigatorController::goToTypedPage()
{
    bool isNumber = false;
    const qlonglong number = m_pageField->text().toLongLong(&isNumber);
    const auto document = m_pdfView ? m_pdfView->document() : nullptr;
    if (isNumber && document && number >= 1 && number <= document->pageCount()) {
        if (const auto page = document->pageAtIndex(int(number - 1)))
            m_pdfView->goToPage(page);
    }
    hideNavigator();
}

void PageNavigatorController::hideNavigator()
{
    if (m_isHiding || !m_pdfView)
        return;
    m_isHiding = true;
    m_pdfView->setIsPageNavigatorHidden(true);
    m_pdfView->setFocus(Qt::OtherFocusReason);
}
