// PDFView: the password field of a locked document, and what unlocking it sets going.

#include "PDFPasswordPanel.h"
#include "PDFView.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>

#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QScrollBar>

void PDFView::updatePasswordPanel()
{
    const bool locked = m_document && m_document->isLocked();
    if (!locked) {
        if (m_passwordPanel) {
            setFocusProxy(nullptr);
            m_passwordPanel->hide();
            m_passwordPanel->deleteLater();
            m_passwordPanel.clear();
        }
        return;
    }
    if (!m_passwordPanel) {
        // A layout of its own on the viewport centres the field; page views are placed by hand
        // and are not part of it.
        auto *layout = qobject_cast<QGridLayout *>(viewport()->layout());
        if (!layout)
            layout = new QGridLayout(viewport());
        m_passwordPanel = new PDFPasswordPanel(viewport());
        layout->addWidget(m_passwordPanel, 0, 0, Qt::AlignCenter);
        connect(m_passwordPanel, &PDFPasswordPanel::passwordEntered, this,
            [this](const QString &password) {
                if (!unlockDocumentWithPassword(password) && m_passwordPanel)
                    m_passwordPanel->showWrongPassword();
            });
    }
    const QString path = m_document->documentURL().toLocalFile();
    m_passwordPanel->setDocumentName(
        path.isEmpty() ? tr("This document") : QFileInfo(path).fileName());
    m_passwordPanel->passwordField()->clear();
    m_passwordPanel->show();
    // Whatever gives the view the focus (a click, a tab switch) puts it into the field.
    const bool focused = hasFocus();
    setFocusProxy(m_passwordPanel);
    if (focused || isActiveWindow())
        m_passwordPanel->setFocus();
}

bool PDFView::unlockDocumentWithPassword(const QString &password)
{
    const auto document = m_document;
    if (!document || !document->isLocked())
        return false;
    if (!document->unlockWithPassword(password) || document->isLocked())
        return false;
    // The field goes later: this runs inside its own Return handler.
    updatePasswordPanel();
    setFocus();
    reloadPageSizes();
    m_layout.setAnchorPage(0);
    relayout();
    horizontalScrollBar()->setValue(0);
    verticalScrollBar()->setValue(0);
    m_postedPage = -1;
    NotificationCenter::defaultCenter().post(DocumentChangedNotification, this);
    noteViewChanged();
    documentDidUnlock();
    return true;
}

PDFPasswordPanel *PDFView::passwordPanel() const
{
    return m_passwordPanel;
}
