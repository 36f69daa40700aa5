#include "Task.h"

#include "FDDocument.h"

Task::Task(std::shared_ptr<FDDocument> document)
    : m_URL(document->fileURL())
    , m_document(std::move(document))
    , m_numberOfChanges(m_document->numberOfChanges())
{
    m_document->setNumberOfChanges(0);
}
