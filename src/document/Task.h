#pragma once

// One request to write a document to its file. Holding the document strongly is what keeps a
// closed tab's document alive until it is written. Main thread only.

#include <QUrl>

#include <memory>

class FDDocument;

class Task
{
public:
    // Takes the document's count of changes and resets the document to clean.
    explicit Task(std::shared_ptr<FDDocument> document);

    const QUrl &URL() const { return m_URL; }
    const std::shared_ptr<FDDocument> &document() const { return m_document; }
    int numberOfChanges() const { return m_numberOfChanges; }
    int numberOfFailure() const { return m_numberOfFailure; }
    void addFailure() { ++m_numberOfFailure; }

private:
    QUrl m_URL;
    std::shared_ptr<FDDocument> m_document;
    int m_numberOfChanges = 0;
    int m_numberOfFailure = 0;
};
