// folidoc-bench roundtrip IN.pdf OUT.pdf: exercises the engine on a real file (render, find,
// one annotation of each kind the application makes, outline and page edits), writes OUT,
// reopens it and checks that everything is there. Exit 0 "ok", 2 "refused" (not a PDF,
// damaged beyond repair, locked), 1 "failed" with what differed.

#include "BenchCommand.h"

#include <kit/base/BezierPath.h>
#include <kit/base/NotificationCenter.h>
#include <kit/engine/PDFAnnotation.h>
#include <kit/engine/PDFAnnotationCircle.h>
#include <kit/engine/PDFAnnotationFreeText.h>
#include <kit/engine/PDFAnnotationInk.h>
#include <kit/engine/PDFAnnotationLine.h>
#include <kit/engine/PDFAnnotationMarkup.h>
#include <kit/engine/PDFAnnotationSquare.h>
#include <kit/engine/PDFAnnotationText.h>
#include <kit/engine/PDFBorder.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>
#include <kit/engine/PDFSelection.h>

#include <QEventLoop>
#include <QFileInfo>
#include <QObject>
#include <QRegularExpression>
#include <QTimer>
#include <QUrl>

#include <cstdio>

namespace {

constexpr int MaxRenderedPages = 200;
constexpr int FindTimeoutMs = 60000;

int refused(const QString &reason)
{
    std::printf("roundtrip: refused: %s\n", qPrintable(reason));
    return 2;
}

int failed(const QStringList &differences)
{
    std::printf("roundtrip: failed: %s\n", qPrintable(differences.join(QStringLiteral("; "))));
    return 1;
}

// What a page's annotations are, as a reader sees them: type and contents, in order.
QStringList describe(const std::shared_ptr<PDFPage> &page)
{
    QStringList list;
    for (const auto &annotation : page->annotations())
        list.append(annotation->type());
    return list;
}

// Finds the word and waits for the end; -1 when the find does not end in time.
int countMatches(PDFDocument &document, const QString &word)
{
    int matches = 0;
    bool ended = false;
    QEventLoop loop;
    QObject guard;
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(&guard, PDFDocument::DidFindMatchNotification, &document,
        [&](const Notification &) { ++matches; });
    center.addObserver(
        &guard, PDFDocument::DidEndFindNotification, &document, [&](const Notification &) {
            ended = true;
            loop.quit();
        });
    QTimer::singleShot(FindTimeoutMs, &loop, &QEventLoop::quit);
    document.beginFindString(word, PDFDocument::CaseInsensitiveSearch);
    if (document.isFinding())
        loop.exec();
    document.cancelFindString();
    center.removeObserver(&guard);
    return ended || !document.isFinding() ? matches : -1;
}

QString wordOf(const QString &text)
{
    static const QRegularExpression word(QStringLiteral("\\b[A-Za-z]{4,}\\b"));
    const auto match = word.match(text);
    return match.hasMatch() ? match.captured() : QString();
}

std::vector<std::shared_ptr<PDFAnnotation>> makeAnnotations(const std::shared_ptr<PDFPage> &page)
{
    std::vector<std::shared_ptr<PDFAnnotation>> made;
    const QRectF box = page->boundsForBox(PDFDisplayBox::CropBox);
    const double unit = std::max(10.0, std::min(box.width(), box.height()) / 12);
    const auto at = [&](double column, double row) {
        return QRectF(box.left() + unit * (1 + 2.5 * column), box.top() + unit * (1 + 2 * row),
            unit * 2, unit * 1.5);
    };
    // Markup over the first line of real text, when the page has some.
    const auto text = page->selectionForRect(box);
    const auto lines
        = text ? text->selectionsByLine() : std::vector<std::shared_ptr<PDFSelection>>();
    const QRectF line = lines.empty() ? QRectF() : lines.front()->boundsForPage(page);
    if (!line.isEmpty()) {
        const char *const kinds[] = { "Highlight", "Underline", "StrikeOut" };
        for (const char *kind : kinds) {
            auto markup = std::make_shared<PDFAnnotationMarkup>();
            markup->initWithBounds(line, QString::fromLatin1(kind), {});
            const double w = line.width();
            const double h = line.height();
            markup->setQuadrilateralPoints({ { 0, h }, { w, h }, { 0, 0 }, { w, 0 } });
            markup->setColor(QColor(255, 220, 0));
            made.push_back(markup);
        }
    }
    auto ink = std::make_shared<PDFAnnotationInk>();
    ink->initWithBounds(at(0, 0));
    auto path = std::make_shared<BezierPath>();
    path->moveTo({ 2, 2 });
    path->curveTo({ unit * 2 - 2, unit * 1.5 - 2 }, { 2, unit * 1.5 }, { unit * 2, 2 });
    ink->addBezierPath(path);
    made.push_back(ink);
    auto arrow = std::make_shared<PDFAnnotationLine>();
    arrow->initWithBounds(at(1, 0));
    arrow->setEndLineStyle(PDFAnnotationLine::OpenArrow);
    made.push_back(arrow);
    auto circle = std::make_shared<PDFAnnotationCircle>();
    circle->initWithBounds(at(2, 0));
    circle->setInteriorColor(QColor(0, 200, 0));
    made.push_back(circle);
    auto square = std::make_shared<PDFAnnotationSquare>();
    square->initWithBounds(at(0, 1));
    square->border()->setStyle(PDFBorder::Dashed);
    made.push_back(square);
    auto freeText = std::make_shared<PDFAnnotationFreeText>();
    freeText->initWithBounds(at(1, 1));
    made.push_back(freeText);
    auto note = std::make_shared<PDFAnnotationText>();
    note->initWithBounds(QRectF(at(2, 1).topLeft(), QSizeF(0, 0)));
    made.push_back(note);
    for (const auto &annotation : made) {
        if (!annotation->color().isValid())
            annotation->setColor(QColor(220, 30, 30));
        annotation->setContents(QStringLiteral("roundtrip %1").arg(annotation->type()));
    }
    return made;
}

int roundtrip(const QStringList &arguments)
{
    if (arguments.size() != 2) {
        std::fprintf(stderr, "usage: folidoc-bench roundtrip IN.pdf OUT.pdf\n");
        return 2;
    }
    const QString in = arguments[0];
    const QString out = arguments[1];
    if (!QFileInfo(in).isFile())
        return refused(QStringLiteral("not a readable file: %1").arg(in));
    auto document = std::make_shared<PDFDocument>();
    if (!document->initWithURL(QUrl::fromLocalFile(QFileInfo(in).absoluteFilePath())))
        return refused(document->errorString());
    if (document->isLocked())
        return refused(QStringLiteral("the document is locked with a password"));
    const int count = document->pageCount();
    if (count == 0)
        return refused(QStringLiteral("the document has no pages"));

    QStringList differences;
    for (int i = 0; i < std::min(count, MaxRenderedPages); ++i) {
        const auto page = document->pageAtIndex(i);
        const QSizeF size = page->boundsForBox(PDFDisplayBox::CropBox).size();
        const QSize pixels(
            std::clamp(qRound(size.width()), 1, 4000), std::clamp(qRound(size.height()), 1, 4000));
        const QSize shown = page->rotation() % 180 ? pixels.transposed() : pixels;
        // Content MuPDF cannot draw is the file's own damage, not a loss: it is only noted.
        if (page->imageForBox(PDFDisplayBox::CropBox, shown).isNull())
            std::fprintf(stderr, "roundtrip: note: page %d could not be drawn\n", i + 1);
    }
    const QString word = wordOf(document->pageAtIndex(0)->string());
    if (!word.isEmpty() && countMatches(*document, word) < 0)
        differences.append(QStringLiteral("finding \"%1\" did not end").arg(word));

    // A file the engine cannot even write back as it stands is damaged beyond repair.
    const QByteArray untouched = document->dataRepresentation();
    if (untouched.isEmpty())
        return refused(QStringLiteral("damaged beyond repair: it cannot be written back: %1")
                           .arg(document->errorString()));
    auto plain = std::make_shared<PDFDocument>();
    if (!plain->initWithData(untouched) || plain->pageCount() != count)
        return refused(QStringLiteral("damaged beyond repair: written back as it stands, it does "
                                      "not read again with its %1 pages")
                           .arg(count));

    std::vector<QStringList> before;
    for (int i = 0; i < count; ++i)
        before.push_back(describe(document->pageAtIndex(i)));
    const auto first = document->pageAtIndex(0);
    const auto added = makeAnnotations(first);
    for (const auto &annotation : added)
        first->addAnnotation(annotation);

    auto root = document->outlineRoot();
    if (!root) {
        root = std::make_shared<PDFOutline>();
        document->setOutlineRoot(root);
    }
    auto appended = std::make_shared<PDFOutline>();
    appended->setLabel(QStringLiteral("Roundtrip appended"));
    appended->setDestination(std::make_shared<PDFDestination>(first, QPointF(0, 0)));
    root->insertChild(appended, root->numberOfChildren());
    auto inserted = std::make_shared<PDFOutline>();
    inserted->setLabel(QStringLiteral("Roundtrip first"));
    inserted->setDestination(
        std::make_shared<PDFDestination>(document->pageAtIndex(count - 1), QPointF(0, 0)));
    root->insertChild(inserted, 0);

    const auto last = document->pageAtIndex(count - 1);
    std::vector<int> rotations;
    for (int i = 0; i < count; ++i)
        rotations.push_back(document->pageAtIndex(i)->rotation());
    rotations.back() = (rotations.back() + 90) % 360;
    last->setRotation(last->rotation() + 90);
    document->insertPage(first, count);
    document->insertPage(first, 0);
    if (document->pageAtIndex(0) != first)
        differences.append(QStringLiteral("the first page did not come back to its place"));
    const auto copy = first->copy();
    if (copy)
        document->insertPage(copy, document->pageCount());
    else
        differences.append(QStringLiteral("page 1 could not be copied"));
    rotations.push_back(rotations.front());

    if (!document->writeToURL(QUrl::fromLocalFile(QFileInfo(out).absoluteFilePath())))
        return failed(
            differences << QStringLiteral("writing failed: %1").arg(document->errorString()));

    auto reread = std::make_shared<PDFDocument>();
    if (!reread->initWithURL(QUrl::fromLocalFile(QFileInfo(out).absoluteFilePath())))
        return failed(differences
            << QStringLiteral("the written file does not open: %1").arg(reread->errorString()));
    if (reread->pageCount() != static_cast<int>(rotations.size()))
        differences.append(QStringLiteral("%1 pages instead of %2")
                               .arg(reread->pageCount())
                               .arg(rotations.size()));
    for (int i = 0; i < std::min(reread->pageCount(), static_cast<int>(rotations.size())); ++i) {
        if (reread->pageAtIndex(i)->rotation() != rotations[static_cast<size_t>(i)])
            differences.append(QStringLiteral("page %1 turned %2 instead of %3")
                                   .arg(i + 1)
                                   .arg(reread->pageAtIndex(i)->rotation())
                                   .arg(rotations[static_cast<size_t>(i)]));
    }
    const auto readRoot = reread->outlineRoot();
    const int items = readRoot ? readRoot->numberOfChildren() : 0;
    if (items < 2 || readRoot->childAtIndex(0)->label() != inserted->label()
        || readRoot->childAtIndex(items - 1)->label() != appended->label())
        differences.append(QStringLiteral("the outline's new items are missing"));

    for (int i = 0; i < std::min(reread->pageCount(), count); ++i) {
        QStringList expected = before[static_cast<size_t>(i)];
        if (i == 0) {
            for (const auto &annotation : added)
                expected.append(annotation->type());
        }
        const QStringList found = describe(reread->pageAtIndex(i));
        if (found != expected)
            differences.append(
                QStringLiteral("page %1 has annotations [%2] instead of [%3]")
                    .arg(i + 1)
                    .arg(found.join(QLatin1Char(',')), expected.join(QLatin1Char(','))));
    }
    if (reread->pageCount() > 0) {
        const auto &read = reread->pageAtIndex(0)->annotations();
        for (const auto &annotation : added) {
            const bool there = std::any_of(read.begin(), read.end(), [&](const auto &other) {
                return other->type() == annotation->type()
                    && other->contents() == annotation->contents();
            });
            if (!there)
                differences.append(
                    QStringLiteral("the added %1 is missing").arg(annotation->type()));
        }
        if (copy && reread->pageCount() == count + 1
            && describe(reread->pageAtIndex(count)).size()
                != describe(reread->pageAtIndex(0)).size())
            differences.append(QStringLiteral("the copy of page 1 lost annotations"));
    }
    if (!differences.isEmpty())
        return failed(differences);
    std::printf("roundtrip: ok\n");
    return 0;
}

const BenchRegistration registration(
    QStringLiteral("roundtrip"), QStringLiteral("IN.pdf OUT.pdf"), roundtrip);

} // namespace
