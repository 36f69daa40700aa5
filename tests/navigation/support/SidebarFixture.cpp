#include "SidebarFixture.h"

#include <kit/engine/PDFOutline.h>
#include <navigation/PDFOutline+XExtensions.h>
#include <support/TestTools.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QXmlStreamReader>

namespace SidebarFixture {

namespace {

struct Node
{
    QString title;
    int page = 0; // from 1; 0 for none
    QList<Node> children;
};

QString format(const QList<Node> &nodes)
{
    QStringList parts;
    for (const Node &node : nodes) {
        QString part = node.title;
        if (node.page > 0)
            part += QLatin1Char('@') + QString::number(node.page);
        if (!node.children.isEmpty())
            part += QLatin1Char('(') + format(node.children) + QLatin1Char(')');
        parts << part;
    }
    return parts.join(QLatin1Char(','));
}

QList<Node> fromJson(const QJsonArray &array)
{
    QList<Node> nodes;
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        nodes.append({ object.value(QStringLiteral("title")).toString(),
            object.value(QStringLiteral("destpageposfrom1")).toInt(0),
            fromJson(object.value(QStringLiteral("kids")).toArray()) });
    }
    return nodes;
}

// Poppler's XML: an <outline> right after an <item> holds that item's children.
QList<Node> fromPopplerOutline(QXmlStreamReader &xml)
{
    QList<Node> nodes;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("item")) {
            Node node;
            node.page = xml.attributes().value(QStringLiteral("page")).toInt();
            node.title = xml.readElementText();
            nodes.append(node);
        } else if (xml.name() == QLatin1String("outline")) {
            const QList<Node> children = fromPopplerOutline(xml);
            if (!nodes.isEmpty())
                nodes.last().children = children;
        } else {
            xml.skipCurrentElement();
        }
    }
    return nodes;
}

} // namespace

QString treeOf(const std::shared_ptr<PDFOutline> &root)
{
    const std::function<QList<Node>(const std::shared_ptr<PDFOutline> &)> walk
        = [&](const std::shared_ptr<PDFOutline> &item) {
              QList<Node> nodes;
              for (int child = 0; item && child < item->numberOfChildren(); ++child) {
                  const auto at = item->childAtIndex(child);
                  nodes.append({ at->label(), pageIndex(*at) + 1, walk(at) });
              }
              return nodes;
          };
    return format(walk(root));
}

std::shared_ptr<PDFOutline> itemAt(const std::shared_ptr<PDFOutline> &root, const QString &path)
{
    auto item = root;
    for (const QString &step : path.split(QLatin1Char('.'), Qt::SkipEmptyParts)) {
        if (!item)
            return nullptr;
        item = item->childAtIndex(step.toInt());
    }
    return item;
}

QString outlineByQpdf(const QString &qpdf, const QString &path)
{
    const TestTools::RunResult result = TestTools::run(
        qpdf, { QStringLiteral("--json"), QStringLiteral("--json-key=outlines"), path });
    if (result.exitCode != 0)
        return QStringLiteral("error: ") + QString::fromUtf8(result.err);
    const QJsonDocument json = QJsonDocument::fromJson(result.out);
    return format(fromJson(json.object().value(QStringLiteral("outlines")).toArray()));
}

QString outlineByPoppler(const QString &pdftohtml, const QString &path)
{
    const TestTools::RunResult result = TestTools::run(pdftohtml,
        { QStringLiteral("-xml"), QStringLiteral("-i"), QStringLiteral("-q"),
            QStringLiteral("-stdout"), QStringLiteral("-f"), QStringLiteral("1"),
            QStringLiteral("-l"), QStringLiteral("1"), path });
    if (result.exitCode != 0)
        return QStringLiteral("error: ") + QString::fromUtf8(result.err);
    QXmlStreamReader xml(result.out);
    QList<Node> nodes;
    // The outline is one element of the document element, after the pages.
    if (xml.readNextStartElement()) {
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("outline"))
                nodes = fromPopplerOutline(xml);
            else
                xml.skipCurrentElement();
        }
    }
    return format(nodes);
}

} // namespace SidebarFixture
