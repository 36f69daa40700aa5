#pragma once

// What screen readers see of a PDFView: a document named by its file whose children are the
// pages in sight, each offering its text through QAccessibleTextInterface over the page's text
// layout (characters, words, sentences, lines, a caret of its own and the view's selection).
// Made by Qt's accessibility factory only while an assistive technology listens.

#include <QAccessibleWidget>

#include <memory>

class PDFPage;
class PDFView;

class PDFViewAccessible : public QAccessibleWidget
{
public:
    explicit PDFViewAccessible(PDFView *view);
    ~PDFViewAccessible() override;

    // Installs the factory once; PDFView calls it as it is made.
    static void registerFactory();

    QString text(QAccessible::Text t) const override;
    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;

private:
    PDFView *view() const;
    QAccessibleInterface *pageInterface(const std::shared_ptr<PDFPage> &page) const;

    // Keyed by the page object; forgotten when the page is no longer in the document.
    mutable QHash<const PDFPage *, QAccessible::Id> m_pageIds;
};
