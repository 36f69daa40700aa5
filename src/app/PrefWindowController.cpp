#include "PrefWindowController.h"

#include "FDDefaults.h"
#include "GlobalService.h"
#include "PDFWindowMenus.h"

#include <appearance/FDTheme.h>
#include <appearance/FDThemePicker.h>
#include <appearance/FDThemeProvider.h>
#include <kit/base/NotificationCenter.h>
#include <kit/base/UserDefaults.h>

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// The tab buttons' pictures, drawn so they follow the theme's colours.
QIcon tabIcon(const QString &name, const QColor &color)
{
    QPixmap pixmap(64, 64);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 4.5, Qt::SolidLine, Qt::RoundCap));
    if (name == QLatin1String("general")) {
        // Three sliders.
        for (int row = 0; row < 3; ++row) {
            const double y = 16 + row * 16;
            painter.drawLine(QPointF(10, y), QPointF(54, y));
            const double knob = row == 1 ? 40 : (row == 0 ? 22 : 30);
            painter.setBrush(color);
            painter.drawEllipse(QPointF(knob, y), 5, 5);
        }
    } else {
        // A gear: a ring with eight teeth.
        painter.translate(32, 32);
        for (int tooth = 0; tooth < 8; ++tooth) {
            painter.drawLine(QPointF(0, -17), QPointF(0, -25));
            painter.rotate(45);
        }
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(QPointF(0, 0), 16, 16);
        painter.drawEllipse(QPointF(0, 0), 6, 6);
    }
    return QIcon(pixmap);
}

} // namespace

namespace {

// Lives to the end of the process once made.
PrefWindowController *sharedWindow = nullptr;

} // namespace

PrefWindowController &PrefWindowController::shared()
{
    if (!sharedWindow)
        sharedWindow = new PrefWindowController;
    return *sharedWindow;
}

PrefWindowController *PrefWindowController::sharedIfMade()
{
    return sharedWindow;
}

PrefWindowController::PrefWindowController()
    : QWidget(nullptr, Qt::Window)
{
    setWindowTitle(tr("Preferences"));
    setObjectName(QStringLiteral("PrefWindow"));
    setAutoFillBackground(true);
    // Closing it is no reason to quit.
    setAttribute(Qt::WA_QuitOnClose, false);

    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_tabBar = new QWidget(this);
    m_tabBar->setAutoFillBackground(true);
    auto *const tabs = new QHBoxLayout(m_tabBar);
    tabs->setContentsMargins(12, 8, 12, 6);
    tabs->setSpacing(4);
    tabs->addStretch();
    m_generalButton = makeTabButton(tr("General"), QStringLiteral("general"));
    m_advancedButton = makeTabButton(tr("Advanced"), QStringLiteral("advanced"));
    tabs->addWidget(m_generalButton);
    tabs->addWidget(m_advancedButton);
    tabs->addStretch();
    layout->addWidget(m_tabBar);

    auto *const divider = new QWidget(this);
    divider->setObjectName(QStringLiteral("divider"));
    divider->setFixedHeight(1);
    divider->setAutoFillBackground(true);
    layout->addWidget(divider);

    m_tabContentsContainer = new QWidget(this);
    auto *const container = new QVBoxLayout(m_tabContentsContainer);
    container->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tabContentsContainer, 1);

    m_generalContentsView = makeGeneralPane();
    m_advancedContentsView = makeAdvancedPane();
    m_advancedContentsView->hide();
    setSelectedTabButton(m_generalButton);

    // The usual key closes the window as its close button does.
    auto *const closeAction = new QAction(this);
    closeAction->setShortcuts(
        PDFWindowMenus::standardKeys(QKeySequence::Close, QKeySequence(Qt::CTRL | Qt::Key_W)));
    connect(closeAction, &QAction::triggered, this, &PrefWindowController::performCloseTabAction);
    addAction(closeAction);
    // This window has no menu bar, so quitting needs its key here too.
    auto *const quitAction = new QAction(this);
    quitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quitAction, &QAction::triggered, this, [] {
        if (GlobalService *const service = GlobalService::shared())
            service->terminate();
    });
    addAction(quitAction);

    setFixedWidth(540);
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
    onThemeChanged();
}

PrefWindowController::~PrefWindowController() = default;

QToolButton *PrefWindowController::makeTabButton(const QString &title, const QString &iconName)
{
    auto *const button = new QToolButton(m_tabBar);
    button->setText(title);
    button->setObjectName(iconName);
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setIconSize(QSize(26, 26));
    button->setMinimumWidth(78);
    connect(button, &QToolButton::clicked, this,
        [this, button] { onTabButtonClickedWithButton(button); });
    return button;
}

QFormLayout *PrefWindowController::makePaneForm(QWidget *pane)
{
    auto *const form = new QFormLayout(pane);
    form->setContentsMargins(40, 24, 40, 24);
    form->setHorizontalSpacing(14);
    form->setVerticalSpacing(12);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    return form;
}

QLabel *PrefWindowController::label(const QString &text)
{
    auto *const l = new QLabel(text);
    m_labels.push_back(l);
    return l;
}

QWidget *PrefWindowController::makeGeneralPane()
{
    auto *const pane = new QWidget(m_tabContentsContainer);
    auto *const form = makePaneForm(pane);
    bindLineEdit(pane, FDDefaults::UserName);
    bindComboBox(
        pane, FDDefaults::LaunchWith, { tr("Show a start tab"), tr("Reopen the last windows") });
    bindComboBox(
        pane, FDDefaults::DefaultScaleMode, { tr("Actual size"), tr("Fit width"), tr("Fit page") });
    bindCheckBox(
        pane, FDDefaults::RememberLastPosition, tr("Reopen documents where I left off"), false);
    bindCheckBox(
        pane, FDDefaults::AlwaysShowSidebar, tr("Show the sidebar also without an outline"), false);
    form->addRow(label(tr("Author name:")), controlForKey(FDDefaults::UserName));
    auto *const note = new QLabel(tr("Written into the annotations you add."), pane);
    m_notes.push_back(note);
    form->addRow(QString(), note);
    form->addRow(label(tr("On launch:")), controlForKey(FDDefaults::LaunchWith));
    form->addRow(label(tr("Zoom of new documents:")), controlForKey(FDDefaults::DefaultScaleMode));
    form->addRow(label(tr("Theme:")), new FDThemePicker(pane));
    form->addRow(label(tr("Reading:")), controlForKey(FDDefaults::RememberLastPosition));
    form->addRow(QString(), controlForKey(FDDefaults::AlwaysShowSidebar));
    return pane;
}

QWidget *PrefWindowController::makeAdvancedPane()
{
    auto *const pane = new QWidget(m_tabContentsContainer);
    auto *const form = makePaneForm(pane);
    bindCheckBox(pane, FDDefaults::SavingPrompt,
        tr("Ask before saving a changed document on closing"), false);
    bindCheckBox(pane, FDDefaults::DisableHistory, tr("Keep a list of recent documents"), true);
    bindCheckBox(
        pane, FDDefaults::RememberCurrentTheme, tr("Start with the theme chosen last"), false);
    form->addRow(label(tr("Closing:")), controlForKey(FDDefaults::SavingPrompt));
    auto *const note
        = new QLabel(tr("Otherwise changes to a named document are saved silently."), pane);
    note->setWordWrap(true);
    m_notes.push_back(note);
    form->addRow(QString(), note);
    form->addRow(label(tr("History:")), controlForKey(FDDefaults::DisableHistory));
    form->addRow(label(tr("Appearance:")), controlForKey(FDDefaults::RememberCurrentTheme));
    return pane;
}

void PrefWindowController::bindLineEdit(QWidget *pane, const QString &key)
{
    auto *const edit = new QLineEdit(pane);
    edit->setMinimumWidth(240);
    connect(edit, &QLineEdit::textEdited, this,
        [key](const QString &text) { UserDefaults::standard().setObject(text, key); });
    m_bindings.push_back(
        { key, edit, [edit, key] { edit->setText(UserDefaults::standard().stringForKey(key)); } });
}

void PrefWindowController::bindComboBox(
    QWidget *pane, const QString &key, const QStringList &choices)
{
    auto *const combo = new QComboBox(pane);
    combo->addItems(choices);
    connect(combo, &QComboBox::activated, this,
        [key](int index) { UserDefaults::standard().setInteger(index, key); });
    m_bindings.push_back({ key, combo, [combo, key] {
                              const qint64 value = UserDefaults::standard().integerForKey(key);
                              combo->setCurrentIndex(
                                  value >= 0 && value < combo->count() ? int(value) : -1);
                          } });
}

void PrefWindowController::bindCheckBox(
    QWidget *pane, const QString &key, const QString &text, bool inverted)
{
    auto *const box = new QCheckBox(text, pane);
    connect(box, &QCheckBox::clicked, this, [key, inverted](bool checked) {
        UserDefaults::standard().setInteger(checked != inverted ? 1 : 0, key);
    });
    m_bindings.push_back({ key, box, [box, key, inverted] {
                              const bool on = UserDefaults::standard().integerForKey(key) == 1;
                              box->setChecked(on != inverted);
                          } });
}

QWidget *PrefWindowController::controlForKey(const QString &key) const
{
    for (const Binding &binding : m_bindings) {
        if (binding.key == key)
            return binding.control;
    }
    return nullptr;
}

void PrefWindowController::readAllKeys()
{
    for (const Binding &binding : m_bindings) {
        if (binding.control)
            binding.read();
    }
}

void PrefWindowController::showWindow()
{
    if (isVisible())
        readAllKeys();
    show();
    raise();
    activateWindow();
}

void PrefWindowController::showEvent(QShowEvent *event)
{
    readAllKeys();
    QWidget::showEvent(event);
}

void PrefWindowController::performCloseTabAction()
{
    hide();
}

void PrefWindowController::closeEvent(QCloseEvent *event)
{
    // The window is kept for the next showing.
    event->ignore();
    performCloseTabAction();
}

void PrefWindowController::onTabButtonClickedWithButton(QToolButton *button)
{
    setSelectedTabButton(button);
}

void PrefWindowController::setSelectedTabButton(QToolButton *button)
{
    QWidget *const newPane
        = button == m_advancedButton ? m_advancedContentsView : m_generalContentsView;
    if (m_selectedTabButton && m_selectedTabButton != button) {
        m_selectedTabButton->setChecked(false);
        QWidget *const oldPane = m_selectedTabButton == m_advancedButton ? m_advancedContentsView
                                                                         : m_generalContentsView;
        m_tabContentsContainer->layout()->removeWidget(oldPane);
        oldPane->hide();
    }
    m_selectedTabButton = button;
    button->setChecked(true);
    if (m_tabContentsContainer->layout()->indexOf(newPane) < 0)
        m_tabContentsContainer->layout()->addWidget(newPane);
    newPane->show();
    onThemeChanged();
    adjustSize();
}

void PrefWindowController::onThemeChanged()
{
    const FDTheme *const theme = FDThemeProvider::current();
    QPalette palette = this->palette();
    const QColor background = theme->color(FDTheme::contentViewBackgroundColor);
    const QColor text = theme->color(FDTheme::labelColor);
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Base, theme->color(FDTheme::textFieldBackgroundColor));
    palette.setColor(QPalette::AlternateBase, theme->color(FDTheme::tableRowViewBackgroundColor));
    palette.setColor(QPalette::Button,
        theme->isDark() ? theme->color(FDTheme::primaryButtonBackgroundColor)
                        : FDTheme::white(0.97));
    palette.setColor(QPalette::Highlight, theme->color(FDTheme::selectedBackgroundColor));
    palette.setColor(QPalette::HighlightedText, theme->color(FDTheme::selectedTextColor));
    palette.setColor(QPalette::PlaceholderText, theme->color(FDTheme::tertiaryLabelColor));
    palette.setColor(
        QPalette::Disabled, QPalette::Text, theme->color(FDTheme::disabledControlColor));
    palette.setColor(
        QPalette::Disabled, QPalette::WindowText, theme->color(FDTheme::disabledControlColor));
    setPalette(palette);

    QPalette bar = palette;
    bar.setColor(QPalette::Window, theme->color(FDTheme::toolbarBackgroundColor));
    m_tabBar->setPalette(bar);
    if (auto *const divider = findChild<QWidget *>(QStringLiteral("divider"))) {
        QPalette line = palette;
        line.setColor(QPalette::Window, theme->color(FDTheme::borderColor));
        divider->setPalette(line);
    }
    for (QLabel *label : m_labels) {
        QPalette labelPalette = palette;
        labelPalette.setColor(QPalette::WindowText, text);
        label->setPalette(labelPalette);
    }
    // Texts that can't be edited take the quieter colour.
    for (QLabel *note : m_notes) {
        QPalette notePalette = palette;
        notePalette.setColor(QPalette::WindowText, theme->color(FDTheme::secondaryLabelColor));
        note->setPalette(notePalette);
        QFont small = note->font();
        small.setPointSizeF(QFont().pointSizeF() * 0.9);
        note->setFont(small);
    }
    for (QToolButton *button : { m_generalButton, m_advancedButton }) {
        const bool selected = button == m_selectedTabButton;
        const QColor color = selected ? theme->color(FDTheme::primaryColor)
                                      : theme->color(FDTheme::secondaryLabelColor);
        QPalette buttonPalette = bar;
        buttonPalette.setColor(QPalette::ButtonText, color);
        buttonPalette.setColor(QPalette::WindowText, color);
        button->setPalette(buttonPalette);
        button->setIcon(tabIcon(button->objectName(), color));
        QColor wash = theme->color(FDTheme::primaryColor);
        wash.setAlphaF(theme->isDark() ? 0.22f : 0.12f);
        button->setStyleSheet(QStringLiteral("QToolButton { border: none; border-radius: 7px;"
                                             " padding: 4px 10px; color: %1; }"
                                             "QToolButton:checked { background: %2; }")
                                  .arg(color.name(QColor::HexArgb), wash.name(QColor::HexArgb)));
    }
    update();
}
