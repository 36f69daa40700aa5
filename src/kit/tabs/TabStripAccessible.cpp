#include "TabStripAccessible.h"

#include "TabContents.h"
#include "TabStripModel.h"
#include "TabStripView.h"

#include <QPointer>

namespace {

// A button of the strip drawn without a widget: a tab's close button or the new-tab button.
class StripButtonAccessible : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    // Null contents: the new-tab button.
    StripButtonAccessible(TabStripView *strip, QAccessibleInterface *parent, TabContents *contents)
        : m_strip(strip)
        , m_parent(parent)
        , m_contents(contents)
        , m_isNewTab(!contents)
    { }

    bool isValid() const override { return m_strip && (m_isNewTab || index() >= 0); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_parent->window(); }
    QAccessibleInterface *parent() const override { return m_parent; }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override
    {
        if (t != QAccessible::Name)
            return {};
        return m_isNewTab ? TabStripView::tr("New Tab") : TabStripView::tr("Close Tab");
    }
    void setText(QAccessible::Text, const QString &) override { }
    QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect local
            = m_isNewTab ? m_strip->newTabButtonRect() : m_strip->closeButtonRectAt(index());
        return QRect(m_strip->mapToGlobal(local.topLeft()), local.size());
    }
    QAccessible::Role role() const override { return QAccessible::Button; }
    QAccessible::State state() const override
    {
        QAccessible::State s;
        s.invisible = rect().isEmpty();
        return s;
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface
            ? static_cast<QAccessibleActionInterface *>(this)
            : nullptr;
    }
    QStringList actionNames() const override { return { pressAction() }; }
    void doAction(const QString &name) override
    {
        if (name != pressAction() || !isValid())
            return;
        if (m_isNewTab)
            emit m_strip->newTabButtonClicked();
        else
            m_strip->tabStripModel()->closeTabContentsAtIndex(
                index(), TabStripModel::CloseUserGesture);
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    int index() const
    {
        TabStripModel *const model = m_strip ? m_strip->tabStripModel() : nullptr;
        return model && m_contents ? model->getIndexOfTabContents(m_contents) : -1;
    }

    QPointer<TabStripView> m_strip;
    QAccessibleInterface *m_parent;
    QPointer<TabContents> m_contents;
    bool m_isNewTab;
};

// One tab: a page tab named by its title, selected when it is the shown one.
class TabAccessible : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    TabAccessible(TabStripView *strip, QAccessibleInterface *parent, TabContents *contents)
        : m_strip(strip)
        , m_parent(parent)
        , m_contents(contents)
    { }
    ~TabAccessible() override
    {
        if (m_closeId)
            QAccessible::deleteAccessibleInterface(m_closeId);
    }

    bool isValid() const override { return index() >= 0; }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_parent->window(); }
    QAccessibleInterface *parent() const override { return m_parent; }
    int childCount() const override { return 1; }
    QAccessibleInterface *child(int i) const override
    {
        if (i != 0 || !isValid())
            return nullptr;
        if (!m_closeId)
            m_closeId = QAccessible::registerAccessibleInterface(
                new StripButtonAccessible(m_strip, const_cast<TabAccessible *>(this), m_contents));
        return QAccessible::accessibleInterface(m_closeId);
    }
    int indexOfChild(const QAccessibleInterface *c) const override
    {
        return c && m_closeId
                && QAccessible::uniqueId(const_cast<QAccessibleInterface *>(c)) == m_closeId
            ? 0
            : -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        QAccessibleInterface *const close = child(0);
        return close && close->rect().contains(x, y) ? close : nullptr;
    }
    QString text(QAccessible::Text t) const override
    {
        if (!isValid())
            return {};
        if (t == QAccessible::Name)
            return m_contents->title();
        if (t == QAccessible::Description)
            return m_contents->url();
        return {};
    }
    void setText(QAccessible::Text, const QString &) override { }
    QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect local = m_strip->tabRectAt(index());
        return QRect(m_strip->mapToGlobal(local.topLeft()), local.size());
    }
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    QAccessible::State state() const override
    {
        QAccessible::State s;
        if (!isValid())
            return s;
        s.selectable = true;
        s.selected = m_strip->tabStripModel()->selectedIndex() == index();
        const QRect shown = m_strip->tabRectAt(index()).intersected(m_strip->rect());
        s.invisible = shown.width() < 2;
        s.offscreen = s.invisible;
        return s;
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface
            ? static_cast<QAccessibleActionInterface *>(this)
            : nullptr;
    }
    QStringList actionNames() const override { return { pressAction() }; }
    void doAction(const QString &name) override
    {
        if (name == pressAction() && isValid())
            m_strip->tabStripModel()->selectTabContentsAt(index(), true);
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    int index() const
    {
        TabStripModel *const model = m_strip ? m_strip->tabStripModel() : nullptr;
        return model && m_contents ? model->getIndexOfTabContents(m_contents) : -1;
    }

    QPointer<TabStripView> m_strip;
    QAccessibleInterface *m_parent;
    QPointer<TabContents> m_contents;
    mutable QAccessible::Id m_closeId = 0;
};

QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    if (className == QLatin1String("TabStripView") && object && object->isWidgetType())
        if (auto *const strip = qobject_cast<TabStripView *>(object))
            return new TabStripAccessible(strip);
    return nullptr;
}

} // namespace

TabStripAccessible::TabStripAccessible(TabStripView *strip)
    : QAccessibleWidget(strip, QAccessible::PageTabList, TabStripView::tr("Tabs"))
{ }

TabStripAccessible::~TabStripAccessible()
{
    for (const QAccessible::Id id : std::as_const(m_tabIds))
        QAccessible::deleteAccessibleInterface(id);
    if (m_newTabId)
        QAccessible::deleteAccessibleInterface(m_newTabId);
}

void TabStripAccessible::registerFactory()
{
    static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(installed);
}

TabStripView *TabStripAccessible::strip() const
{
    return static_cast<TabStripView *>(widget());
}

int TabStripAccessible::childCount() const
{
    TabStripModel *const model = strip()->tabStripModel();
    return (model ? model->count() : 0) + 1;
}

QAccessibleInterface *TabStripAccessible::tabInterface(int index) const
{
    TabContents *const contents = strip()->tabStripModel()->getTabContentsAtIndex(index);
    if (!contents)
        return nullptr;
    // Tabs that closed leave the registry as they are noticed.
    for (auto it = m_tabIds.begin(); it != m_tabIds.end();) {
        QAccessibleInterface *const known = QAccessible::accessibleInterface(*it);
        if (!known || !known->isValid()) {
            QAccessible::deleteAccessibleInterface(*it);
            it = m_tabIds.erase(it);
        } else {
            ++it;
        }
    }
    QAccessible::Id &id = m_tabIds[contents];
    if (!id)
        id = QAccessible::registerAccessibleInterface(
            new TabAccessible(strip(), const_cast<TabStripAccessible *>(this), contents));
    return QAccessible::accessibleInterface(id);
}

QAccessibleInterface *TabStripAccessible::child(int index) const
{
    TabStripModel *const model = strip()->tabStripModel();
    const int tabs = model ? model->count() : 0;
    if (index >= 0 && index < tabs)
        return tabInterface(index);
    if (index != tabs)
        return nullptr;
    if (!m_newTabId)
        m_newTabId = QAccessible::registerAccessibleInterface(
            new StripButtonAccessible(strip(), const_cast<TabStripAccessible *>(this), nullptr));
    return QAccessible::accessibleInterface(m_newTabId);
}

int TabStripAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    for (int i = 0; i < childCount(); ++i) {
        if (this->child(i) == child)
            return i;
    }
    return -1;
}

QAccessibleInterface *TabStripAccessible::childAt(int x, int y) const
{
    for (int i = 0; i < childCount(); ++i) {
        QAccessibleInterface *const c = child(i);
        if (c && c->rect().contains(x, y))
            return c;
    }
    return nullptr;
}
