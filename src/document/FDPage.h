#pragma once

// The page class of every FDDocument: a page with an identity that survives moves between
// documents and a bookmark flag. Main thread only.

#include <kit/engine/PDFPage.h>

#include <QString>

class FDPage : public PDFPage
{
public:
    FDPage() = default;

    // Made on first reading (upper-case UUID text), then fixed for the life of the object; not
    // stored in the file.
    const QString &uuid() const;

    bool isBookmarked() const { return m_isBookmarked; }
    void setIsBookmarked(bool isBookmarked) { m_isBookmarked = isBookmarked; }

private:
    mutable bool m_isUUIDInited = false;
    mutable QString m_uuid;
    bool m_isBookmarked = false;
};
