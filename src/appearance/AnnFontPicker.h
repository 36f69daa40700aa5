#pragma once

// The font popover of the annotation bar: family ("Default" or one of the system's), style and
// size (from the list or typed). A pick changes the selected free text, or with none the free
// text defaults. Main thread only.

#include "AnnPickerTarget.h"

#include <QFont>
#include <QWidget>

class PDFContents;
class QComboBox;

enum class FDFontStyle : int { regular = 0, bold = 1, italic = 2, boldAndItalic = 3 };

class AnnFontPicker : public QWidget
{
    Q_OBJECT

public:
    static AnnFontPicker &shared();
    // The sizes offered, in points.
    static const QList<int> &fontSizes();

    void setContents(PDFContents *contents) { m_target = AnnPickerTarget(contents); }
    // Shows the selected free text's font, else the stored default name and size.
    void onWillShow();

    void fontNameDidChangeWithName(const QString &name);
    void fontStyleDidChangeWithStyle(FDFontStyle style);
    void fontSizeDidChangeWithSize(int size);
    // The size typed into the combo box; anything but a whole number in range is ignored.
    void onFontSizeEnteredWithCombo(QComboBox *combo);

    QComboBox *fontNamePopupButton() const { return m_fontNamePopupButton; }
    QComboBox *fontStylePopupButton() const { return m_fontStylePopupButton; }
    QComboBox *fontSizeComboBox() const { return m_fontSizeComboBox; }

private:
    AnnFontPicker();
    void applyFont(const QFont &font);
    QFont presentFont() const;

    AnnPickerTarget m_target;
    QComboBox *m_fontNamePopupButton = nullptr;
    QComboBox *m_fontStylePopupButton = nullptr;
    QComboBox *m_fontSizeComboBox = nullptr;
    QString m_family; // empty: "Default"
    FDFontStyle m_style = FDFontStyle::regular;
    int m_size = 12;
    bool m_refreshing = false;
};
