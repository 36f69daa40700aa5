#pragma once

// Records the find notifications of one document, in order, while it lives.

#include <QList>
#include <QStringList>

#include <functional>
#include <memory>

class PDFDocument;
class PDFSelection;

class FindRecorder
{
public:
    explicit FindRecorder(const std::shared_ptr<PDFDocument> &document);
    ~FindRecorder();

    // The index of each hit's first page.
    QList<int> pages() const;
    // Each hit's text.
    QStringList strings() const;
    // "page:text" for each hit.
    QStringList summary() const;
    // Waits, turning the event loop, until the find has ended.
    bool waitForEnd(int timeoutMs = 60000) const;

    QList<std::shared_ptr<PDFSelection>> hits;
    int ends = 0;
    std::function<void(const std::shared_ptr<PDFSelection> &)> onHit;

private:
    std::shared_ptr<PDFDocument> m_document;
};
