#pragma once

// The data of pages dragged out of the pages editor: the page marker for drops inside the
// application, and a file list whose one file, a PDF of the dragged pages in the "Promises"
// folder of the cache folder, is written only when a receiver asks for the list.

#include <QMimeData>

#include <functional>

class PDFPagePromiseMimeData : public QMimeData
{
    Q_OBJECT

public:
    // Writes the pages into the folder and answers the file's path; empty when it can't.
    using Writer = std::function<QString(const QString &folder)>;

    explicit PDFPagePromiseMimeData(Writer writer);

    // "Promises" in the cache folder, made when missing; written files stay there.
    static QString promisesFolder();

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override;
    // The file written for a receiver; empty while none asked, or when writing failed.
    QString writtenPath() const { return m_path; }

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    Writer m_writer;
    mutable QString m_path;
    mutable bool m_asked = false;
};
