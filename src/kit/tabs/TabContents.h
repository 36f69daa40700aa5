#pragma once

// What one tab shows: its view, title and URL, and its say in being closed. Subclasses build
// their view in loadView() and react to selection and destruction. Owned by the TabStripModel it is
// in. Main thread only.

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class QUrl;
class QWidget;
class TabStripModel;

class TabContents : public QObject
{
    Q_OBJECT

public:
    explicit TabContents(QObject *parent = nullptr);
    // Deletes the view, wherever it is shown.
    ~TabContents() override;

    // The URL as its absolute string; tabs are found by it (TabStripModel::selectTabContentsByURL).
    QString url() const { return m_url; }
    void setUrl(const QString &url);
    void setUrlFromURL(const QUrl &url) { setUrl(absoluteString(url)); }
    static QString absoluteString(const QUrl &url);

    virtual QString title() const { return m_title; }
    // Tells the model, so that the strip and the window title follow.
    virtual void setTitle(const QString &title);

    // Built by loadView() at the first call. Owned by this object.
    QWidget *view();
    bool isViewLoaded() const { return !m_view.isNull(); }
    // The name of the layout the view is built from; empty by default.
    virtual QString nibName() const { return {}; }

    // The model the tab is in, or null.
    TabStripModel *tabStripModel() const { return m_model; }

    // Called after the tab became the selected one and observers were told.
    virtual void tabDidBecomeSelected() { }
    // Called once the tab has left model for good; this object is deleted soon after.
    virtual void destroy(TabStripModel *model);
    // Asked before a close; false keeps the tab open.
    virtual bool shouldClose() { return true; }

protected:
    // Makes the view that view() hands out; the default is an empty widget.
    virtual std::unique_ptr<QWidget> loadView();

private:
    friend class TabStripModel;

    QString m_url;
    QString m_title;
    QPointer<QWidget> m_view;
    TabStripModel *m_model = nullptr;
};
