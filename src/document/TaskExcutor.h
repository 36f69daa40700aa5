#pragma once

// Runs the saving tasks of one size class: pending tasks wait head first, at most `concurrency`
// run at once on the executor's thread pool, and two tasks for one URL never run together. The
// task lists are touched on the main thread only; the pool's threads produce bytes for detached
// documents and write the files.

#include <kit/base/RefArray.h>

#include <QString>
#include <QThread>
#include <QThreadPool>

#include <memory>

class FDDocument;
class Task;

class TaskExcutor
{
public:
    TaskExcutor(int concurrency, const QString &label, QThread::Priority priority);
    TaskExcutor(const TaskExcutor &) = delete;
    TaskExcutor &operator=(const TaskExcutor &) = delete;

    // Replaces the pending tasks of the document's URL with a new one and schedules; false, and
    // nothing done, for a document without a URL.
    bool add(const std::shared_ptr<FDDocument> &document);
    // The document of a pending, else a running, task made for url; null when there is none.
    std::shared_ptr<FDDocument> getDocumentByURL(const QUrl &url) const;
    qsizetype numberOfTasks() const { return m_pendingTasks.count() + m_runningTasks.count(); }

    int concurrency() const { return m_concurrency; }
    const RefArray<Task> &pendingTasks() const { return m_pendingTasks; }
    const RefArray<Task> &runningTasks() const { return m_runningTasks; }
    const QThreadPool &queue() const { return m_queue; }

private:
    void schedule();
    // bytes is null for a detached document: the queue produces them.
    void postWrite(std::shared_ptr<Task> task, const QByteArray &bytes);
    void finish(std::shared_ptr<Task> task, const QString &error);
    bool isRunning(const QUrl &url) const;

    const int m_concurrency;
    QThreadPool m_queue;
    RefArray<Task> m_pendingTasks;
    RefArray<Task> m_runningTasks;
};
