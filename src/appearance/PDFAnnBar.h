#pragma once

// The annotation bar of a document tab: one toggle per tool and the buttons of the colour, font
// and line pickers, enabled for what the effective tool (the selected annotation's, else the
// tab's) can take. Main thread only.

#include "PDFContentsBar.h"

#include <QMap>
#include <QPointer>
#include <QToolButton>

class FDPDFView;

class PDFAnnBar : public PDFContentsBar
{
    Q_OBJECT

public:
    explicit PDFAnnBar(PDFContents *contents, QWidget *parent = nullptr);

    // Marks the effective tool's button and updates the picker buttons.
    void update();
    void updateAnnPickerButtonsWithToolMode(int toolMode);
    void onAnnButtonClickedWithButton(QToolButton *button);
    void onAnnFontButtonClickedWithButton(QToolButton *button);
    void onAnnColorButtonClickedWithButton(QToolButton *button);
    void onAnnLineAspectButtonClickedWithButton(QToolButton *button);
    void onSelectedAnnotationChanged();
    void onToolModeChanged();

    QToolButton *lastOnAnnButton() const { return m_lastOnAnnButton; }
    const QMap<int, QToolButton *> &annButtons() const { return m_annButtons; }
    QToolButton *selectBtn() const { return m_annButtons.value(0); }
    QToolButton *annButton(int toolMode) const { return m_annButtons.value(toolMode); }
    QToolButton *fontBtn() const { return m_fontBtn; }
    QToolButton *colorBtn() const { return m_colorBtn; }
    QToolButton *aspectBtn() const { return m_aspectBtn; }

protected:
    void refreshIcons() override;
    void showEvent(QShowEvent *event) override;

private:
    void addObservers();
    void observeSelectedView();
    int effectiveToolMode() const;

    QPointer<QToolButton> m_lastOnAnnButton;
    QMap<int, QToolButton *> m_annButtons;
    QToolButton *m_fontBtn = nullptr;
    QToolButton *m_colorBtn = nullptr;
    QToolButton *m_aspectBtn = nullptr;
    QPointer<FDPDFView> m_observedView;
};
