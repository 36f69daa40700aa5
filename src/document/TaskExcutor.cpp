#include "TaskExcutor.h"

#include "AtomicFileWriter.h"
#include "Common.h"
#include "FDDocument.h"
#include "FDError.h"
#include "Logger.h"
#include "Task.h"

#include <app/Alert.h>
#include <kit/base/MainQueue.h>

#include <QFileInfo>

namespace {

constexpr int MaximumAttempts = 3;

// The engine reads the bytes back before they replace a file, so a faulty serialisation can
// never destroy what the user has on disk.
QString checkParses(const QByteArray &bytes)
{
    const auto probe = std::make_shared<PDFDocument>();
    if (probe->initWithData(bytes))
        return {};
    return QStringLiteral("The saved bytes are not a readable PDF (%1).").arg(probe->errorString());
}

} // namespace

TaskExcutor::TaskExcutor(int concurrency, const QString &label, QThread::Priority priority)
    : m_concurrency(concurrency)
{
    m_queue.setObjectName(label);
    m_queue.setMaxThreadCount(concurrency);
    m_queue.setThreadPriority(priority);
}

bool TaskExcutor::add(const std::shared_ptr<FDDocument> &document)
{
    const QUrl url = document->fileURL();
    if (url.isEmpty())
        return false;
    m_pendingTasks.removeIf(
        [&url](const std::shared_ptr<Task> &task) { return task->URL() == url; });
    m_pendingTasks.append(std::make_shared<Task>(document));
    schedule();
    return true;
}

std::shared_ptr<FDDocument> TaskExcutor::getDocumentByURL(const QUrl &url) const
{
    for (const RefArray<Task> *tasks : { &m_pendingTasks, &m_runningTasks }) {
        for (const std::shared_ptr<Task> &task : *tasks) {
            if (task->URL() == url)
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
        document->attachBookmarksToOutlineTree();
        if (document->pdfView()) {
            // The user may go on editing: the bytes are fixed now, on the main thread.
            QByteArray bytes = document->dataRepresentation();
            if (bytes.isEmpty()) {
                Logger::warn(QStringLiteral("Saving %1: no bytes (%2)")
                                 .arg(url.toString(), document->errorString()));
                document->detachBookmarksFromOutlineTree();
                continue;
            }
            m_runningTasks.append(head);
            postWrite(head, bytes);
            document->detachBookmarksFromOutlineTree();
        } else {
            // Nobody looks at a detached document: its bytes are made on the queue, from an
            // outline that a view taking the document back must leave alone until the end.
            document->setIsOutlineInUseBySave(true);
            m_runningTasks.append(head);
            postWrite(head, QByteArray());
        }
    }
}

void TaskExcutor::postWrite(std::shared_ptr<Task> task, const QByteArray &bytes)
{
    m_queue.start([this, task = std::move(task), bytes]() mutable {
        const std::shared_ptr<FDDocument> &document = task->document();
        QByteArray data = bytes;
        if (data.isNull()) {
            data = document->dataRepresentation();
            if (data.isEmpty()) {
                // The task stays among the running ones, as the scheduler expects.
                Logger::warn(QStringLiteral("Saving %1: no bytes (%2)")
                                 .arg(task->URL().toString(), document->errorString()));
                return;
            }
        }
        const QUrl url = document->fileURL();
        if (url.isEmpty())
            return;
        QString error = checkParses(data);
        if (error.isEmpty())
            error = AtomicFileWriter::write(url.toLocalFile(), data);
        if (error.isEmpty()) {
            const std::optional<QList<FDXAttrItem>> items = document->xattrItemsToSave();
            for (const FDXAttrItem &item : items.value_or(QList<FDXAttrItem>()))
                FDSetXAttr(url, item.name, item.data);
        }
        // The task, and with it perhaps the last hold on the document, is released there.
        MainQueue::sync([this, &task, &error] { finish(std::move(task), error); });
    });
}

void TaskExcutor::finish(std::shared_ptr<Task> task, const QString &error)
{
    m_runningTasks.remove(task);
    task->document()->setIsOutlineInUseBySave(false);
    if (error.isEmpty()) {
        schedule();
        return;
    }
    const std::shared_ptr<FDDocument> &document = task->document();
    Logger::warn(QStringLiteral("Saving %1 failed: %2").arg(document->fileURL().toString(), error));
    document->setNumberOfChanges(document->numberOfChanges() + task->numberOfChanges());
    task->addFailure();
    if (task->numberOfFailure() < MaximumAttempts) {
        m_pendingTasks.append(task);
    } else {
        const QString name = QFileInfo(document->fileURL().path()).fileName();
        Alert::runModal(Alert::requestWithError(FDError::writeFileErrorWithLocalizedDescription(
            QStringLiteral("The document “%1” could not be saved. %2").arg(name, error))));
    }
    schedule();
}
