#pragma once

// Writes documents to their files in the background, small and big ones on separate executors,
// and keeps a document alive until its write has ended; a file reopened meanwhile takes its
// document from here. Main thread only; exists once, for the life of the process.

#include <QUrl>

#include <memory>

class FDDocument;
class TaskExcutor;

class PDFSavingService
{
public:
    static PDFSavingService &shared();

    // Nothing to do: the executors exist from the first use.
    void start();
    // Hands the document to the slow executor from 1001 pages on, else to the fast one; false
    // when the document has no URL.
    bool addTask(const std::shared_ptr<FDDocument> &document);
    // Writes only the document's pending attributes to its file, in turn with the saves of that
    // file on the same executor; the bytes and the modification time stay. A file that can't
    // take attributes, or that another program replaced, is left as it is without a word.
    bool addAttributesTask(const std::shared_ptr<FDDocument> &document);
    // The document being saved to url (pending before running, fast before slow), or null.
    std::shared_ptr<FDDocument> getDocumentByURL(const QUrl &url) const;
    // Pending and running tasks of both executors.
    qsizetype numberOfTasks() const;

    const TaskExcutor &fastExcutor() const { return *m_fastExcutor; }
    const TaskExcutor &slowExcutor() const { return *m_slowExcutor; }

private:
    PDFSavingService();

    std::unique_ptr<TaskExcutor> m_fastExcutor;
    std::unique_ptr<TaskExcutor> m_slowExcutor;
};
