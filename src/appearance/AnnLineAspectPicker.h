#pragma once

// The line popover of the annotation bar: width 1 to 10, solid or dashed, and for lines the
// arrows (none, both, end, start). A pick edits the selected annotation's border in place (and a
// line's ends), or with none the defaults of the tab's tool. Main thread only.

#include "AnnPickerTarget.h"

#include <QImage>
#include <QList>
#include <QWidget>

#include <functional>

class PDFContents;
class QLabel;
class QToolButton;

// A sample of a line aspect, 70 by 14 on clear, inked in color: a line of the width (dashed 12
// on 8 off for type 1) when the type is dashed or there is no arrow, else a filled arrow shape of
// that height (which must be even), with a tick at the right when picked.
QImage FDCreateLineAspectSampleImage(const QString &name, int lineType, int arrowType, bool tick,
    double lineHeight, const QColor &color, double devicePixelRatio = 2.0);

class AnnLineAspectPicker : public QWidget
{
    Q_OBJECT

public:
    static AnnLineAspectPicker &shared();

    void setContents(PDFContents *contents) { m_target = AnnPickerTarget(contents); }
    // Reads width, type and arrows of the selected annotation or of the tool's defaults, and
    // enables the arrows only for a line.
    void onWillShow();

    void lineWidthDidChangeWithWidth(int width);
    void lineTypeDidChangeWithType(int type);
    void arrowTypeDidChangeWithArrow(int arrow);

    QLabel *arrowLabel() const { return m_arrowLabel; }
    const QList<QToolButton *> &widthButtons() const { return m_widthButtons; }
    const QList<QToolButton *> &typeButtons() const { return m_typeButtons; }
    const QList<QToolButton *> &arrowButtons() const { return m_arrowButtons; }
    int widthIndex() const { return m_widthIndex; }
    int typeIndex() const { return m_typeIndex; }
    int arrowIndex() const { return m_arrowIndex; }

private:
    AnnLineAspectPicker();
    void refreshImages();
    void placeGroup(QList<QToolButton *> &buttons, int count, double x, double top,
        const std::function<void(int)> &pick);

    AnnPickerTarget m_target;
    QLabel *m_arrowLabel = nullptr;
    QList<QLabel *> m_labels;
    QList<QToolButton *> m_widthButtons;
    QList<QToolButton *> m_typeButtons;
    QList<QToolButton *> m_arrowButtons;
    int m_widthIndex = 0;
    int m_typeIndex = 0;
    int m_arrowIndex = 0;
};
