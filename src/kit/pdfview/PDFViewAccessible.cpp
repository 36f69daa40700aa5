#include "PDFViewAccessible.h"

#include "PDFPageAccessible.h"
#include "PDFView.h"

#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>

#include <QFileInfo>

namespace {

QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    if (className == QLatin1String("PDFView") && object && object->isWidgetType())
        if (auto *const view = qobject_cast<PDFView *>(object))
            return new PDFViewAccessible(view);
    return nullptr;
}

} // namespace

PDFViewAccessible::PDFViewAccessible(PDFView *view)
    : QAccessibleWidget(view, QAccessible::Document)
{ }

PDFViewAccessible::~PDFViewAccessible()
{
    for (const QAccessible::Id id : std::as_const(m_pageIds))
        QAccessible::deleteAccessibleInterface(id);
}

void PDFViewAccessible::registerFactory()
{
    static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(installed);
}

PDFView *PDFViewAccessible::view() const
{
    return static_cast<PDFView *>(widget());
}

QString PDFViewAccessible::text(QAccessible::Text t) const
{
    if (t == QAccessible::Name && view()->accessibleName().isEmpty()) {
        const auto document = view()->document();
        if (!document)
            return PDFView::tr("No document");
        const QString path = document->documentURL().toLocalFile();
        return path.isEmpty() ? PDFView::tr("Untitled") : QFileInfo(path).fileName();
    }
    return QAccessibleWidget::text(t);
}

QAccessibleInterface *PDFViewAccessible::pageInterface(const std::shared_ptr<PDFPage> &page) const
{
    // Pages that left the document leave the registry as they are noticed.
    for (auto it = m_pageIds.begin(); it != m_pageIds.end();) {
        QAccessibleInterface *const known = QAccessible::accessibleInterface(*it);
        if (!known || !known->isValid()) {
            QAccessible::deleteAccessibleInterface(*it);
            it = m_pageIds.erase(it);
        } else {
            ++it;
        }
    }
    QAccessible::Id &id = m_pageIds[page.get()];
    if (!id)
        id = QAccessible::registerAccessibleInterface(
            new PDFPageAccessible(view(), const_cast<PDFViewAccessible *>(this), page));
    return QAccessible::accessibleInterface(id);
}

int PDFViewAccessible::childCount() const
{
    return int(view()->visiblePages().size());
}

QAccessibleInterface *PDFViewAccessible::child(int index) const
{
    const auto pages = view()->visiblePages();
    if (index < 0 || index >= int(pages.size()))
        return nullptr;
    return pageInterface(pages[size_t(index)]);
}

int PDFViewAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    const auto pages = view()->visiblePages();
    for (int i = 0; i < int(pages.size()); ++i) {
        const QAccessible::Id id = m_pageIds.value(pages[size_t(i)].get());
        if (id && QAccessible::accessibleInterface(id) == child)
            return i;
    }
    return -1;
}

QAccessibleInterface *PDFViewAccessible::childAt(int x, int y) const
{
    for (int i = 0; i < childCount(); ++i) {
        QAccessibleInterface *const page = child(i);
        if (page && page->rect().contains(x, y))
            return page;
    }
    return nullptr;
}
