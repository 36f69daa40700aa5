#include "PDFAnnotationStamp.h"

PDFAnnotationStamp::PDFAnnotationStamp()
{
    setType(QStringLiteral("Stamp"));
}

void PDFAnnotationStamp::setName(const QString &name)
{
    const QString old = m_name;
    m_name = name;
    didChange(QStringLiteral("name"), old.isNull() ? QVariant() : QVariant(old),
        name.isNull() ? QVariant() : QVariant(name));
}

QStringList PDFAnnotationStamp::archivedKeys() const
{
    return PDFAnnotation::archivedKeys() << QStringLiteral("name");
}

QVariant PDFAnnotationStamp::valueForKey(const QString &key) const
{
    if (key == QLatin1String("name"))
        return m_name.isNull() ? QVariant() : QVariant(m_name);
    return PDFAnnotation::valueForKey(key);
}

void PDFAnnotationStamp::setValueForKey(const QVariant &value, const QString &key)
{
    if (key == QLatin1String("name"))
        setName(value.isValid() ? value.toString() : QString());
    else
        PDFAnnotation::setValueForKey(value, key);
}
