#pragma once

// What a pick of the annotation pickers acts on: the selected annotation of the tab's selected
// view when there is one, otherwise the defaults of the tab's tool, under the keys that tool
// has. Main thread only.

#include <QPointer>
#include <QString>

#include <memory>

class FDPDFView;
class PDFAnnotation;
class PDFContents;

class AnnPickerTarget
{
public:
    AnnPickerTarget() = default;
    explicit AnnPickerTarget(PDFContents *contents);

    PDFContents *contents() const { return m_contents; }
    // Null without a tab or a view in front; a pick is then dropped.
    FDPDFView *view() const;
    std::shared_ptr<PDFAnnotation> selectedAnn() const;
    // The tab's tool; none without a tab.
    int toolMode() const;
    // The tool the bar shows: the selected annotation's, else the tab's.
    int effectiveToolMode() const;

    // The default keys a pick without a selection writes, by tool; empty where the tool has none.
    static QString leftColorKey(int toolMode);
    static QString rightColorKey(int toolMode);
    static QString lineWidthKey(int toolMode);
    static QString lineTypeKey(int toolMode);
    static QString arrowTypeKey(int toolMode);

private:
    QPointer<PDFContents> m_contents;
};
