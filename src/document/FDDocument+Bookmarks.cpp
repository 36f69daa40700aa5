// FDDocument's bookmarks: the sorted list, its notifications, the hidden outline branch the
// list is saved in, and the migration from the legacy extended attribute.

#include "FDDocument.h"

#include "Common.h"
#include "FDBookmark.h"
#include "FDPage.h"
#include "PDFPage+XExtensions.h"
#include "PDFSavingService.h"

#include <kit/base/Archiver.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFOutline.h>
#include <navigation/PDFOutline+XExtensions.h>

#include <QVariantMap>

const QString FDDocument::BookmarkDidAddNotification = QStringLiteral("PDFDocument_BookmarkDidAdd");
const QString FDDocument::BookmarkDidRemoveNotification
    = QStringLiteral("PDFDocument_BookmarkDidRemove");
const QString FDDocument::BookmarkDidChangeNotification
    = QStringLiteral("PDFDocument_BookmarkDidChange");
const QString FDDocument::BookmarksRootLabel = QStringLiteral("My Bookmarks");
const QString FDDocument::LegacyBookmarksAttribute = QStringLiteral("com.brimbook.bookmarks");
const QString FDDocument::MigratedBookmarksAttribute
    = QStringLiteral("com.brimbook.bookmarks.migrated");

namespace {

std::shared_ptr<FDBookmark> makeBookmark(const QString &title, const std::shared_ptr<FDPage> &page)
{
    auto bookmark = std::make_shared<FDBookmark>();
    bookmark->initWithTitle(title, page);
    return bookmark;
}

// The entry's decimal page number, or -1 when the entry lacks one.
int legacyPageIndex(const QVariantMap &entry)
{
    const QVariant value = entry.value(QStringLiteral("page"));
    if (value.typeId() != QMetaType::QString)
        return -1;
    bool ok = false;
    const int index = value.toString().toInt(&ok, 10);
    return ok ? index : -1;
}

} // namespace

void FDDocument::setBookmarks(const QList<std::shared_ptr<FDBookmark>> &bookmarks)
{
    m_bookmarks = bookmarks;
}

bool FDDocument::isBookmarksRootExisting() const
{
    const auto root = outlineRoot();
    if (!root || root->numberOfChildren() == 0)
        return false;
    return root->childAtIndex(0)->label() == BookmarksRootLabel;
}

std::shared_ptr<PDFOutline> FDDocument::bookmarksRoot()
{
    if (isBookmarksRootExisting())
        return outlineRoot()->childAtIndex(0);
    if (!outlineRoot())
        setOutlineRoot(std::make_shared<PDFOutline>());
    auto root = std::make_shared<PDFOutline>();
    root->setLabel(BookmarksRootLabel);
    outlineRoot()->insertChild(root, 0);
    return root;
}

void FDDocument::loadBookmarks()
{
    m_bookmarks.clear();
    loadLegacyBookmarks();
    if (isBookmarksRootExisting()) {
        const auto root = bookmarksRoot();
        for (int index = 0; index < root->numberOfChildren(); ++index) {
            const auto item = root->childAtIndex(index);
            const auto target = std::dynamic_pointer_cast<FDPage>(page(*item));
            if (item->label().isEmpty() || !target)
                continue;
            m_bookmarks.append(makeBookmark(item->label(), target));
            target->setIsBookmarked(true);
        }
    }
    // A worker may be reading the tree for the save of a closed tab: the root goes when it ends.
    if (m_isOutlineInUseBySave)
        m_isDetachPutOff = true;
    else
        detachBookmarksFromOutlineTree();
}

void FDDocument::loadLegacyBookmarks()
{
    const QUrl url = fileURL();
    if (url.isEmpty())
        return;
    const std::optional<QByteArray> bytes = FDGetXAttr(url, LegacyBookmarksAttribute);
    if (!bytes)
        return;
    const QVariant archived = Archiver::unarchive(*bytes);
    if (archived.typeId() != QMetaType::QVariantList)
        return;
    const QVariantList entries = archived.toList();
    for (const QVariant &entry : entries) {
        if (entry.typeId() != QMetaType::QVariantMap)
            return;
    }
    bool migrated = false;
    for (const QVariant &value : entries) {
        const QVariantMap entry = value.toMap();
        const QVariant name = entry.value(QStringLiteral("name"));
        const int index = legacyPageIndex(entry);
        if (name.typeId() != QMetaType::QString || index < 0)
            continue;
        const auto target = std::dynamic_pointer_cast<FDPage>(pageAtIndex(index));
        if (!target)
            continue;
        // The ribbon shows from the next load on, when the bookmark comes from the outline.
        m_bookmarks.append(makeBookmark(name.toString(), target));
        migrated = true;
    }
    FDRemoveXAttr(url, LegacyBookmarksAttribute);
    FDSetXAttr(url, MigratedBookmarksAttribute, *bytes);
    if (!migrated)
        return;
    setNumberOfPageChanges(numberOfPageChanges() + 1);
    // The migration reaches the file without the user's doing.
    MainQueue::async([weak = weak_from_this()] {
        if (const auto document = std::static_pointer_cast<FDDocument>(weak.lock()))
            PDFSavingService::shared().addTask(document);
    });
}

void FDDocument::attachBookmarksToOutlineTree()
{
    if (isBookmarksRootExisting() && bookmarksRoot() == m_attachedRoot.lock())
        detachBookmarksFromOutlineTree();
    const auto root = bookmarksRoot();
    int place = 0;
    for (qsizetype index = 0; index < m_bookmarks.size(); ++index) {
        const FDBookmark &bookmark = *m_bookmarks.at(index);
        // A page deleted this turn: its bookmark is on its way out of the list.
        if (!bookmark.page() || bookmark.page()->document().get() != this)
            continue;
        auto item = std::make_shared<PDFOutline>();
        item->setLabel(bookmark.title());
        item->setDestination(std::make_shared<PDFDestination>(bookmark.page(), QPointF(0, 0)));
        root->insertChild(item, place++);
    }
    m_attachedRoot = root;
}

void FDDocument::detachBookmarksFromOutlineTree()
{
    if (isBookmarksRootExisting())
        bookmarksRoot()->removeFromParent();
}

void FDDocument::setIsOutlineInUseBySave(bool inUse)
{
    m_isOutlineInUseBySave = inUse;
    if (inUse || !m_isDetachPutOff)
        return;
    m_isDetachPutOff = false;
    detachBookmarksFromOutlineTree();
}

std::shared_ptr<FDBookmark> FDDocument::bookmarkFor(const std::shared_ptr<PDFPage> &page) const
{
    if (!page)
        return nullptr;
    const int index = pageIndex(*page);
    for (const std::shared_ptr<FDBookmark> &bookmark : m_bookmarks) {
        if (pageIndex(*bookmark->page()) == index)
            return bookmark;
    }
    return nullptr;
}

bool FDDocument::addBookmarkWith(const std::shared_ptr<FDPage> &page, const QString &title)
{
    if (!page)
        return false;
    const int index = pageIndex(*page);
    qsizetype place = m_bookmarks.size();
    for (qsizetype at = 0; at < m_bookmarks.size(); ++at) {
        const int other = pageIndex(*m_bookmarks.at(at)->page());
        if (other == index)
            return false;
        if (other > index) {
            place = at;
            break;
        }
    }
    page->setIsBookmarked(true);
    const auto bookmark = makeBookmark(title, page);
    m_bookmarks.insert(place, bookmark);
    postBookmarkChange(BookmarkDidAddNotification, place, bookmark);
    setNumberOfPageChanges(numberOfPageChanges() + 1);
    return true;
}

void FDDocument::removeBookmark(const std::shared_ptr<FDBookmark> &bookmark)
{
    // The argument may be the list's own element, which the removal drops.
    const std::shared_ptr<FDBookmark> removed = bookmark;
    const qsizetype place = m_bookmarks.indexOf(removed);
    if (!removed || place < 0)
        return;
    if (removed->page())
        removed->page()->setIsBookmarked(false);
    m_bookmarks.removeAt(place);
    postBookmarkChange(BookmarkDidRemoveNotification, place, removed);
    setNumberOfPageChanges(numberOfPageChanges() + 1);
}

void FDDocument::removeBookmarksOfRemovedPages()
{
    for (qsizetype index = m_bookmarks.size() - 1; index >= 0; --index) {
        const std::shared_ptr<FDBookmark> bookmark = m_bookmarks.at(index);
        if (!bookmark->page() || bookmark->page()->document().get() != this)
            removeBookmark(bookmark);
    }
}

void FDDocument::updateBookmark(const std::shared_ptr<FDBookmark> &bookmark, const QString &title)
{
    const qsizetype place = m_bookmarks.indexOf(bookmark);
    if (!bookmark || place < 0)
        return;
    bookmark->setTitle(title);
    postBookmarkChange(BookmarkDidChangeNotification, place, bookmark);
    setNumberOfPageChanges(numberOfPageChanges() + 1);
}

void FDDocument::postBookmarkChange(
    const QString &name, qsizetype index, const std::shared_ptr<FDBookmark> &bookmark) const
{
    const QVariantMap userInfo { { QStringLiteral("Index"), int(index) },
        { QStringLiteral("Bookmark"), QVariant::fromValue(bookmark) } };
    NotificationCenter::defaultCenter().post(name, pdfView(), userInfo);
}
