#include "TaskExcutor.h"

#include "AtomicFileWriter.h"
#include "Common.h"
#include "Logger.h"
#include "SaveReport.h"

#include <kit/base/MainQueue.h>

#include <QCoreApplication>

namespace {

constexpr int MaximumAttempts = 3;

// The engine reads the bytes back before they replace a file, so a faulty serialisation can
// never destroy what the user has on disk.
QString checkParses(const QByteArray &bytes)
{
    const auto probe = std::make_shared<PDFDocument>();
    if (probe->initWithData(bytes))
        return {};
    return QCoreApplication::translate(
        "TaskExcutor", "The saved bytes are not a readable PDF (%1).")
        .arg(probe->errorString());
}

// A file that is gone has nothing to lose; one never seen by the document is the user's choice
// from a save panel.
bool isChangedByAnotherProgram(const FDDocument &document, const QString &path)
{
    const std::optional<FileIdentity> known = document.fileIdentity(path);
    const std::optional<FileIdentity> now = FileIdentity::of(path);
    return known && now && *known != *now;
}

void writeAttributes(const FDDocument &document, const QUrl &url)
{
    const std::optional<QList<FDXAttrItem>> items = document.xattrItemsToSave();
    for (const FDXAttrItem &item : items.value_or(QList<FDXAttrItem>()))
        FDSetXAttr(url, item.name, item.data);
}

TaskOutcome failure(TaskOutcome outcome, const QString &error)
{
    outcome.result = TaskOutcome::Failed;
    outcome.error = error;
    return outcome;
}

} // namespace

TaskExcutor::TaskExcutor(int concurrency, const QString &label, QThread::Priority priority)
    : m_concurrency(concurrency)
{
    m_queue.setObjectName(label);
    m_queue.setMaxThreadCount(concurrency);
    m_queue.setThreadPriority(priority);
}

bool TaskExcutor::add(const std::shared_ptr<FDDocument> &document, Task::Kind kind)
{
    const QUrl url = document->fileURL();
    if (url.isEmpty())
        return false;
    const auto isForURL = [&url](const std::shared_ptr<Task> &task) { return task->URL() == url; };
    if (kind == Task::Attributes) {
        for (const std::shared_ptr<Task> &task : m_pendingTasks) {
            if (isForURL(task) && task->kind() == Task::Save)
                return true;
        }
    }
    m_pendingTasks.removeIf(isForURL);
    m_pendingTasks.append(std::make_shared<Task>(document, kind));
    schedule();
    return true;
}

std::shared_ptr<FDDocument> TaskExcutor::getDocumentByURL(const QUrl &url) const
{
    for (const RefArray<Task> *tasks : { &m_pendingTasks, &m_runningTasks }) {
        for (const std::shared_ptr<Task> &task : *tasks) {
            // A document that only has its reading position written holds no edits: a view that
            // opens the file reads it afresh.
            if (task->URL() == url && task->kind() == Task::Save)
                return task->document();
        }
    }
    return {};
}

bool TaskExcutor::isRunning(const QUrl &url) const
{
    for (const std::shared_ptr<Task> &task : m_runningTasks) {
        if (task->URL() == url)
            return true;
    }
    return false;
}

void TaskExcutor::schedule()
{
    while (m_runningTasks.count() < m_concurrency && !m_pendingTasks.isEmpty()) {
        const std::shared_ptr<Task> head = m_pendingTasks.first();
        const std::shared_ptr<FDDocument> &document = head->document();
        const QUrl url = document->fileURL();
        // A write to the same file is under way: the head, and everything behind it, waits.
        if (!url.isEmpty() && isRunning(url))
            break;
        m_pendingTasks.takeFirst();
        if (head->kind() == Task::Attributes) {
            m_runningTasks.append(head);
            postWrite(head, {});
            continue;
        }
        document->attachBookmarksToOutlineTree();
        if (document->pdfView()) {
            // The user may go on editing: the objects are readied now, on the main thread, and
            // the queue writes them under the document's lock, which edits take too.
            PDFDocument::DataWriter write = document->prepareDataRepresentation();
            document->detachBookmarksFromOutlineTree();
            if (!write) {
                TaskOutcome outcome;
                fail(head, failure(outcome, document->errorString()), true);
                continue;
            }
            m_runningTasks.append(head);
            postWrite(head, std::move(write));
        } else {
            // Nobody looks at a detached document: its bytes are made on the queue, from an
            // outline that a view taking the document back must leave alone until the end.
            document->setIsOutlineInUseBySave(true);
            m_runningTasks.append(head);
            postWrite(head, {});
        }
    }
}

void TaskExcutor::postWrite(std::shared_ptr<Task> task, PDFDocument::DataWriter write)
{
    m_queue.start([this, task = std::move(task), write = std::move(write)]() mutable {
        const TaskOutcome outcome = perform(*task, write);
        // The task, and with it perhaps the last hold on the document, is released there.
        MainQueue::sync([this, &task, &outcome] { finish(std::move(task), outcome); });
    });
}

TaskOutcome TaskExcutor::perform(const Task &task, const PDFDocument::DataWriter &write)
{
    const FDDocument &document = *task.document();
    TaskOutcome outcome;
    const QUrl url = document.fileURL();
    if (url.isEmpty())
        return failure(
            outcome, QCoreApplication::translate("TaskExcutor", "The document has no file."));
    outcome.path = url.toLocalFile();
    if (task.kind() == Task::Attributes) {
        // The place belongs to the file that was read; another one in its stead keeps its own.
        if (isChangedByAnotherProgram(document, outcome.path))
            outcome.result = TaskOutcome::Skipped;
        else
            writeAttributes(document, url);
        return outcome;
    }
    AtomicFileWriter::removeLeftovers(outcome.path);
    QByteArray bytes;
    QString writeError;
    if (write) {
        PDFDocument::WrittenData written = write();
        if (written.isStale) {
            outcome.result = TaskOutcome::Stale;
            return outcome;
        }
        bytes = std::move(written.bytes);
        writeError = written.error;
    } else {
        bytes = document.dataRepresentation();
        if (bytes.isEmpty())
            writeError = document.errorString();
    }
    if (bytes.isEmpty())
        return failure(outcome,
            QCoreApplication::translate(
                "TaskExcutor", "The document could not be made into bytes (%1).")
                .arg(writeError));
    outcome.bytes = bytes;
    if (const QString error = checkParses(bytes); !error.isEmpty())
        return failure(outcome, error);
    if (isChangedByAnotherProgram(document, outcome.path)) {
        outcome.result = TaskOutcome::FileChanged;
        return outcome;
    }
    if (const QString error = AtomicFileWriter::write(outcome.path, bytes); !error.isEmpty())
        return failure(outcome, error);
    outcome.written = FileIdentity::of(outcome.path);
    writeAttributes(document, url);
    return outcome;
}

void TaskExcutor::finish(std::shared_ptr<Task> task, const TaskOutcome &outcome)
{
    m_runningTasks.remove(task);
    const std::shared_ptr<FDDocument> &document = task->document();
    document->setIsOutlineInUseBySave(false);
    switch (outcome.result) {
    case TaskOutcome::Written:
        if (task->kind() == Task::Save)
            document->setFileIdentity(outcome.path, outcome.written);
        break;
    case TaskOutcome::Skipped:
        break;
    case TaskOutcome::Stale:
        m_pendingTasks.prepend(task);
        break;
    case TaskOutcome::FileChanged:
        // The edits stay the document's until the user says where they go.
        document->restoreChanges(task->numberOfChanges());
        SaveReport::resolveChangedFile(document, outcome.path, outcome.bytes);
        break;
    case TaskOutcome::Failed:
        fail(task, outcome, false);
        break;
    }
    schedule();
}

void TaskExcutor::fail(const std::shared_ptr<Task> &task, const TaskOutcome &outcome, bool later)
{
    const std::shared_ptr<FDDocument> &document = task->document();
    Logger::warn(
        QStringLiteral("Saving %1 failed: %2").arg(document->fileURL().toString(), outcome.error));
    document->setNumberOfChanges(document->numberOfChanges() + task->numberOfChanges());
    task->addFailure();
    if (task->numberOfFailure() < MaximumAttempts) {
        m_pendingTasks.append(task);
        return;
    }
    if (later)
        MainQueue::async([document, outcome] {
            SaveReport::reportFailure(*document, outcome.error, outcome.bytes);
        });
    else
        SaveReport::reportFailure(*document, outcome.error, outcome.bytes);
}
