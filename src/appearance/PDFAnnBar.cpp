#include "PDFAnnBar.h"

#include "AnnColorPicker.h"
#include "AnnFontPicker.h"
#include "AnnLineAspectPicker.h"
#include "FDPopoverController.h"
#include "FDTheme.h"
#include "FDThemeProvider.h"
#include "FDToolbarIcons.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <annotation/values/NSUserDefaults+XExtensions.h>
#include <app/PDFContents.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <view/FDPDFView.h>

#include <QHBoxLayout>
#include <QToolButton>

namespace {

struct ToolEntry
{
    int mode;
    const char *title;
    QKeySequence key;
};

// In the bar's order, with the titles and keys of the Tools menu.
const ToolEntry Tools[] = {
    { PDFToolModeTextSelection, QT_TRANSLATE_NOOP("PDFAnnBar", "Select Text"),
        QKeySequence(Qt::CTRL | Qt::Key_1) },
    { PDFToolModeAnnHighlight, QT_TRANSLATE_NOOP("PDFAnnBar", "Highlight"),
        QKeySequence(Qt::ALT | Qt::Key_1) },
    { PDFToolModeAnnUnderline, QT_TRANSLATE_NOOP("PDFAnnBar", "Underline"),
        QKeySequence(Qt::ALT | Qt::Key_2) },
    { PDFToolModeAnnStrikeOut, QT_TRANSLATE_NOOP("PDFAnnBar", "Strike Out"),
        QKeySequence(Qt::ALT | Qt::Key_3) },
    { PDFToolModeAnnInk, QT_TRANSLATE_NOOP("PDFAnnBar", "Pen"), QKeySequence(Qt::ALT | Qt::Key_9) },
    { PDFToolModeAnnLine, QT_TRANSLATE_NOOP("PDFAnnBar", "Line"),
        QKeySequence(Qt::ALT | Qt::Key_8) },
    { PDFToolModeAnnCircle, QT_TRANSLATE_NOOP("PDFAnnBar", "Circle"),
        QKeySequence(Qt::ALT | Qt::Key_6) },
    { PDFToolModeAnnSquare, QT_TRANSLATE_NOOP("PDFAnnBar", "Rectangle"),
        QKeySequence(Qt::ALT | Qt::Key_7) },
    { PDFToolModeAnnFreeText, QT_TRANSLATE_NOOP("PDFAnnBar", "Text Box"),
        QKeySequence(Qt::ALT | Qt::Key_4) },
    { PDFToolModeAnnText, QT_TRANSLATE_NOOP("PDFAnnBar", "Note"),
        QKeySequence(Qt::ALT | Qt::Key_5) },
};

QWidget *separator(QWidget *parent)
{
    auto *const line = new QWidget(parent);
    line->setFixedSize(1, 20);
    line->setAutoFillBackground(true);
    line->setObjectName(QStringLiteral("separator"));
    return line;
}

// The colour the colour button shows: the left colour of what a pick would change.
QColor shownColor(const AnnPickerTarget &target, int effectiveMode)
{
    if (const auto annotation = target.selectedAnn()) {
        if (const auto *const text = dynamic_cast<const PDFAnnotationFreeText *>(annotation.get()))
            return text->fontColor();
        return annotation->color();
    }
    const QString key = AnnPickerTarget::leftColorKey(effectiveMode);
    return key.isEmpty() ? QColor() : colorForKey(UserDefaults::standard(), key);
}

} // namespace

PDFAnnBar::PDFAnnBar(PDFContents *contents, QWidget *parent)
    : PDFContentsBar(contents, parent)
{
    setObjectName(QStringLiteral("PDFAnnBar"));
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(2);
    for (const ToolEntry &tool : Tools) {
        QToolButton *const button = makeButton(tr(tool.title), tool.key, true);
        button->setProperty("tag", tool.mode);
        connect(button, &QToolButton::clicked, this,
            [this, button] { onAnnButtonClickedWithButton(button); });
        m_annButtons.insert(tool.mode, button);
        row->addWidget(button);
        if (tool.mode == PDFToolModeTextSelection)
            row->addWidget(separator(this));
    }
    row->addWidget(separator(this));
    m_fontBtn = makeButton(tr("Font"));
    m_colorBtn = makeButton(tr("Color"));
    m_aspectBtn = makeButton(tr("Line Style"));
    connect(m_fontBtn, &QToolButton::clicked, this,
        [this] { onAnnFontButtonClickedWithButton(m_fontBtn); });
    connect(m_colorBtn, &QToolButton::clicked, this,
        [this] { onAnnColorButtonClickedWithButton(m_colorBtn); });
    connect(m_aspectBtn, &QToolButton::clicked, this,
        [this] { onAnnLineAspectButtonClickedWithButton(m_aspectBtn); });
    for (QToolButton *const button : { m_fontBtn, m_colorBtn, m_aspectBtn })
        row->addWidget(button);
    row->addStretch(1);
    addObservers();
    applyTheme();
    update();
}

void PDFAnnBar::addObservers()
{
    PDFContents *const tab = contents();
    if (!tab)
        return;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    for (const QString &name : { PDFContents::ToolModeDidChangeNotification,
             PDFContents::SecondaryTBVisibilityDidChangeNotification }) {
        center.addObserver(this, name, tab, [this](const Notification &) { onToolModeChanged(); });
    }
    center.addObserver(
        this, PDFContents::SelectedPDFViewDidChangeNotification, tab, [this](const Notification &) {
            observeSelectedView();
            update();
        });
    observeSelectedView();
}

void PDFAnnBar::observeSelectedView()
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    if (m_observedView) {
        for (const QString &name : { XPDFView::SelectedAnnotationDidChangeNotification,
                 XPDFView::AnnotationDidChangeNotification })
            center.removeObserver(this, name, m_observedView.data());
    }
    m_observedView = contents() ? contents()->selectedPDFView() : nullptr;
    if (!m_observedView)
        return;
    center.addObserver(this, XPDFView::SelectedAnnotationDidChangeNotification,
        m_observedView.data(), [this](const Notification &) { onSelectedAnnotationChanged(); });
    // A pick changes the selected annotation: the colour button follows.
    center.addObserver(this, XPDFView::AnnotationDidChangeNotification, m_observedView.data(),
        [this](const Notification &) { updateAnnPickerButtonsWithToolMode(effectiveToolMode()); });
}

int PDFAnnBar::effectiveToolMode() const
{
    return AnnPickerTarget(contents()).effectiveToolMode();
}

void PDFAnnBar::update()
{
    const int mode = effectiveToolMode();
    if (m_lastOnAnnButton)
        m_lastOnAnnButton->setChecked(false);
    m_lastOnAnnButton = m_annButtons.value(mode);
    if (m_lastOnAnnButton)
        m_lastOnAnnButton->setChecked(true);
    updateAnnPickerButtonsWithToolMode(mode);
}

void PDFAnnBar::updateAnnPickerButtonsWithToolMode(int toolMode)
{
    m_fontBtn->setEnabled(false);
    m_colorBtn->setEnabled(false);
    m_aspectBtn->setEnabled(false);
    switch (toolMode) {
    case PDFToolModeAnnHighlight:
    case PDFToolModeAnnUnderline:
    case PDFToolModeAnnStrikeOut:
    case PDFToolModeAnnText:
        m_colorBtn->setEnabled(true);
        break;
    case PDFToolModeAnnFreeText:
        m_fontBtn->setEnabled(true);
        m_colorBtn->setEnabled(true);
        break;
    case PDFToolModeAnnCircle:
    case PDFToolModeAnnSquare:
    case PDFToolModeAnnLine:
    case PDFToolModeAnnInk:
        m_colorBtn->setEnabled(true);
        m_aspectBtn->setEnabled(true);
        break;
    default:
        break;
    }
    const QColor shown
        = m_colorBtn->isEnabled() ? shownColor(AnnPickerTarget(contents()), toolMode) : QColor();
    m_colorBtn->setIcon(FDToolbarIcons::colorIcon(shown, iconColor()));
}

void PDFAnnBar::onAnnButtonClickedWithButton(QToolButton *button)
{
    PDFContents *const tab = contents();
    // A second click on the tool that is on keeps it on.
    if (button == m_lastOnAnnButton) {
        button->setChecked(true);
        return;
    }
    if (!tab) {
        button->setChecked(false);
        return;
    }
    if (m_lastOnAnnButton)
        m_lastOnAnnButton->setChecked(false);
    const int mode = button->property("tag").toInt();
    tab->setToolMode(PDFToolMode(mode));
    updateAnnPickerButtonsWithToolMode(tab->toolMode());
    if (FDPDFView *const pdfView = tab->selectedPDFView())
        pdfView->setSelectedAnn(nullptr);
    tab->annBarDidPickTool();
    // With text selected a markup tool marks it and the tool stays: the bar shows what is.
    update();
}

void PDFAnnBar::onSelectedAnnotationChanged()
{
    update();
}

void PDFAnnBar::onToolModeChanged()
{
    update();
}

void PDFAnnBar::onAnnColorButtonClickedWithButton(QToolButton *button)
{
    AnnColorPicker &picker = AnnColorPicker::shared();
    picker.setContents(contents());
    FDPopoverController::shared().showContent(
        { &picker, [&picker] { picker.onWillShow(); }, [this] { update(); } }, button);
}

void PDFAnnBar::onAnnFontButtonClickedWithButton(QToolButton *button)
{
    AnnFontPicker &picker = AnnFontPicker::shared();
    picker.setContents(contents());
    FDPopoverController::shared().showContent(
        { &picker, [&picker] { picker.onWillShow(); }, nullptr }, button);
}

void PDFAnnBar::onAnnLineAspectButtonClickedWithButton(QToolButton *button)
{
    AnnLineAspectPicker &picker = AnnLineAspectPicker::shared();
    picker.setContents(contents());
    FDPopoverController::shared().showContent(
        { &picker, [&picker] { picker.onWillShow(); }, nullptr }, button);
}

void PDFAnnBar::refreshIcons()
{
    const QColor color = iconColor();
    for (auto it = m_annButtons.cbegin(); it != m_annButtons.cend(); ++it) {
        const QString type = XPDFView::annTypeForToolMode(it.key());
        it.value()->setIcon(type.isEmpty()
                ? FDToolbarIcons::icon(FDToolbarIcons::TextSelection, color)
                : FDToolbarIcons::annotationIcon(type, color));
    }
    m_fontBtn->setIcon(FDToolbarIcons::icon(FDToolbarIcons::Font, color));
    m_aspectBtn->setIcon(FDToolbarIcons::icon(FDToolbarIcons::LineAspect, color));
    for (QWidget *const line : findChildren<QWidget *>(QStringLiteral("separator"))) {
        QPalette palette = line->palette();
        palette.setColor(QPalette::Window,
            FDThemeProvider::current()->isDark() ? FDTheme::white(0.35) : FDTheme::white(0.75));
        line->setPalette(palette);
    }
    if (m_colorBtn)
        updateAnnPickerButtonsWithToolMode(effectiveToolMode());
}

void PDFAnnBar::showEvent(QShowEvent *event)
{
    PDFContentsBar::showEvent(event);
    update();
}
