#include "FDAnnFreeTextEditor.h"

#include <annotation/PDFAnnotation+XExtensions.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFPage.h>
#include <view/FDPDFView.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTextEdit>

#include <cmath>

namespace {

Qt::Alignment qtAlignment(int alignment)
{
    switch (alignment) {
    case PDFAnnotationFreeText::Right:
        return Qt::AlignRight;
    case PDFAnnotationFreeText::Center:
        return Qt::AlignHCenter;
    case PDFAnnotationFreeText::Justified:
        return Qt::AlignJustify;
    default:
        return Qt::AlignLeft;
    }
}

void setEditing(PDFAnnotation &annotation, bool editing)
{
    setIsEditing(annotation, editing);
}

} // namespace

FDAnnFreeTextEditor::FDAnnFreeTextEditor(const std::shared_ptr<PDFAnnotation> &annotation,
    FDPDFView *pdfView, FDAnnotationEditorDelegate *delegate)
    : FDAnnotationEditor(annotation, pdfView, delegate)
    , m_textField(new QTextEdit)
{
    m_textField->setObjectName(QStringLiteral("annFreeTextField"));
    m_textField->setAcceptRichText(false);
    m_textField->setFrameStyle(QFrame::NoFrame);
    m_textField->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_textField->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_textField->setLineWrapMode(QTextEdit::WidgetWidth);
    m_textField->setTabChangesFocus(false);
    m_textField->document()->setDocumentMargin(2);
    m_textField->hide();
    connect(m_textField, &QTextEdit::textChanged, this, [this] { textDidChange(); });
    m_textField->installEventFilter(this);
}

FDAnnFreeTextEditor::~FDAnnFreeTextEditor()
{
    if (m_isMonitoring)
        qApp->removeEventFilter(this);
    if (const auto annotation = ann(); annotation && m_isObserving)
        annotation->removeObserver(this);
    delete m_textField.data();
}

const QStringList &FDAnnFreeTextEditor::observedKeys()
{
    static const QStringList keys { QStringLiteral("bounds"), QStringLiteral("font"),
        QStringLiteral("fontColor"), QStringLiteral("alignment"), QStringLiteral("color") };
    return keys;
}

void FDAnnFreeTextEditor::beginEditing()
{
    const auto annotation = ann();
    FDPDFView *const view = pdfView();
    if (!annotation || !view || !m_textField)
        return;
    setEditing(*annotation, true);
    // The field shows the text while it is typed; the page's own picture of it would lag
    // behind, one keystroke at a time.
    if (annotation->shouldDisplay() && !m_hidFromPage) {
        m_hidFromPage = true;
        annotation->setShouldDisplay(false);
        view->XPDFView::annotationsChangedOnPage(annotation->page());
    }
    if (!m_isObserving) {
        m_isObserving = true;
        annotation->addObserver(this,
            [this](PDFAnnotation &, const QString &keyPath, const QVariant &, const QVariant &) {
                if (observedKeys().contains(keyPath))
                    style();
            });
    }
    style();
    // In the viewport the field scrolls with the page, as the viewport moves its children.
    if (m_textField->parentWidget() != view->viewport())
        m_textField->setParent(view->viewport());
    m_textField->show();
    m_textField->raise();
    // Page views made later (as pages scroll in) must not cover the field.
    view->viewport()->installEventFilter(this);
    if (QWidget *const pageView = view->pageViewForPage(annotation->page()))
        pageView->update();
    m_textField->setFocus(Qt::OtherFocusReason);
    m_textField->moveCursor(QTextCursor::End);
    if (!m_isMonitoring) {
        m_isMonitoring = true;
        qApp->installEventFilter(this);
    }
    view->viewport()->update();
}

void FDAnnFreeTextEditor::style()
{
    const auto annotation = ann();
    FDPDFView *const view = pdfView();
    if (!annotation || !view || !m_textField)
        return;
    m_isStyling = true;
    const auto *const freeText = dynamic_cast<const PDFAnnotationFreeText *>(annotation.get());
    m_textField->setGeometry(
        view->convertRectFromPage(annotation->bounds(), annotation->page()).toAlignedRect());
    QFont font = freeText ? freeText->font() : m_textField->font();
    // Unscaled: a point of the font is a pixel of the field, as at actual size on the page.
    if (font.pointSizeF() > 0)
        font.setPixelSize(std::max(1, int(std::lround(font.pointSizeF()))));
    m_textField->setFont(font);
    m_textField->document()->setDefaultFont(font);
    QPalette palette = m_textField->palette();
    palette.setColor(QPalette::Text, freeText ? freeText->fontColor() : QColor(Qt::black));
    palette.setColor(QPalette::Base, annotation->color());
    m_textField->setPalette(palette);
    m_textField->viewport()->setAutoFillBackground(annotation->color().alpha() > 0);
    const QString text = annotation->contents();
    if (m_textField->toPlainText() != text) {
        m_textField->setPlainText(text);
        m_textField->moveCursor(QTextCursor::End);
    }
    QTextOption option = m_textField->document()->defaultTextOption();
    option.setAlignment(qtAlignment(freeText ? freeText->alignment() : 0));
    m_textField->document()->setDefaultTextOption(option);
    fitHeight();
    m_isStyling = false;
}

void FDAnnFreeTextEditor::fitHeight()
{
    // The field grows downwards with its lines, so that none scrolls out of sight while typing;
    // it never gets smaller than the box.
    const auto annotation = ann();
    FDPDFView *const view = pdfView();
    if (!annotation || !view || !m_textField)
        return;
    const QRect box
        = view->convertRectFromPage(annotation->bounds(), annotation->page()).toAlignedRect();
    const int needed = int(std::ceil(m_textField->document()->size().height()));
    m_textField->setGeometry(box.adjusted(0, 0, 0, std::max(0, needed - box.height())));
}

void FDAnnFreeTextEditor::textDidChange()
{
    const auto annotation = ann();
    if (!annotation || m_isStyling || !m_textField)
        return;
    const QString text = m_textField->toPlainText();
    if (annotation->contents() != text)
        annotation->setContents(text);
    fitHeight();
}

bool FDAnnFreeTextEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ChildAdded && m_textField && watched == m_textField->parent()) {
        m_textField->raise();
        return false;
    }
    if (watched == m_textField && event->type() == QEvent::KeyPress) {
        auto *const key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Escape) {
            finish();
            return true;
        }
        return false;
    }
    if (event->type() == QEvent::MouseButtonPress && m_isMonitoring && m_textField
        && m_textField->isVisible()) {
        auto *const press = static_cast<QMouseEvent *>(event);
        const QPoint inField = m_textField->mapFromGlobal(press->globalPosition().toPoint());
        // The press goes on to what it was aimed at after the edit ends.
        if (press->button() == Qt::LeftButton && !m_textField->rect().contains(inField))
            finish();
    }
    return false;
}

void FDAnnFreeTextEditor::commit()
{
    finish();
}

void FDAnnFreeTextEditor::discard()
{
    finish();
}

void FDAnnFreeTextEditor::finish()
{
    tellDelegateWillClose();
    const auto annotation = ann();
    if (!annotation)
        return;
    setEditing(*annotation, false);
    if (m_isMonitoring) {
        m_isMonitoring = false;
        qApp->removeEventFilter(this);
    }
    if (m_isObserving) {
        m_isObserving = false;
        annotation->removeObserver(this);
    }
    FDPDFView *const view = pdfView();
    clearTargets();
    if (m_hidFromPage) {
        m_hidFromPage = false;
        annotation->setShouldDisplay(true);
        if (view && annotation->page())
            view->XPDFView::annotationsChangedOnPage(annotation->page());
    }
    if (view && annotation->contents().trimmed().isEmpty())
        view->removeAnnotation(annotation);
    if (m_textField) {
        m_textField->removeEventFilter(this);
        m_textField->hide();
        m_textField->setParent(nullptr);
    }
    if (view) {
        view->viewport()->removeEventFilter(this);
        view->viewport()->update();
        view->setNeedsDisplayForAnnotation(annotation);
        if (QWidget *const pageView = view->pageViewForPage(annotation->page()))
            pageView->update();
    }
}
