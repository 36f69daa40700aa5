#pragma once

// One request to write a document to its file. Holding the document strongly is what keeps a
// closed tab's document alive until it is written. Main thread only.

#include <QUrl>

#include <memory>

class FDDocument;

class Task
{
public:
    enum Kind {
        // The document's bytes, then its attributes.
        Save,
        // Only the document's attributes, for a document without changes: the file's bytes and
        // modification time stay as they are.
        Attributes
    };

    // A save takes the document's count of changes and resets the document to clean.
    explicit Task(std::shared_ptr<FDDocument> document, Kind kind = Save);

    const QUrl &URL() const { return m_URL; }
    const std::shared_ptr<FDDocument> &document() const { return m_document; }
    Kind kind() const { return m_kind; }
    int numberOfChanges() const { return m_numberOfChanges; }
    int numberOfFailure() const { return m_numberOfFailure; }
    void addFailure() { ++m_numberOfFailure; }

private:
    QUrl m_URL;
    std::shared_ptr<FDDocument> m_document;
    Kind m_kind;
    int m_numberOfChanges = 0;
    int m_numberOfFailure = 0;
};
