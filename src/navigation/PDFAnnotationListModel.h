#pragma once

// The annotation list's rows: a header for each page that has annotations, in page order, each
// followed by its annotations. It changes row by row as annotations come and go.
// Main thread only.

#include <QAbstractListModel>
#include <QDateTime>
#include <QLocale>

#include <memory>
#include <vector>

class PDFAnnotation;
class PDFDocument;
class PDFPage;

class PDFAnnotationListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        IsGroupRole = Qt::UserRole + 1,
        PageNumberRole, // counted from 1, on header rows
        AuthorRole,
        DateRole,
        ColorRole, // the swatch; a free text's font colour
        RowKeyRole, // a number that stays with the row's annotation or page while rows move
    };

    // In US English (and the C locale) "MM/dd/YY" with YY the ISO week-based year, as the
    // design's pattern reads; in any other locale the locale's own short date.
    static QString formatDate(const QDateTime &date, const QLocale &locale = QLocale());

    explicit PDFAnnotationListModel(QObject *parent = nullptr);

    // leaveOut: an annotation just added, which add() then puts at the head of its group.
    void rebuild(const std::shared_ptr<PDFDocument> &document,
        const std::shared_ptr<PDFAnnotation> &leaveOut = nullptr);
    // The new annotation goes first under its page's header; a new header goes in page order.
    // Answers the annotation's row.
    int add(const std::shared_ptr<PDFAnnotation> &annotation);
    // A group's last annotation takes its header with it.
    void remove(const std::shared_ptr<PDFAnnotation> &annotation);
    void change(const std::shared_ptr<PDFAnnotation> &annotation);

    int annCount() const { return m_annCount; }
    int rowOf(const std::shared_ptr<PDFAnnotation> &annotation) const;
    std::shared_ptr<PDFAnnotation> annotationAt(int row) const;
    bool isGroupRow(int row) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Item
    {
        std::shared_ptr<PDFPage> page;
        std::shared_ptr<PDFAnnotation> annotation;
        int pageIndex = -1;
    };

    std::weak_ptr<PDFDocument> m_document;
    std::vector<Item> m_items;
    int m_annCount = 0;
};
