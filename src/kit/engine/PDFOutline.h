#pragma once

// An item of a document's outline tree: a label, an optional destination or action, and ordered
// children it owns. A detached subtree lives on while referenced. Main thread only.

#include <QString>

#include <memory>
#include <vector>

class PDFAction;
class PDFDestination;
class PDFDocument;
namespace OutlineIO {
class Reader;
struct UnreadDestination;
} // namespace OutlineIO

class PDFOutline : public std::enable_shared_from_this<PDFOutline>
{
public:
    PDFOutline() = default;
    virtual ~PDFOutline() = default;

    std::shared_ptr<PDFDocument> document() const; // of the tree's root
    std::shared_ptr<PDFOutline> parent() const;
    int index() const; // position under the parent; 0 for a root

    int numberOfChildren() const;
    std::shared_ptr<PDFOutline> childAtIndex(int index) const; // null out of range
    // Moves the child here from wherever it was; an index out of range appends.
    void insertChild(const std::shared_ptr<PDFOutline> &child, int index);
    void removeFromParent();

    QString label() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }
    bool isOpen() const { return m_isOpen; }
    void setIsOpen(bool open) { m_isOpen = open; }

    std::shared_ptr<PDFDestination> destination() const;
    void setDestination(const std::shared_ptr<PDFDestination> &destination);
    // The explicit action, else a go-to of the destination; null with neither.
    std::shared_ptr<PDFAction> action() const;
    void setAction(const std::shared_ptr<PDFAction> &action) { m_action = action; }

private:
    friend class PDFDocument;
    friend struct PDFDocumentPrivate;
    friend class OutlineIO::Reader;
    std::weak_ptr<PDFOutline> m_parent;
    std::weak_ptr<PDFDocument> m_document; // set on a root by its document
    std::vector<std::shared_ptr<PDFOutline>> m_children;
    QString m_label;
    bool m_isOpen = false;
    mutable std::shared_ptr<PDFDestination> m_destination;
    // The file's destination, matched to a page when first asked for.
    mutable std::shared_ptr<const OutlineIO::UnreadDestination> m_unread;
    std::shared_ptr<PDFAction> m_action;
};
