#pragma once

// The colour popover of the annotation bar: one column of named swatches for the left colour
// (the stroke, or a free text's text) and, for shapes and free text, one for the right colour
// (the fill, or the background), each with a "more colours" panel. A pick changes the selected
// annotation, or with none the default of the tab's tool. Main thread only.

#include "AnnPickerTarget.h"

#include <QColor>
#include <QIcon>
#include <QList>
#include <QPair>
#include <QPointer>
#include <QWidget>

class PDFContents;
class QColorDialog;
class QGridLayout;
class QLabel;
class QToolButton;

class AnnColorPicker : public QWidget
{
    Q_OBJECT

public:
    static AnnColorPicker &shared();

    // The process-wide named colours, in their order ("Clear" first); built once.
    static const QList<QPair<QString, QColor>> &namedColors();
    // A 20 by 20 swatch of the colour, with a tick when picked; sharp at a ratio of 2.
    static QIcon swatchImage(const QColor &color, bool picked);
    static bool isClear(const QColor &color) { return !color.isValid() || color.alpha() == 0; }

    // The tab the next picks act on; set by the bar before it shows the picker.
    void setContents(PDFContents *contents) { m_target = AnnPickerTarget(contents); }
    // Reads the present colours and the case (labels, one or two columns, width 80 or 161).
    void onWillShow();

    void leftColorDidChangeWithColor(const QColor &color) { updateColor(color, true); }
    void rightColorDidChangeWithColor(const QColor &color) { updateColor(color, false); }
    void updateColor(const QColor &color, bool isLeft);
    void onColorPanelUpdateLeftWithPanel(QColorDialog *panel);
    void onColorPanelUpdateRightWithPanel(QColorDialog *panel);

    QLabel *leftLabelTextField() const { return m_leftLabelTextField; }
    QLabel *rightLabelTextField() const { return m_rightLabelTextField; }
    QToolButton *leftPickedColorButton() const { return m_leftPickedColorButton; }
    QToolButton *rightPickedColorButton() const { return m_rightPickedColorButton; }
    // The swatch of a named colour on one side; null for an unknown name.
    QToolButton *swatchButton(const QString &name, bool isLeft) const;
    QToolButton *moreColorsButton(bool isLeft) const;
    QColor leftColor() const { return m_leftColor; }
    QColor rightColor() const { return m_rightColor; }
    bool hasRightColumn() const { return m_hasRight; }
    // The shared colour panel ("more colours"), made on first use.
    static QColorDialog &colorPanel();

private:
    AnnColorPicker();
    QWidget *makeColumn(bool isLeft);
    void refreshSwatches();
    void openColorPanel(bool isLeft);

    AnnPickerTarget m_target;
    QLabel *m_leftLabelTextField = nullptr;
    QLabel *m_rightLabelTextField = nullptr;
    QToolButton *m_leftPickedColorButton = nullptr;
    QToolButton *m_rightPickedColorButton = nullptr;
    QToolButton *m_leftMoreButton = nullptr;
    QToolButton *m_rightMoreButton = nullptr;
    QWidget *m_rightColumn = nullptr;
    QWidget *m_divider = nullptr;
    QList<QToolButton *> m_leftSwatches;
    QList<QToolButton *> m_rightSwatches;
    QColor m_leftColor;
    QColor m_rightColor;
    bool m_hasRight = false;
};
