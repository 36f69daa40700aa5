#include "ContentsToolbarController.h"

#include "QKThemeProvider.h"

#include <kit/base/NotificationCenter.h>

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWidget>

#include <algorithm>

namespace {

// Lays a toolbar out in its column; a toolbar added as a plain child (say with qk_addSubview)
// still gets its height, so either way of filling the area works.
class ToolbarArea : public QWidget
{
public:
    ToolbarArea()
    {
        setObjectName(QStringLiteral("ContentsToolbarArea"));
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        NotificationCenter::qkCenter().addObserver(this,
            QKThemeProvider::QKThemeDidChangeNotification, nullptr,
            [this](const Notification &) { update(); });
    }

    QSize sizeHint() const override { return withChildren(QWidget::sizeHint()); }
    QSize minimumSizeHint() const override { return withChildren(QWidget::minimumSizeHint()); }

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded || event->type() == QEvent::ChildRemoved)
            updateGeometry();
        return QWidget::event(event);
    }

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(
            rect(), QKThemeProvider::sharedInstance().current().toolbarBackgroundColor());
    }

private:
    QSize withChildren(QSize hint) const
    {
        hint = hint.expandedTo(QSize(0, 0));
        const auto children = findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
        for (const QWidget *child : children) {
            if (child->isHidden() && child->testAttribute(Qt::WA_WState_ExplicitShowHide))
                continue;
            const int height
                = std::min(std::max(child->minimumHeight(), child->sizeHint().height()),
                    child->maximumHeight());
            hint.setHeight(std::max(hint.height(), height));
        }
        return hint;
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
