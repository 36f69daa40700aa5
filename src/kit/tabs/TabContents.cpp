#include "TabContents.h"

#include "TabStripModel.h"

#include <QUrl>
#include <QWidget>

TabContents::TabContents(QObject *parent)
    : QObject(parent)
{ }

TabContents::~TabContents()
{
    if (m_model)
        qFatal("TabContents deleted while in a tab strip; close it through the model instead");
    delete m_view.data();
}

QString TabContents::absoluteString(const QUrl &url)
{
    return url.toString(QUrl::FullyEncoded);
}

void TabContents::setUrl(const QString &url)
{
    if (url == m_url)
        return;
    m_url = url;
    if (m_model) {
        m_model->updateTabContentsStateAt(
            m_model->getIndexOfTabContents(this), TabStripModelObserver::TabChangeType::Url);
    }
}

void TabContents::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    if (m_model) {
        m_model->updateTabContentsStateAt(
            m_model->getIndexOfTabContents(this), TabStripModelObserver::TabChangeType::Title);
    }
}

QWidget *TabContents::view()
{
    if (!m_view) {
        m_view = loadView().release();
        if (!m_view)
            qFatal("TabContents::loadView must return a widget");
    }
    return m_view;
}

std::unique_ptr<QWidget> TabContents::loadView()
{
    return std::make_unique<QWidget>();
}

void TabContents::destroy(TabStripModel *model)
{
    Q_UNUSED(model);
}
