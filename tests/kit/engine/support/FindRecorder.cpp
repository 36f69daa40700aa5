#include "FindRecorder.h"

#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QTest>

FindRecorder::FindRecorder(const std::shared_ptr<PDFDocument> &document)
    : m_document(document)
{
    auto &center = NotificationCenter::defaultCenter();
    center.addObserver(
        this, PDFDocument::DidFindMatchNotification, document.get(), [this](const Notification &n) {
            const auto selection = n.userInfo.value(PDFDocument::FoundSelectionKey)
                                       .value<std::shared_ptr<PDFSelection>>();
            hits.append(selection);
            if (onHit)
                onHit(selection);
        });
    center.addObserver(this, PDFDocument::DidEndFindNotification, document.get(),
        [this](const Notification &) { ++ends; });
}

FindRecorder::~FindRecorder()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

QList<int> FindRecorder::pages() const
{
    QList<int> list;
    for (const auto &hit : hits)
        list.append(m_document->indexForPage(hit->pages().front()));
    return list;
}

QStringList FindRecorder::strings() const
{
    QStringList list;
    for (const auto &hit : hits)
        list.append(hit->string());
    return list;
}

QStringList FindRecorder::summary() const
{
    QStringList lines;
    const QList<int> indexes = pages();
    for (qsizetype i = 0; i < hits.size(); ++i)
        lines.append(QString::number(indexes[i]) + u':' + hits[i]->string());
    return lines;
}

bool FindRecorder::waitForEnd(int timeoutMs) const
{
    return QTest::qWaitFor([this] { return ends > 0; }, timeoutMs);
}
