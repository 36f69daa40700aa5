#include "QKSubview.h"

#include <QEvent>
#include <QPointer>
#include <QWidget>

#include <cmath>

namespace {

// Lives as a child of the filling widget and keeps it sized to its parent. It goes away with the
// widget, and stops when the widget moves to another parent.
class FillParentFilter : public QObject
{
public:
    FillParentFilter(QWidget *child, QWidget *parent, double horizontal, double vertical)
        : QObject(child)
        , m_child(child)
        , m_parent(parent)
        , m_horizontal(int(std::lround(horizontal)))
        , m_vertical(int(std::lround(vertical)))
    {
        parent->installEventFilter(this);
        child->installEventFilter(this);
        fit();
    }

    void fit()
    {
        if (m_child && m_parent) {
            m_child->setGeometry(
                m_parent->rect().adjusted(m_horizontal, m_vertical, -m_horizontal, -m_vertical));
        }
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_parent && event->type() == QEvent::Resize) {
            fit();
        } else if (watched == m_child && event->type() == QEvent::ParentChange
            && m_child->parentWidget() != m_parent) {
            if (m_parent)
                m_parent->removeEventFilter(this);
            deleteLater();
        }
        return false;
    }

private:
    QPointer<QWidget> m_child;
    QPointer<QWidget> m_parent;
    const int m_horizontal;
    const int m_vertical;
};

void removeFillFilters(QWidget *child)
{
    // By dynamic type: without Q_OBJECT, findChildren would match every child object.
    const QObjectList children = child->children();
    for (QObject *object : children)
        delete dynamic_cast<FillParentFilter *>(object);
}

} // namespace

void qk_addSubview(QWidget *parent, QWidget *child)
{
    qk_addSubview(parent, child, 0, 0, QKWindowOrderingMode::Above, nullptr);
}

void qk_addSubview(QWidget *parent, QWidget *child, double horizontalPadding,
    double verticalPadding, QKWindowOrderingMode positioned, QWidget *relativeTo)
{
    if (!parent || !child || parent == child)
        return;
    removeFillFilters(child);
    if (child->parentWidget() != parent)
        child->setParent(parent);
    new FillParentFilter(child, parent, horizontalPadding, verticalPadding);

    if (relativeTo && relativeTo != child && relativeTo->parentWidget() == parent) {
        child->stackUnder(relativeTo);
        if (positioned == QKWindowOrderingMode::Above)
            relativeTo->stackUnder(child);
    } else if (positioned == QKWindowOrderingMode::Above) {
        child->raise();
    } else {
        child->lower();
    }
    child->show();
}
