#pragma once

// Open a URL.

#include "PDFAction.h"

#include <QUrl>

class PDFActionURL : public PDFAction
{
public:
    explicit PDFActionURL(const QUrl &url)
        : m_url(url)
    { }
    QString type() const override { return QStringLiteral("URI"); }
    QUrl URL() const { return m_url; }

private:
    QUrl m_url;
};
