#pragma once

// The base of the rows of controls of a document tab: it holds the tab weakly, makes buttons
// named and explained by their command's title and key, paints the theme's toolbar background
// and redraws its buttons' pictures when the theme changes. Main thread only.

#include <QKeySequence>
#include <QPointer>
#include <QWidget>

class PDFContents;
class QToolButton;

class PDFContentsBar : public QWidget
{
    Q_OBJECT

public:
    explicit PDFContentsBar(PDFContents *contents, QWidget *parent = nullptr);
    ~PDFContentsBar() override;

    PDFContents *contents() const { return m_contents; }
    // "Highlight (Alt+1)": a command's title with its key, as tooltips and accessible names
    // carry it; the title alone without a key.
    static QString titleWithKey(const QString &title, const QKeySequence &key = {});
    // The colour the bar's pictures are drawn in under the current theme.
    static QColor iconColor();

protected:
    QToolButton *makeButton(
        const QString &title, const QKeySequence &key = {}, bool checkable = false);
    // Draws every picture again in the theme's colours.
    virtual void refreshIcons() = 0;
    void paintEvent(QPaintEvent *event) override;
    // Styles the buttons and draws their pictures for the current theme; subclasses call it once
    // their buttons exist, and it runs again at each change of theme.
    void applyTheme();

private:
    QPointer<PDFContents> m_contents;
};
