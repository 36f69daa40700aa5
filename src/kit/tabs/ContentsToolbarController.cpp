#include "ContentsToolbarController.h"

#include "QKThemeProvider.h"

#include <kit/base/NotificationCenter.h>

#include <QPainter>
#include <QVBoxLayout>
#include <QWidget>

namespace {

class ToolbarArea : public QWidget
{
public:
    ToolbarArea()
    {
        setObjectName(QStringLiteral("ContentsToolbarArea"));
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        NotificationCenter::qkCenter().addObserver(this,
            QKThemeProvider::QKThemeDidChangeNotification, nullptr,
            [this](const Notification &) { update(); });
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(
            rect(), QKThemeProvider::sharedInstance().current().toolbarBackgroundColor());
    }
};

} // namespace

ContentsToolbarController::ContentsToolbarController(QObject *parent)
    : QObject(parent)
    , m_view(new ToolbarArea)
{ }

ContentsToolbarController::~ContentsToolbarController()
{
    if (m_view && !m_view->parent())
        delete m_view.data();
}

void ContentsToolbarController::updateToolbarWithContents(
    TabContents *contents, bool shouldRestoreState)
{
    Q_UNUSED(contents);
    Q_UNUSED(shouldRestoreState);
}

void ContentsToolbarController::removeCurrentToolbar()
{
    setCurrentToolbar(nullptr);
}

void ContentsToolbarController::setCurrentToolbar(QWidget *toolbar)
{
    if (toolbar == m_toolbar || !m_view)
        return;
    if (m_toolbar) {
        m_view->layout()->removeWidget(m_toolbar);
        m_toolbar->hide();
        m_toolbar->setParent(nullptr);
    }
    m_toolbar = toolbar;
    if (toolbar) {
        m_view->layout()->addWidget(toolbar);
        toolbar->show();
    }
}
