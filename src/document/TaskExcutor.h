#pragma once

// Runs the saving tasks of one size class: pending tasks wait head first, at most `concurrency`
// run at once on the executor's thread pool, and two tasks for one URL never run together. The
// task lists are touched on the main thread only; the pool's threads make the bytes (of a document
// on screen, from objects readied on the main thread) and write the files.

#include <kit/base/RefArray.h>

#include "FDDocument.h"
#include "FileIdentity.h"
#include "Task.h"

#include <QByteArray>
#include <QString>
#include <QThread>
#include <QThreadPool>

#include <memory>
#include <optional>

// What became of one attempt at a task, handed from the queue to the main thread.
struct TaskOutcome
{
    enum Result {
        Written,
        Failed,
        // Another program changed the file since the document read or wrote it: not written.
        FileChanged,
        // Nothing to do, nothing to tell.
        Skipped,
        // The document was readied for another write before this one ran: ready it again.
        Stale
    };
    Result result = Written;
    QString error;
    QString path;
    // The bytes made for the file, kept for a copy when they can't go there.
    QByteArray bytes;
    // The written file, as the next save expects to find it.
    std::optional<FileIdentity> written;
};

class TaskExcutor
{
public:
    TaskExcutor(int concurrency, const QString &label, QThread::Priority priority);
    TaskExcutor(const TaskExcutor &) = delete;
    TaskExcutor &operator=(const TaskExcutor &) = delete;

    // Replaces the pending tasks of the document's URL with a new one and schedules; false, and
    // nothing done, for a document without a URL. A task for the attributes alone is not added
    // while a save of the URL is pending, as that save writes them too.
    bool add(const std::shared_ptr<FDDocument> &document, Task::Kind kind = Task::Save);
    // The document of a pending, else a running, task made for url; null when there is none.
    std::shared_ptr<FDDocument> getDocumentByURL(const QUrl &url) const;
    qsizetype numberOfTasks() const { return m_pendingTasks.count() + m_runningTasks.count(); }

    int concurrency() const { return m_concurrency; }
    const RefArray<Task> &pendingTasks() const { return m_pendingTasks; }
    const RefArray<Task> &runningTasks() const { return m_runningTasks; }
    const QThreadPool &queue() const { return m_queue; }

private:
    void schedule();
    // write is null for a detached document and for attributes: the queue makes the bytes itself.
    void postWrite(std::shared_ptr<Task> task, PDFDocument::DataWriter write);
    static TaskOutcome perform(const Task &task, const PDFDocument::DataWriter &write);
    void finish(std::shared_ptr<Task> task, const TaskOutcome &outcome);
    // Counts a failed attempt and queues the task again, or reports it after the last attempt:
    // at once, or on the next turn of the main queue when later is set.
    void fail(const std::shared_ptr<Task> &task, const TaskOutcome &outcome, bool later);
    bool isRunning(const QUrl &url) const;

    const int m_concurrency;
    QThreadPool m_queue;
    RefArray<Task> m_pendingTasks;
    RefArray<Task> m_runningTasks;
};
