#pragma once

// Back and forward lists of the places a view jumped from. An entry holds its page weakly: a
// page that left the document is skipped. Main thread only.

#include <QPointF>

#include <memory>
#include <vector>

class PDFPage;

class PDFHistory
{
public:
    struct Entry
    {
        std::weak_ptr<PDFPage> page;
        QPointF point; // page space
        double scale = 0;
    };

    // Before a jump: the place being left joins the back list and the forward list empties.
    void recordJump(const Entry &from);
    bool canGoBack() const;
    bool canGoForward() const;
    // Moves one step; current is where the view is now and joins the opposite list. Null
    // page when there is nowhere to go.
    Entry goBack(const Entry &current);
    Entry goForward(const Entry &current);
    void clear();

private:
    static void dropDead(std::vector<Entry> &list);
    static bool samePlace(const Entry &a, const Entry &b);

    std::vector<Entry> m_back;
    std::vector<Entry> m_forward;
};
