#include "PDFSavingService.h"

#include "FDDocument.h"
#include "TaskExcutor.h"

PDFSavingService::PDFSavingService()
    : m_fastExcutor(std::make_unique<TaskExcutor>(
        3, QStringLiteral("FD.SmallFileQueue"), QThread::InheritPriority))
    , m_slowExcutor(
          std::make_unique<TaskExcutor>(1, QStringLiteral("FD.BigFileQueue"), QThread::LowPriority))
{ }

PDFSavingService &PDFSavingService::shared()
{
    // Never destroyed: a write still under way at exit must not find its executor gone.
    static PDFSavingService *const service = new PDFSavingService;
    return *service;
}

void PDFSavingService::start()
{ }

bool PDFSavingService::addTask(const std::shared_ptr<FDDocument> &document)
{
    TaskExcutor &executor = document->isBigFile() ? *m_slowExcutor : *m_fastExcutor;
    return executor.add(document);
}

bool PDFSavingService::addAttributesTask(const std::shared_ptr<FDDocument> &document)
{
    TaskExcutor &executor = document->isBigFile() ? *m_slowExcutor : *m_fastExcutor;
    return executor.add(document, Task::Attributes);
}

std::shared_ptr<FDDocument> PDFSavingService::getDocumentByURL(const QUrl &url) const
{
    if (std::shared_ptr<FDDocument> document = m_fastExcutor->getDocumentByURL(url))
        return document;
    return m_slowExcutor->getDocumentByURL(url);
}

qsizetype PDFSavingService::numberOfTasks() const
{
    return m_fastExcutor->numberOfTasks() + m_slowExcutor->numberOfTasks();
}
