#pragma once

// Go to a page (0-based) and page-space point of another file.

#include "PDFAction.h"

#include <QPointF>
#include <QUrl>

class PDFActionRemoteGoTo : public PDFAction
{
public:
    PDFActionRemoteGoTo(int pageIndex, const QPointF &point, const QUrl &url)
        : m_pageIndex(pageIndex)
        , m_point(point)
        , m_url(url)
    { }
    QString type() const override { return QStringLiteral("GoToR"); }
    int pageIndex() const { return m_pageIndex; }
    QPointF point() const { return m_point; }
    QUrl URL() const { return m_url; }

private:
    int m_pageIndex;
    QPointF m_point;
    QUrl m_url;
};
