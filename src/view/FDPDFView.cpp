#include "FDPDFView.h"

#include "QKOverlayView.h"

#include <app/Alert.h>
#include <app/FDDefaults.h>
#include <app/FDRecentDocuments.h>
#include <app/PDFWindowController.h>
#include <appearance/FDTheme.h>
#include <appearance/FDThemeProvider.h>
#include <document/Common.h>
#include <document/FDDocument.h>
#include <document/FDDocumentDelegate.h>
#include <document/PDFSavingService.h>
#include <kit/base/Archiver.h>
#include <kit/base/MainQueue.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocumentPrefetch.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>

#include <QPainter>
#include <QPointer>
#include <QRegularExpression>
#include <QScrollBar>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

const QString FDPDFView::URLDidChangeNotification = QStringLiteral("PDFView_URLDidChange");
const QString FDPDFView::PageNavigatorVisibilityDidChangeNotification
    = QStringLiteral("PDFView_PageNavigatorVisibilityDidChange");
const QString FDPDFView::DocumentDidFailToOpenNotification
    = QStringLiteral("PDFView_DocumentDidFailToOpen");
const QString FDPDFView::LastPositionAttributeName
    = QStringLiteral("com.Scrollwick.PDFView.LastPosition");

namespace {

const QString kDestination = QStringLiteral("Destination");
const QString kScaleMode = QStringLiteral("ScaleMode");
const QString kScaleFactor = QStringLiteral("ScaleFactor");
const QString kDisplayMode = QStringLiteral("DisplayMode");

bool isInteger(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

bool isNumber(const QVariant &value)
{
    const int type = value.metaType().id();
    return isInteger(value) || type == QMetaType::Double || type == QMetaType::Float;
}

// The numbers of a stored destination: a piece counts only when it is a whole, plain number.
QList<float> parseDestination(const QString &text)
{
    QList<float> numbers;
    const QStringList pieces = text.split(QLatin1Char(','));
    for (const QString &piece : pieces) {
        const bool plain = std::all_of(piece.begin(), piece.end(),
            [](QChar c) { return c.unicode() <= 0x7F && !c.isSpace(); });
        bool ok = false;
        const float value = piece.toFloat(&ok);
        if (plain && ok)
            numbers.append(value);
    }
    return numbers;
}

QString decodedURLText(const QUrl &url)
{
    const QString absolute = url.toString(QUrl::FullyEncoded);
    const QString decoded = QUrl::fromPercentEncoding(absolute.toUtf8());
    return decoded.isEmpty() ? absolute : decoded;
}

} // namespace

// Speaks for the view to its document: names the view, so that the document can point back, and
// gives annotations read from the file the application's classes.
class FDPDFView::DocumentDelegate : public FDDocumentDelegate
{
public:
    explicit DocumentDelegate(FDPDFView *view)
        : m_view(view)
    { }
    QObject *pdfView() const override { return m_view.data(); }
    PDFAnnotationFactory classForAnnotationClass(const QString &type) const override
    {
        return FDPDFView::classForAnnotationClass(type);
    }

private:
    QPointer<FDPDFView> m_view;
};

FDPDFView::FDPDFView(QWidget *parent)
    : XPDFView(parent)
    , m_documentDelegate(std::make_shared<DocumentDelegate>(this))
{
    NotificationCenter::defaultCenter().addObserver(
        this, ScaleChangedNotification, this, [this](const Notification &) { onScaleChanged(); });
    NotificationCenter::qkCenter().addObserver(this, FDThemeProvider::ThemeDidChangeNotification,
        nullptr, [this](const Notification &) { onThemeChanged(); });
    onThemeChanged();
    // Start-up measurements (instruction counts, profiles) end the process at its first sharp
    // screen, leaving out the teardown.
    if (qEnvironmentVariableIsSet("FOLIDOC_EXIT_AFTER_FIRST_PAINT")) {
        connect(this, &PDFView::visibleAreaRendered, this, [this] {
            viewport()->repaint();
            std::fflush(nullptr);
            std::_Exit(0);
        });
    }
}

FDPDFView::~FDPDFView()
{
    notePendingRecent();
    NotificationCenter::defaultCenter().removeObserver(this);
    NotificationCenter::qkCenter().removeObserver(this);
}

std::shared_ptr<FDDocument> FDPDFView::fdDocument() const
{
    return std::dynamic_pointer_cast<FDDocument>(document());
}

void FDPDFView::loadDocument(const QUrl &url)
{
    if (url.isEmpty())
        m_pendingNewDocument = true;
    else
        m_pendingURL = url;
    runLoadStep();
    NotificationCenter::defaultCenter().post(URLDidChangeNotification, this);
}

void FDPDFView::showEvent(QShowEvent *event)
{
    XPDFView::showEvent(event);
    onThemeChanged();
    // A load that failed keeps isLoading set, so that showing the tab again does not repeat it.
    if (m_isLoading || (!m_pendingNewDocument && m_pendingURL.isEmpty()))
        return;
    // A window showing for the first time goes on screen before the document is read, which
    // for a long one takes longer than everything else the window needs. The view counts as
    // loading meanwhile.
    // A file read ahead meanwhile is taken at once: its pages then render while the window
    // paints for the first time.
    const QWindow *const handle = window()->windowHandle();
    const QUrl file = m_pendingURL.adjusted(QUrl::RemoveFragment);
    if ((handle && handle->isExposed())
        || (file.isLocalFile() && PDFDocumentPrefetch::isReadToTake(file.toLocalFile()))) {
        runLoadStep();
        if (document())
            requestTilesNow();
        return;
    }
    m_isLoading = true;
    m_loadQueued = true;
    MainQueue::async(this, [this] {
        if (m_loadQueued)
            runLoadStep();
    });
}

void FDPDFView::runLoadStep()
{
    // A load asked for now stands in for one queued at the showing.
    if (m_loadQueued) {
        m_loadQueued = false;
        m_isLoading = false;
    }
    // Nothing is read before the view shows in a window: a tab in the background waits.
    if (!isVisible())
        return;
    std::shared_ptr<FDDocument> loaded;
    int askedPage = -1;
    if (m_pendingNewDocument) {
        m_isLoading = true;
        loaded = std::make_shared<FDDocument>();
        loaded->initWithURL(QUrl(), m_documentDelegate);
    } else {
        if (m_pendingURL.isEmpty())
            return;
        m_isLoading = true;
        const QUrl requested = m_pendingURL;
        const QUrl fileURL = requested.adjusted(QUrl::RemoveFragment);
        // A file being read ahead is opened once the reading, its first page's fonts included,
        // has ended: taking it sooner would stop that reading and leave the rest to the first
        // render. The view counts as loading meanwhile, and the window paints without waiting.
        if (!m_waitedForReadAhead && fileURL.isLocalFile()) {
            m_waitedForReadAhead = true;
            const auto load = [this] { runLoadStep(); };
            if (PDFDocumentPrefetch::notifyWhenRead(fileURL.toLocalFile(), this, load)) {
                MainQueue::asyncAfter(readAheadLongestWait, this, load);
                return;
            }
        }
        // A document still being written is taken back alive, not read from a file in writing.
        loaded = PDFSavingService::shared().getDocumentByURL(fileURL);
        if (loaded) {
            loaded->resetWith(m_documentDelegate);
        } else {
            loaded = std::make_shared<FDDocument>();
            if (!loaded->initWithURL(fileURL, m_documentDelegate)) {
                const QString text = decodedURLText(requested);
                MainQueue::async([text] {
                    AlertRequest request;
                    request.messageText = tr("Can't read file: \"%1\"").arg(text);
                    Alert::runModal(request);
                });
                NotificationCenter::defaultCenter().post(DocumentDidFailToOpenNotification, this,
                    { { QStringLiteral("URL"), fileURL } });
                return;
            }
        }
        if (FDDefaults::disableHistory() != 1)
            noteRecentAfterFirstPaint(fileURL);
        static const QRegularExpression decimal(QStringLiteral("^[0-9]+$"));
        const QString fragment = requested.fragment();
        if (decimal.match(fragment).hasMatch()) {
            bool ok = false;
            const int index = fragment.toInt(&ok);
            if (ok)
                askedPage = index;
        }
    }
    m_pendingURL = QUrl();
    m_pendingNewDocument = false;
    setAutoScales(false);
    setDocument(loaded);
    if (loaded->isLocked()) {
        // The rest waits for the password field; the page asked for is kept until then.
        m_pageAskedWhileLocked = askedPage;
        m_isLoading = false;
        return;
    }
    finishLoading(askedPage);
}

void FDPDFView::finishLoading(int askedPage)
{
    const auto loaded = fdDocument();
    bool pageAsked = false;
    if (const auto page = loaded && askedPage >= 0 ? loaded->pageAtIndex(askedPage) : nullptr) {
        pageAsked = true;
        MainQueue::async(this, [this, page] { goToPage(page); });
    }
    const bool remember = FDDefaults::rememberLastPosition() == 1;
    if (!(remember && hasSavedStatus())) {
        m_scaleMode = FDDefaults::defaultScaleMode();
        applyScaleMode();
    }
    if (!pageAsked && remember) {
        m_isLoading = true;
        MainQueue::async(this, [this] {
            restoreStatus();
            m_isLoading = false;
        });
    } else {
        m_isLoading = false;
    }
}

void FDPDFView::noteRecentAfterFirstPaint(const QUrl &url)
{
    notePendingRecent();
    m_unnotedRecent = url;
    connect(this, &PDFView::visibleAreaRendered, this, &FDPDFView::notePendingRecent,
        Qt::SingleShotConnection);
    MainQueue::asyncAfter(readAheadLongestWait, this, [this] { notePendingRecent(); });
}

void FDPDFView::notePendingRecent()
{
    if (!m_unnotedRecent.isEmpty())
        FDRecentDocuments::noteNewRecentDocumentURL(std::exchange(m_unnotedRecent, QUrl()));
}

void FDPDFView::documentDidUnlock()
{
    // Bookmarks and the outline could not be read while the document was locked.
    if (const auto unlocked = fdDocument())
        unlocked->loadBookmarks();
    m_mapPagesToOutlines.reset();
    finishLoading(std::exchange(m_pageAskedWhileLocked, -1));
}

QString FDPDFView::title() const
{
    if (const auto current = fdDocument())
        return current->title();
    if (document())
        return FDDocument::untitledTitle();
    if (!m_pendingURL.isEmpty())
        return FDDocument::digestTitleFrom(m_pendingURL);
    return m_pendingNewDocument ? FDDocument::untitledTitle() : tr("(empty)");
}

QUrl FDPDFView::fileURL() const
{
    if (const auto current = fdDocument())
        return current->fileURL();
    return m_pendingURL;
}

void FDPDFView::setDocument(const std::shared_ptr<PDFDocument> &newDocument)
{
    if (const auto old = fdDocument(); old && old != newDocument) {
        commitEditing();
        saveStatus();
        old->setPdfView(nullptr);
        if (old->numberOfChanges() > 0)
            PDFSavingService::shared().addTask(old);
        else if (FDDefaults::rememberLastPosition() == 1)
            PDFSavingService::shared().addAttributesTask(old); // the reading position alone
    }
    m_mapPagesToOutlines.reset();
    XPDFView::setDocument(newDocument);
}

void FDPDFView::saveStatus()
{
    const auto current = fdDocument();
    if (!current)
        return;
    QString destination = QStringLiteral("-1,0,0,0");
    if (const auto place = currentDestination()) {
        const int index = place->page() ? std::max(0, current->indexForPage(place->page())) : 0;
        destination = QString::asprintf(
            "%d,%f,%f,%f", index, place->point().x(), place->point().y(), place->zoom());
    }
    const QVariantMap status {
        { kDestination, destination },
        { kScaleMode, qint64(m_scaleMode) },
        { kScaleFactor, scaleFactor() },
        { kDisplayMode, qint64(displayMode()) },
    };
    current->setXattrItemsToSave(
        QList<FDXAttrItem> { { LastPositionAttributeName, Archiver::archivedData(status) } });
}

bool FDPDFView::hasSavedStatus() const
{
    const auto current = fdDocument();
    return current && !current->fileURL().isEmpty()
        && FDGetXAttr(current->fileURL(), LastPositionAttributeName).has_value();
}

void FDPDFView::restoreStatus()
{
    const auto current = fdDocument();
    if (!current || current->fileURL().isEmpty())
        return;
    const auto bytes = FDGetXAttr(current->fileURL(), LastPositionAttributeName);
    if (!bytes)
        return;
    const QVariant archived = Archiver::unarchive(*bytes);
    if (archived.metaType().id() != QMetaType::QVariantMap)
        return;
    const QVariantMap status = archived.toMap();

    if (const QVariant mode = status.value(kDisplayMode); isInteger(mode))
        setDisplayMode(int(std::clamp<qint64>(
            mode.toLongLong(), std::numeric_limits<int>::min(), std::numeric_limits<int>::max())));
    if (const QVariant mode = status.value(kScaleMode); isInteger(mode)) {
        switch (mode.toLongLong()) {
        case qint64(PDFViewScaleMode::none):
            m_scaleMode = PDFViewScaleMode::none;
            if (const QVariant factor = status.value(kScaleFactor); isNumber(factor))
                setScaleFactor(double(float(factor.toDouble())));
            break;
        case qint64(PDFViewScaleMode::fitWidth):
            m_scaleMode = PDFViewScaleMode::fitWidth;
            fitWidth();
            break;
        case qint64(PDFViewScaleMode::fitPage):
            m_scaleMode = PDFViewScaleMode::fitPage;
            fitPage();
            break;
        default:
            break;
        }
    }
    const QVariant stored = status.value(kDestination);
    if (stored.metaType().id() != QMetaType::QString)
        return;
    const QList<float> numbers = parseDestination(stored.toString());
    // "-1,0,0,0" stands for no position and is refused here by its negative page; a page number
    // past the last is refused before it is made an int.
    if (numbers.size() != 4 || !(numbers[0] >= 0) || numbers[0] >= float(current->pageCount()))
        return;
    const auto page = current->pageAtIndex(int(numbers[0]));
    if (!page)
        return;
    auto destination = std::make_shared<PDFDestination>(page, QPointF(numbers[1], numbers[2]));
    destination->setZoom(numbers[3]);
    goToDestination(destination);
}

void FDPDFView::setScaleMode(PDFViewScaleMode mode)
{
    m_scaleMode = mode;
    applyScaleMode();
}

void FDPDFView::applyScaleMode()
{
    if (m_scaleMode == PDFViewScaleMode::fitWidth)
        fitWidth();
    else if (m_scaleMode == PDFViewScaleMode::fitPage)
        fitPage();
}

int FDPDFView::pagesAcross() const
{
    return displayMode() == SinglePage || displayMode() == SinglePageContinuous ? 1 : 2;
}

QSizeF FDPDFView::currentPageSize() const
{
    const auto page = currentPage();
    if (!page)
        return {};
    const QSizeF size = page->boundsForBox(displayBox()).size();
    return page->rotation() % 180 == 0 ? size : size.transposed();
}

void FDPDFView::fitWidth()
{
    // Room for one vertical scroll bar is always left, so that its coming and going cannot
    // change the fit. The page-break margins beside each page are allowed for as in fitPage,
    // so that a fitted page never scrolls sideways.
    const double width = maximumViewportSize().width() - verticalScrollBar()->sizeHint().width();
    const double allowance = displaysPageBreaks() ? pageBreakAllowance : 0.0;
    const double pageWidth = currentPageSize().width();
    if (pageWidth <= 0 || width <= 0)
        return;
    m_scaleFactorByMode = width / ((pageWidth + allowance) * pagesAcross());
    setScaleFactor(m_scaleFactorByMode);
}

void FDPDFView::fitPage()
{
    const QSizeF size = currentPageSize();
    if (size.width() * pagesAcross() >= size.height()) {
        // A landscape page or a spread fits by its width.
        fitWidth();
        return;
    }
    const double height = maximumViewportSize().height();
    const double pageHeight = size.height() + (displaysPageBreaks() ? pageBreakAllowance : 0.0);
    if (pageHeight <= 0 || height <= 0)
        return;
    m_scaleFactorByMode = height / pageHeight;
    setScaleFactor(m_scaleFactorByMode);
}

void FDPDFView::onScaleChanged()
{
    // A zoom from anywhere else ends the fit; the fit's own change keeps it.
    if (std::abs(scaleFactor() - m_scaleFactorByMode) > 0.001)
        m_scaleMode = PDFViewScaleMode::none;
}

void FDPDFView::zoomIn()
{
    m_scaleMode = PDFViewScaleMode::none;
    XPDFView::zoomIn();
}

void FDPDFView::zoomOut()
{
    m_scaleMode = PDFViewScaleMode::none;
    XPDFView::zoomOut();
}

void FDPDFView::zoomActualSize()
{
    m_scaleMode = PDFViewScaleMode::none;
    setScaleFactor(1.0);
}

void FDPDFView::setIsPageNavigatorHidden(bool hidden)
{
    m_isPageNavigatorHidden = hidden;
    NotificationCenter::defaultCenter().post(PageNavigatorVisibilityDidChangeNotification, this);
}

void FDPDFView::resizeEvent(QResizeEvent *event)
{
    XPDFView::resizeEvent(event);
    applyScaleMode();
}

QColor FDPDFView::pageTintColor()
{
    const FDTheme *const theme = FDThemeProvider::current();
    if (theme == FDThemeProvider::night())
        return FDTheme::white(0.16);
    if (theme == FDThemeProvider::sunset())
        return QColor(242, 236, 212);
    return {};
}

void FDPDFView::drawPage(const std::shared_ptr<PDFPage> &page, QPainter &painter)
{
    XPDFView::drawPage(page, painter);
    const QColor tint = pageTintColor();
    if (!tint.isValid())
        return;
    // Exclusion with the tint, then with the page's white ground: the paper takes the tint and
    // the ink its opposite, so a white page never flashes under a dark theme.
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Exclusion);
    const QRectF area = painter.clipBoundingRect();
    painter.fillRect(area, tint);
    painter.fillRect(area, Qt::white);
    painter.restore();
}

void FDPDFView::didAddPageView(QWidget *pageView, const std::shared_ptr<PDFPage> &page, int index)
{
    if (page)
        new QKOverlayView(page, this, pageView);
    XPDFView::didAddPageView(pageView, page, index);
}

void FDPDFView::onThemeChanged()
{
    const FDTheme *const theme = FDThemeProvider::current();
    const QColor background = theme->color(FDTheme::pageBackgroundColor);
    setBackgroundColor(background);
    // The scroll bars sit on the page background and take its colours.
    for (QScrollBar *const bar : { verticalScrollBar(), horizontalScrollBar() }) {
        QPalette palette = bar->palette();
        palette.setColor(QPalette::Window, background);
        palette.setColor(QPalette::Base, background);
        palette.setColor(QPalette::Button, theme->color(FDTheme::secondaryBorderColor));
        bar->setPalette(palette);
    }
    viewport()->update();
}
