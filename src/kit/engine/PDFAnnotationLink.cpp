#include "PDFAnnotationLink.h"

#include "PDFActionGoTo.h"
#include "PDFActionURL.h"
#include "PDFAnnotationPrivate.h"
#include "PDFDestination.h"
#include "PDFPagePrivate.h"

PDFAnnotationLink::PDFAnnotationLink()
{
    setType(QStringLiteral("Link"));
}

void PDFAnnotationLink::setURL(const QUrl &url)
{
    const QUrl old = m_url;
    m_url = url;
    didChange(QStringLiteral("URL"), old, url);
}

std::shared_ptr<PDFDestination> PDFAnnotationLink::destination() const
{
    const PDFAnnotationPrivate &own = PDFAnnotationPrivate::of(*this);
    if (own.destinationUnread && own.handle) {
        const mu::Lock lock(own.handle->mutex());
        PDFPageInternals::readLinkDestinationLocked(*this, mu::context());
    }
    return m_destination;
}

void PDFAnnotationLink::setDestination(const std::shared_ptr<PDFDestination> &destination)
{
    PDFAnnotationPrivate::of(*this).destinationUnread = false;
    m_destination = destination;
    didChange(QStringLiteral("destination"), {}, {});
}

std::shared_ptr<PDFAction> PDFAnnotationLink::action() const
{
    if (m_action)
        return m_action;
    if (!m_url.isEmpty())
        return std::make_shared<PDFActionURL>(m_url);
    if (const auto target = destination())
        return std::make_shared<PDFActionGoTo>(target);
    return nullptr;
}

void PDFAnnotationLink::drawWithBox(QPainter &, PDFDisplayBox) const
{ }

QStringList PDFAnnotationLink::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("URL");
}

QVariant PDFAnnotationLink::valueForKey(const QString &key) const
{
    if (key == QLatin1String("URL"))
        return m_url;
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationLink::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("URL"))
        setURL(value.toUrl());
    else
        PDFAnnotation::setValueForKey(value, key);
}
