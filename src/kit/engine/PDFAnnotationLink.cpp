#include "PDFAnnotationLink.h"

#include "PDFActionGoTo.h"
#include "PDFActionURL.h"
#include "PDFDestination.h"

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

void PDFAnnotationLink::setDestination(const std::shared_ptr<PDFDestination> &destination)
{
    m_destination = destination;
    didChange(QStringLiteral("destination"), {}, {});
}

std::shared_ptr<PDFAction> PDFAnnotationLink::action() const
{
    if (m_action)
        return m_action;
    if (!m_url.isEmpty())
        return std::make_shared<PDFActionURL>(m_url);
    if (m_destination)
        return std::make_shared<PDFActionGoTo>(m_destination);
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
