#include "PDFEditBar.h"

#include "PDFPagesEditor.h"

#include <app/PDFContents.h>
#include <kit/base/NotificationCenter.h>

#include <QHBoxLayout>
#include <QToolButton>

PDFEditBar::PDFEditBar(PDFContents *contents, PDFPagesEditor *editor, QWidget *parent)
    : PDFContentsBar(contents, parent)
    , m_editor(editor)
{
    setObjectName(QStringLiteral("PDFEditBar"));
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(4);
    m_rotateLeftButton = makeTextButton(tr("Rotate Left"));
    m_rotateRightButton = makeTextButton(tr("Rotate Right"), QKeySequence(Qt::CTRL | Qt::Key_R));
    m_removeButton = makeTextButton(tr("Delete"), QKeySequence(Qt::Key_Delete));
    m_extractButton = makeTextButton(tr("Extract…"), QKeySequence(Qt::CTRL | Qt::Key_E));
    m_addImagesButton = makeTextButton(tr("Add Pages from Images…"));
    m_addPDFButton = makeTextButton(tr("Add Pages from PDF…"));
    m_doneButton = makeTextButton(tr("Done"), QKeySequence(Qt::Key_Escape));
    row->addStretch(1);
    for (QToolButton *const button :
        { m_rotateLeftButton, m_rotateRightButton, m_removeButton, m_extractButton })
        row->addWidget(button);
    row->addSpacing(12);
    row->addWidget(m_addImagesButton);
    row->addWidget(m_addPDFButton);
    row->addStretch(1);
    row->addWidget(m_doneButton);

    const auto act = [this](QToolButton *button, auto action) {
        connect(button, &QToolButton::clicked, this, [this, action] {
            if (m_editor)
                action(m_editor.data());
        });
    };
    act(m_rotateLeftButton, [](PDFPagesEditor *target) { target->rotateSelection(-90); });
    act(m_rotateRightButton, [](PDFPagesEditor *target) { target->rotateSelection(90); });
    act(m_removeButton, [](PDFPagesEditor *target) { target->deleteSelection(); });
    act(m_extractButton, [](PDFPagesEditor *target) { target->extractSelection(); });
    act(m_addImagesButton, [](PDFPagesEditor *target) { target->addPagesWithImages(); });
    act(m_addPDFButton, [](PDFPagesEditor *target) { target->addPagesWithPDF(); });
    act(m_doneButton, [](PDFPagesEditor *target) { target->leave(); });

    NotificationCenter::defaultCenter().addObserver(this,
        PDFPagesEditor::PageSelectionDidChangeNotification, contents,
        [this](const Notification &) { updateButtons(); });
    applyTheme();
    updateButtons();
}

PDFEditBar::~PDFEditBar()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

QToolButton *PDFEditBar::makeTextButton(const QString &title, const QKeySequence &key)
{
    QToolButton *const button = makeButton(title, key);
    button->setText(title);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setMinimumWidth(0);
    button->setMaximumWidth(QWIDGETSIZE_MAX);
    button->setFixedHeight(28);
    button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return button;
}

void PDFEditBar::updateButtons()
{
    const bool any = m_editor && m_editor->canRotate();
    m_rotateLeftButton->setEnabled(any);
    m_rotateRightButton->setEnabled(any);
    m_extractButton->setEnabled(m_editor && m_editor->canExtract());
    // Delete asks even with no selection.
    m_removeButton->setEnabled(bool(m_editor));
    m_addImagesButton->setEnabled(bool(m_editor));
    m_addPDFButton->setEnabled(bool(m_editor));
    m_doneButton->setEnabled(true);
}

void PDFEditBar::refreshIcons()
{
    // Text buttons: only their colour follows the theme.
    for (QToolButton *const button : findChildren<QToolButton *>()) {
        QPalette palette = button->palette();
        palette.setColor(QPalette::ButtonText, iconColor());
        button->setPalette(palette);
    }
}
