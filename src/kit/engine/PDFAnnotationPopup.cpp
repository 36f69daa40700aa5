#include "PDFAnnotationPopup.h"

PDFAnnotationPopup::PDFAnnotationPopup()
{
    setType(QStringLiteral("Popup"));
}

void PDFAnnotationPopup::setIsOpen(bool open)
{
    const bool old = m_open;
    m_open = open;
    didChange(QStringLiteral("isOpen"), old, open);
}

void PDFAnnotationPopup::drawWithBox(QPainter &, PDFDisplayBox) const
{ }

QStringList PDFAnnotationPopup::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("isOpen");
}

QVariant PDFAnnotationPopup::valueForKey(const QString &key) const
{
    if (key == QLatin1String("isOpen"))
        return m_open;
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationPopup::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("isOpen"))
        setIsOpen(value.toBool());
    else
        PDFAnnotation::setValueForKey(value, key);
}
