#include "Task.h"

#include "FDDocument.h"

Task::Task(std::shared_ptr<FDDocument> document, Kind kind)
    : m_URL(document->fileURL())
    , m_document(std::move(document))
    , m_kind(kind)
{
    if (m_kind != Save)
        return;
    m_numberOfChanges = m_document->numberOfChanges();
    m_document->setNumberOfChanges(0);
}
