#pragma once

// The base of the widgets a document tab shows around its views (sidebar, bars, panels): it
// knows its tab weakly and repaints itself when the theme changes. Main thread only.

#include <QPointer>
#include <QWidget>

class PDFContents;

class PDFContentsBar : public QWidget
{
    Q_OBJECT

public:
    explicit PDFContentsBar(PDFContents *contents = nullptr, QWidget *parent = nullptr);
    ~PDFContentsBar() override;

    // The tab the bar belongs to; null once the tab is gone, and handlers then return at once.
    PDFContents *contents() const;
    // A subclass that observes the tab overrides this to move its observers, calling the base.
    virtual void setContents(PDFContents *contents);

protected:
    // Called after the theme changed (and not at construction); the default fills the background
    // with the theme's toolbar colour when the bar paints its own background.
    virtual void onThemeChanged();

private:
    QPointer<PDFContents> m_contents;
};
