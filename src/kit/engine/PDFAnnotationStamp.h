#pragma once

// A stamp: a picture that comes with the file. The engine draws its appearance and never makes
// one from properties, so sanitising keeps it. Main thread only.

#include "PDFAnnotation.h"

class PDFAnnotationStamp : public PDFAnnotation
{
public:
    PDFAnnotationStamp();

    // The stamp's name in the file ("Approved", ...), null when it has none.
    QString name() const { return m_name; }
    void setName(const QString &name);

    QVariant valueForKey(const QString &key) const override;
    void setValueForKey(const QVariant &value, const QString &key) override;
    QStringList archivedKeys() const override;

private:
    QString m_name;
};
