#include "NSImage+XExtensions.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <functional>

namespace {

using Drawing = std::function<void(QPainter &)>;

struct Recipe
{
    QSizeF size;
    Drawing draw;
};

constexpr QSizeF NoteSize(21.0, 19.0);
constexpr QSizeF CursorSize(16.0, 16.0);
constexpr QSizeF NoteCursorSize(24.0, 40.0);

QImage canvas(const QSizeF &size, double devicePixelRatio)
{
    QImage image(qCeil(size.width() * devicePixelRatio), qCeil(size.height() * devicePixelRatio),
        QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    return image;
}

QImage draw(const Recipe &recipe, double devicePixelRatio)
{
    QImage image = canvas(recipe.size, devicePixelRatio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    recipe.draw(painter);
    return image;
}

// A light tint inside a darker outline: the look of every note picture.
void tinted(QPainter &painter, const QPainterPath &path, const QColor &fill, const QColor &outline)
{
    painter.setPen(QPen(outline, 1.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(fill);
    painter.drawPath(path);
}

void stroke(QPainter &painter, const QPainterPath &path, const QColor &colour, double width)
{
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
}

// A letter A standing on baseline y, for the three text markups.
QPainterPath letterA(double left, double baseline)
{
    QPainterPath path;
    path.moveTo(left, baseline);
    path.lineTo(left + 4.5, baseline - 10);
    path.lineTo(left + 9, baseline);
    path.moveTo(left + 2, baseline - 4);
    path.lineTo(left + 7, baseline - 4);
    return path;
}

const QColor InkColor(64, 64, 64);

void drawTextNote(QPainter &painter)
{
    // A note with its corner folded.
    QPainterPath sheet;
    sheet.moveTo(2.5, 1.5);
    sheet.lineTo(14.5, 1.5);
    sheet.lineTo(18.5, 5.5);
    sheet.lineTo(18.5, 17.5);
    sheet.lineTo(2.5, 17.5);
    sheet.closeSubpath();
    tinted(painter, sheet, QColor(255, 236, 140), QColor(170, 130, 20));
    QPainterPath fold;
    fold.moveTo(14.5, 1.5);
    fold.lineTo(14.5, 5.5);
    fold.lineTo(18.5, 5.5);
    stroke(painter, fold, QColor(170, 130, 20), 1.0);
    QPainterPath lines;
    for (const double y : { 8.5, 11.5, 14.5 }) {
        lines.moveTo(5, y);
        lines.lineTo(15.5, y);
    }
    stroke(painter, lines, QColor(170, 130, 20), 1.0);
}

void drawAnchoredNote(QPainter &painter)
{
    // A speech bubble whose tail points at the spot it belongs to.
    QPainterPath bubble;
    bubble.addRoundedRect(QRectF(1.5, 1.5, 18, 12), 3, 3);
    QPainterPath tail;
    tail.moveTo(5, 13);
    tail.lineTo(4, 18);
    tail.lineTo(10, 13);
    tail.closeSubpath();
    tinted(painter, bubble.united(tail), QColor(255, 236, 140), QColor(170, 130, 20));
    QPainterPath lines;
    for (const double y : { 5.5, 9.5 }) {
        lines.moveTo(5, y);
        lines.lineTo(16, y);
    }
    stroke(painter, lines, QColor(170, 130, 20), 1.0);
}

void drawCircleNote(QPainter &painter)
{
    QPainterPath oval;
    oval.addEllipse(QRectF(2.5, 1.5, 16, 16));
    tinted(painter, oval, QColor(255, 205, 200), QColor(200, 50, 40));
}

void drawSquareNote(QPainter &painter)
{
    QPainterPath square;
    square.addRect(QRectF(2.5, 2.5, 16, 14));
    tinted(painter, square, QColor(200, 222, 255), QColor(40, 90, 200));
}

void drawHighlightNote(QPainter &painter)
{
    QPainterPath band;
    band.addRoundedRect(QRectF(1.5, 3.5, 18, 13), 2, 2);
    tinted(painter, band, QColor(250, 240, 120), QColor(190, 170, 20));
    stroke(painter, letterA(6, 14.5), InkColor, 1.3);
}

void drawUnderlineNote(QPainter &painter)
{
    stroke(painter, letterA(6, 13.5), InkColor, 1.3);
    QPainterPath rule;
    rule.addRect(QRectF(2.5, 15.5, 16, 2));
    tinted(painter, rule, QColor(150, 200, 255), QColor(30, 90, 200));
}

void drawStrikeOutNote(QPainter &painter)
{
    stroke(painter, letterA(6, 16), InkColor, 1.3);
    QPainterPath rule;
    rule.addRect(QRectF(2.5, 9.5, 16, 2));
    tinted(painter, rule, QColor(255, 170, 165), QColor(200, 40, 30));
}

void drawLineNote(QPainter &painter)
{
    QPainterPath line;
    line.moveTo(3, 16);
    line.lineTo(15, 4);
    stroke(painter, line, QColor(200, 50, 40), 2.0);
    QPainterPath head;
    head.moveTo(18.5, 1.5);
    head.lineTo(11.5, 3.5);
    head.lineTo(16.5, 8.5);
    head.closeSubpath();
    tinted(painter, head, QColor(255, 170, 165), QColor(200, 50, 40));
}

void drawInkNote(QPainter &painter)
{
    QPainterPath squiggle;
    squiggle.moveTo(2, 14);
    squiggle.cubicTo(5, 2, 8, 2, 9, 10);
    squiggle.cubicTo(10, 17, 14, 17, 15, 9);
    squiggle.cubicTo(16, 4, 18, 4, 19, 7);
    stroke(painter, squiggle, QColor(200, 50, 40), 3.0);
    stroke(painter, squiggle, QColor(255, 190, 185), 1.2);
}

// Black with a white edge, as pointers are, so that they show on any page.
void pointerShape(QPainter &painter, const QPainterPath &path, double width)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, width + 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
    painter.setPen(QPen(Qt::black, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
}

void drawResize(QPainter &painter, bool rising)
{
    // A double arrow through the centre (8, 8), rising to the right (45) or falling (135).
    const double sx = rising ? 1 : -1;
    const auto at = [&](double x, double y) { return QPointF(8 + sx * x, 8 - y); };
    QPainterPath path;
    path.moveTo(at(-5, -5));
    path.lineTo(at(5, 5));
    for (const double end : { 5.5, -5.5 }) {
        const double back = end > 0 ? -4 : 4;
        path.moveTo(at(end + back, end));
        path.lineTo(at(end, end));
        path.lineTo(at(end, end + back));
    }
    pointerShape(painter, path, 1.5);
}

void drawZoom(QPainter &painter, bool zoomIn)
{
    // The lens is centred on the hot spot (6, 6).
    QPainterPath handle;
    handle.moveTo(9.5, 9.5);
    handle.lineTo(14, 14);
    pointerShape(painter, handle, 2.5);
    painter.setPen(QPen(Qt::black, 1.5));
    painter.setBrush(QColor(255, 255, 255, 230));
    painter.drawEllipse(QPointF(6, 6), 4.8, 4.8);
    painter.setPen(QPen(Qt::white, 0.8));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(6, 6), 5.9, 5.9);
    QPainterPath sign;
    sign.moveTo(3.8, 6);
    sign.lineTo(8.2, 6);
    if (zoomIn) {
        sign.moveTo(6, 3.8);
        sign.lineTo(6, 8.2);
    }
    stroke(painter, sign, Qt::black, 1.3);
}

void drawCamera(QPainter &painter)
{
    QPainterPath body;
    body.addRoundedRect(QRectF(1.5, 4.5, 13, 9), 1.5, 1.5);
    body.addRect(QRectF(5.5, 2.5, 5, 2));
    painter.setPen(QPen(Qt::white, 3));
    painter.drawPath(body);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(QColor(200, 200, 200));
    painter.drawPath(body);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(8, 9), 3, 3);
    painter.setBrush(Qt::black);
    painter.drawEllipse(QPointF(8, 9), 1.2, 1.2);
}

void drawHand(QPainter &painter, bool open)
{
    // A hand holding a bar: fingers spread over it when open, curled round it when closed.
    QPainterPath hand;
    hand.addRoundedRect(QRectF(3.5, 7.5, 9, 7), 3, 3);
    const int fingers = 4;
    for (int index = 0; index < fingers; ++index) {
        const double x = 4.2 + index * 2.3;
        hand.addRoundedRect(QRectF(x, open ? 2 : 5.5, 1.9, open ? 7 : 3.5), 0.9, 0.9);
    }
    if (open)
        hand.addRoundedRect(QRectF(1, 8, 3.5, 1.8), 0.9, 0.9);
    painter.setPen(QPen(Qt::black, 1.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::white);
    painter.drawPath(hand.simplified());
    painter.setPen(QPen(Qt::black, 1.6));
    painter.drawLine(QPointF(1, 8), QPointF(15, 8));
}

QHash<QString, Recipe> &recipes()
{
    static QHash<QString, Recipe> table;
    return table;
}

QHash<QString, QImage> &catalogue()
{
    static QHash<QString, QImage> images;
    return images;
}

bool &madeImages()
{
    static bool made = false;
    return made;
}

QString keyFor(const QString &name, double devicePixelRatio)
{
    return name + QLatin1Char('@') + QString::number(devicePixelRatio);
}

// Files the recipe: the image is drawn when it is first asked for, at the density asked, so that
// start-up draws none of the pictures the first screen does not show.
void file(const QString &name, const Recipe &recipe)
{
    recipes().insert(name, recipe);
}

const QStringList NoteNames = { QStringLiteral("TextNote"), QStringLiteral("AnchoredNote"),
    QStringLiteral("CircleNote"), QStringLiteral("SquareNote"), QStringLiteral("HighlightNote"),
    QStringLiteral("UnderlineNote"), QStringLiteral("StrikeOutNote"), QStringLiteral("LineNote"),
    QStringLiteral("InkNote") };

} // namespace

QStringList noteImageNames()
{
    return NoteNames;
}

QStringList cursorImageNames()
{
    QStringList names { QStringLiteral("ResizeDiagonal45Cursor"),
        QStringLiteral("ResizeDiagonal135Cursor"), QStringLiteral("ZoomInCursor"),
        QStringLiteral("ZoomOutCursor"), QStringLiteral("CameraCursor"),
        QStringLiteral("OpenHandBarCursor"), QStringLiteral("ClosedHandBarCursor") };
    for (const QString &note : NoteNames)
        names << note + QStringLiteral("Cursor");
    return names;
}

void makeImages()
{
    if (madeImages())
        return;
    makeNoteImages();
    makeCursorImages();
    madeImages() = true;
}

void makeNoteImages()
{
    const Drawing drawings[] = { drawTextNote, drawAnchoredNote, drawCircleNote, drawSquareNote,
        drawHighlightNote, drawUnderlineNote, drawStrikeOutNote, drawLineNote, drawInkNote };
    for (int index = 0; index < NoteNames.size(); ++index)
        file(NoteNames.at(index), { NoteSize, drawings[index] });
}

void makeCursorImages()
{
    file(QStringLiteral("ResizeDiagonal45Cursor"),
        { CursorSize, [](QPainter &painter) { drawResize(painter, true); } });
    file(QStringLiteral("ResizeDiagonal135Cursor"),
        { CursorSize, [](QPainter &painter) { drawResize(painter, false); } });
    file(QStringLiteral("ZoomInCursor"),
        { CursorSize, [](QPainter &painter) { drawZoom(painter, true); } });
    file(QStringLiteral("ZoomOutCursor"),
        { CursorSize, [](QPainter &painter) { drawZoom(painter, false); } });
    file(QStringLiteral("CameraCursor"), { CursorSize, drawCamera });
    file(QStringLiteral("OpenHandBarCursor"),
        { CursorSize, [](QPainter &painter) { drawHand(painter, true); } });
    file(QStringLiteral("ClosedHandBarCursor"),
        { CursorSize, [](QPainter &painter) { drawHand(painter, false); } });
    for (const QString &note : NoteNames) {
        const Recipe noteRecipe = recipes().value(note);
        if (!noteRecipe.draw)
            qFatal("The note image %s is made after its cursor", qPrintable(note));
        file(note + QStringLiteral("Cursor"),
            { NoteCursorSize, [noteRecipe](QPainter &painter) {
                 drawArrowCursor(painter);
                 painter.save();
                 painter.translate(3.0, NoteCursorSize.height() - noteRecipe.size.height());
                 noteRecipe.draw(painter);
                 painter.restore();
             } });
    }
}

QImage imageNamed(const QString &name, double devicePixelRatio)
{
    if (!madeImages() || !(devicePixelRatio > 0))
        return {};
    const QString key = keyFor(name, devicePixelRatio);
    if (const auto found = catalogue().constFind(key); found != catalogue().constEnd())
        return *found;
    // A screen of another density: the same drawing, made once for it.
    const auto recipe = recipes().constFind(name);
    if (recipe == recipes().constEnd())
        return {};
    const QImage image = draw(*recipe, devicePixelRatio);
    catalogue().insert(key, image);
    return image;
}

QPointF arrowCursorHotSpot()
{
    return { 1.0, 1.0 };
}

void drawArrowCursor(QPainter &painter)
{
    const QPointF tip = arrowCursorHotSpot();
    QPainterPath arrow;
    arrow.moveTo(tip);
    arrow.lineTo(tip + QPointF(0, 16));
    arrow.lineTo(tip + QPointF(4, 12.3));
    arrow.lineTo(tip + QPointF(6.8, 18.3));
    arrow.lineTo(tip + QPointF(9.2, 17.2));
    arrow.lineTo(tip + QPointF(6.5, 11.4));
    arrow.lineTo(tip + QPointF(11.5, 11.4));
    arrow.closeSubpath();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.setBrush(Qt::black);
    painter.drawPath(arrow);
    painter.restore();
}

QImage copyArrowCursorImage(const QImage &image)
{
    const double ratio = image.isNull() ? 1.0 : image.devicePixelRatio();
    QImage cursor = canvas(NoteCursorSize, ratio);
    QPainter painter(&cursor);
    painter.setRenderHint(QPainter::Antialiasing);
    drawArrowCursor(painter);
    if (!image.isNull()) {
        const QSizeF size = image.deviceIndependentSize();
        painter.drawImage(QPointF(3.0, NoteCursorSize.height() - size.height()), image);
    }
    return cursor;
}

QImage imageTintedWithColor(const QImage &image, const QColor &color)
{
    QImage tinted = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&tinted);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(0, 0), tinted.deviceIndependentSize()), color);
    return tinted;
}

void drawAddBadgeAtPoint(QPainter &painter, const QPointF &point)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 1.0));
    painter.setBrush(QColor(40, 160, 60));
    painter.drawEllipse(point, 4.0, 4.0);
    painter.setPen(QPen(Qt::white, 1.2));
    painter.drawLine(point - QPointF(2.2, 0), point + QPointF(2.2, 0));
    painter.drawLine(point - QPointF(0, 2.2), point + QPointF(0, 2.2));
    painter.restore();
}

QImage copyWithMenuBadge(const QImage &image)
{
    QImage copy = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&copy);
    painter.setRenderHint(QPainter::Antialiasing);
    const QSizeF size = copy.deviceIndependentSize();
    QPainterPath triangle;
    triangle.moveTo(size.width() - 6, size.height() - 4);
    triangle.lineTo(size.width(), size.height() - 4);
    triangle.lineTo(size.width() - 3, size.height() - 1);
    triangle.closeSubpath();
    painter.fillPath(triangle, QColor(64, 64, 64));
    return copy;
}

QImage copyWithAddBadge(const QImage &image)
{
    QImage copy = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&copy);
    const QSizeF size = copy.deviceIndependentSize();
    drawAddBadgeAtPoint(painter, QPointF(size.width() - 4, size.height() - 4));
    return copy;
}
