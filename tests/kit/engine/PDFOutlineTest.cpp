// The outline tree: read, edited live and written back exactly as qpdf sees it.

#include <support/PdfFixtures.h>
#include <support/TestTools.h>

#include <kit/engine/PDFActionGoTo.h>
#include <kit/engine/PDFActionRemoteGoTo.h>
#include <kit/engine/PDFActionURL.h>
#include <kit/engine/PDFDestination.h>
#include <kit/engine/PDFDocument.h>
#include <kit/engine/PDFOutline.h>
#include <kit/engine/PDFPage.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <future>

namespace {

// "label(child, child)" for a tree, to compare whole shapes at once.
QString shape(const PDFOutline &item)
{
    QStringList children;
    for (int i = 0; i < item.numberOfChildren(); ++i)
        children.append(shape(*item.childAtIndex(i)));
    const QString inner = children.isEmpty() ? QString() : "(" + children.join(", ") + ")";
    return item.label() + inner;
}

// The same shape as qpdf reads it, with 1-based destination pages: "label@page(...)".
QString qpdfShape(const QJsonArray &items)
{
    QStringList parts;
    for (const QJsonValue &value : items) {
        const QJsonObject item = value.toObject();
        QString part = item.value("title").toString();
        if (item.value("destpageposfrom1").toInt() > 0)
            part += "@" + QString::number(item.value("destpageposfrom1").toInt());
        const QJsonArray kids = item.value("kids").toArray();
        if (!kids.isEmpty())
            part += "(" + qpdfShape(kids) + ")";
        parts.append(part);
    }
    return parts.join(", ");
}

std::shared_ptr<PDFDocument> open(const QString &path)
{
    auto doc = std::make_shared<PDFDocument>();
    return doc->initWithURL(QUrl::fromLocalFile(path)) ? doc : nullptr;
}

} // namespace

class PDFOutlineTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        path = dir.filePath("standard.pdf");
        QVERIFY(PdfFixtures::write(PdfFixtures::standard(), path));
    }

    void readsTheTreeWithPagesByIdentity()
    {
        auto doc = open(path);
        QVERIFY(doc);
        const auto root = doc->outlineRoot();
        QVERIFY(root);
        QCOMPARE(root->document(), doc);
        QCOMPARE(shape(*root),
            QString("(Chapter One(Section 1.1, Section 1.2), Chapter Two(Deep(Deeper)), "
                    "Résumé – ünïcode)"));
        const auto section = root->childAtIndex(0)->childAtIndex(0);
        QCOMPARE(section->parent(), root->childAtIndex(0));
        QCOMPARE(section->index(), 0);
        QCOMPARE(section->destination()->page(), doc->pageAtIndex(1));
        QCOMPARE(section->destination()->point(), QPointF(10, 700));
        QCOMPARE(section->destination()->zoom(), PDFDestination::UnspecifiedValue);
        const auto deep = root->childAtIndex(1)->childAtIndex(0);
        QVERIFY(!deep->isOpen());
        QVERIFY(root->childAtIndex(1)->isOpen());
        QCOMPARE(deep->childAtIndex(0)->destination()->zoom(), 2.0);
        // Without an explicit action, the action is a go-to of the destination.
        const auto action = std::dynamic_pointer_cast<PDFActionGoTo>(section->action());
        QVERIFY(action);
        QCOMPARE(action->destination(), section->destination());
    }

    void editsSurviveASaveExactly()
    {
        FOLIDOC_REQUIRE_TOOL(qpdf, "qpdf");
        auto doc = open(path);
        const auto root = doc->outlineRoot();
        // A detached subtree lives on and comes back.
        const auto chapterTwo = root->childAtIndex(1);
        chapterTwo->removeFromParent();
        QVERIFY(!chapterTwo->parent());
        QCOMPARE(root->numberOfChildren(), 2);
        QVERIFY(!doc->dataRepresentation().isEmpty());

        auto marks = std::make_shared<PDFOutline>();
        marks->setLabel("My Bookmarks – «marks»");
        auto mark = std::make_shared<PDFOutline>();
        mark->setLabel("Mark on page 4");
        mark->setDestination(std::make_shared<PDFDestination>(doc->pageAtIndex(3), QPointF(0, 0)));
        marks->insertChild(mark, 0);
        root->insertChild(marks, 0);
        root->insertChild(chapterTwo, 99);
        root->childAtIndex(1)->childAtIndex(1)->setLabel("Section 1.2 (renamed)");
        auto link = std::make_shared<PDFOutline>();
        link->setLabel("Web");
        link->setAction(std::make_shared<PDFActionURL>(QUrl("https://example.org/a?b=c")));
        chapterTwo->insertChild(link, 0);

        const QString out = dir.filePath("edited.pdf");
        QVERIFY(doc->writeToURL(QUrl::fromLocalFile(out)));
        QCOMPARE(TestTools::run(qpdf, { "--check", out }).exitCode, 0);
        const auto json = QJsonDocument::fromJson(
            TestTools::run(qpdf, { "--json", "--json-key=outlines", out }).out);
        QCOMPARE(qpdfShape(json.object().value("outlines").toArray()),
            QString("My Bookmarks – «marks»(Mark on page 4@4), Chapter One@1(Section 1.1@2, "
                    "Section 1.2 (renamed)@3), Résumé – ünïcode@4, Chapter Two@5(Web, "
                    "Deep@5(Deeper@6))"));

        auto reread = open(out);
        QVERIFY(reread);
        const auto readRoot = reread->outlineRoot();
        QCOMPARE(shape(*readRoot), shape(*root));
        const auto readMark = readRoot->childAtIndex(0)->childAtIndex(0)->destination();
        QCOMPARE(readMark->page(), reread->pageAtIndex(3));
        QCOMPARE(readMark->point(), QPointF(0, 0));
        const auto deeper = readRoot->childAtIndex(3)->childAtIndex(1)->childAtIndex(0);
        QCOMPARE(deeper->destination()->point(), QPointF(72, 500));
        QCOMPARE(deeper->destination()->zoom(), 2.0);
        QVERIFY(!readRoot->childAtIndex(3)->childAtIndex(1)->isOpen());
        const auto web = std::dynamic_pointer_cast<PDFActionURL>(
            readRoot->childAtIndex(3)->childAtIndex(0)->action());
        QVERIFY(web);
        QCOMPARE(web->URL(), QUrl("https://example.org/a?b=c"));
    }

    void destinationsFollowMovedPages()
    {
        auto doc = open(path);
        const auto section = doc->outlineRoot()->childAtIndex(0)->childAtIndex(0);
        const auto target = section->destination()->page();
        doc->exchangePageAtIndex(1, 5);
        doc->removePageAtIndex(0);
        QCOMPARE(section->destination()->page(), target);
        auto reread = std::make_shared<PDFDocument>();
        QVERIFY(reread->initWithData(doc->dataRepresentation()));
        const auto readTarget
            = reread->outlineRoot()->childAtIndex(0)->childAtIndex(0)->destination()->page();
        QVERIFY(readTarget);
        QCOMPARE(reread->indexForPage(readTarget), 4);
        QVERIFY(readTarget->string().startsWith("Cropped page text"));
        // An item pointing at a removed page loses only its destination in the file.
        QCOMPARE(doc->outlineRoot()->childAtIndex(0)->destination()->page()->document(), nullptr);
        QVERIFY(!reread->outlineRoot()->childAtIndex(0)->destination());
        QCOMPARE(reread->outlineRoot()->childAtIndex(0)->label(), QString("Chapter One"));
    }

    void rootsCanBeSetAndClearedWithActionsOfEveryKind()
    {
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(PdfFixtures::build(PdfFixtures::textPages(3))));
        auto root = std::make_shared<PDFOutline>();
        const auto item = [&](const char *label) {
            auto made = std::make_shared<PDFOutline>();
            made->setLabel(label);
            root->insertChild(made, root->numberOfChildren());
            return made;
        };
        const auto only = item("Only");
        only->setDestination(std::make_shared<PDFDestination>(doc->pageAtIndex(2), QPointF(5, 6)));
        item("Elsewhere")
            ->setAction(
                std::make_shared<PDFActionRemoteGoTo>(4, QPointF(10, 20), QUrl("other file.pdf")));
        item("Whole page")
            ->setDestination(std::make_shared<PDFDestination>(doc->pageAtIndex(1),
                QPointF(PDFDestination::UnspecifiedValue, PDFDestination::UnspecifiedValue)));
        doc->setOutlineRoot(root);
        QCOMPARE(only->document(), doc);
        auto reread = std::make_shared<PDFDocument>();
        QVERIFY(reread->initWithData(doc->dataRepresentation()));
        QCOMPARE(shape(*reread->outlineRoot()), QString("(Only, Elsewhere, Whole page)"));
        QCOMPARE(reread->outlineRoot()->childAtIndex(0)->destination()->point(), QPointF(5, 6));
        const auto readRemote = std::dynamic_pointer_cast<PDFActionRemoteGoTo>(
            reread->outlineRoot()->childAtIndex(1)->action());
        QVERIFY(readRemote);
        QCOMPARE(readRemote->pageIndex(), 4);
        QCOMPARE(readRemote->point(), QPointF(10, 20));
        QCOMPARE(readRemote->URL(), QUrl("other file.pdf"));
        const auto readFit = reread->outlineRoot()->childAtIndex(2)->destination();
        QCOMPARE(readFit->page(), reread->pageAtIndex(1));
        QCOMPARE(readFit->point().x(), PDFDestination::UnspecifiedValue);

        doc->setOutlineRoot(nullptr);
        QVERIFY(reread->initWithData(doc->dataRepresentation()));
        QVERIFY(!reread->outlineRoot());
    }

    // A save readies the objects on the main thread and writes them on another: the write holds
    // what was readied even while the main thread edits, and gives way once another was readied.
    void aWriteReadiedAheadKeepsItsOutline()
    {
        auto doc = std::make_shared<PDFDocument>();
        QVERIFY(doc->initWithData(PdfFixtures::build(PdfFixtures::textPages(40))));
        auto root = std::make_shared<PDFOutline>();
        auto mark = std::make_shared<PDFOutline>();
        mark->setLabel("Readied");
        mark->setDestination(std::make_shared<PDFDestination>(doc->pageAtIndex(1), QPointF()));
        root->insertChild(mark, 0);
        doc->setOutlineRoot(root);

        const PDFDocument::DataWriter write = doc->prepareDataRepresentation();
        QVERIFY(write);
        mark->setLabel("Renamed after");
        std::future<PDFDocument::WrittenData> running = std::async(std::launch::async, write);
        for (int i = 0; i < 20; ++i)
            doc->exchangePageAtIndex(i, 39 - i);
        const PDFDocument::WrittenData written = running.get();
        QVERIFY(!written.isStale);
        auto reread = std::make_shared<PDFDocument>();
        QVERIFY2(reread->initWithData(written.bytes), qPrintable(written.error));
        QCOMPARE(reread->pageCount(), 40);
        QCOMPARE(shape(*reread->outlineRoot()), QString("(Readied)"));

        const PDFDocument::DataWriter late = doc->prepareDataRepresentation();
        QVERIFY(reread->initWithData(doc->dataRepresentation())); // a print copy, say
        QCOMPARE(shape(*reread->outlineRoot()), QString("(Renamed after)"));
        const PDFDocument::WrittenData refused = late();
        QVERIFY(refused.isStale);
        QVERIFY(refused.bytes.isEmpty());
    }

    void treeRefusesCycles()
    {
        auto root = std::make_shared<PDFOutline>();
        auto child = std::make_shared<PDFOutline>();
        auto grandchild = std::make_shared<PDFOutline>();
        root->insertChild(child, 0);
        child->insertChild(grandchild, 0);
        grandchild->insertChild(root, 0);
        grandchild->insertChild(grandchild, 0);
        QCOMPARE(grandchild->numberOfChildren(), 0);
        // Moving within the tree keeps one parent.
        root->insertChild(grandchild, 0);
        QCOMPARE(child->numberOfChildren(), 0);
        QCOMPARE(grandchild->parent(), root);
        QCOMPARE(child->index(), 1);
    }

private:
    QTemporaryDir dir;
    QString path;
};

QTEST_MAIN(PDFOutlineTest)
#include "PDFOutlineTest.moc"
