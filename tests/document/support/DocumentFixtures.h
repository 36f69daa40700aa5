#pragma once

// PDF files and documents for the document tests.

#include <document/FDDocumentDelegate.h>

#include <QObject>
#include <QString>

#include <memory>

class FDDocument;

namespace DocumentFixtures {

// Writes a PDF of letter pages with lines of text; stops the test process if it can't.
void writeBlankPDF(const QString &path, int pageCount, int linesPerPage = 1);
// The number of pages of the file as the engine reads it; -1 when it doesn't parse.
int pageCountOf(const QString &path);
// Opens path as the application does; stops the test process if it can't.
std::shared_ptr<FDDocument> open(
    const QString &path, const std::shared_ptr<FDDocumentDelegate> &delegate = {});
// Appends blank pages, each one counted as a page change.
void appendBlankPages(FDDocument &document, int count);

} // namespace DocumentFixtures

// A delegate that speaks for a view: a plain object standing for the view identity.
class ViewDelegate
{
public:
    ViewDelegate();
    ~ViewDelegate();
    QObject *view() { return &m_view; }
    const std::shared_ptr<FDDocumentDelegate> &delegate() const { return m_delegate; }

private:
    QObject m_view;
    std::shared_ptr<FDDocumentDelegate> m_delegate;
};
