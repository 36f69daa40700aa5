#pragma once

// A page of a document marked with a title. Its document keeps the list and writes it into the
// file's outline; the bookmark itself is a plain pair. Main thread only.

#include <QMetaType>
#include <QString>

#include <memory>

class FDPage;

class FDBookmark
{
public:
    FDBookmark() = default;

    // Not for use: a bookmark always has a page. Stops the process.
    [[noreturn]] void init();
    void initWithTitle(const QString &title, const std::shared_ptr<FDPage> &page);

    // Held strongly: a bookmark on a page taken out of the document keeps that page.
    const std::shared_ptr<FDPage> &page() const { return m_page; }
    const QString &title() const { return m_title; }
    void setTitle(const QString &title) { m_title = title; }

private:
    std::shared_ptr<FDPage> m_page;
    QString m_title;
};

Q_DECLARE_METATYPE(std::shared_ptr<FDBookmark>)
