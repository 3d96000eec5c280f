#include "catalogue/artwork.h"

#include <QBuffer>
#include <QFont>
#include <QFontDatabase>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <cmath>
#include <stdexcept>

#include "catalogue/motifs.h"

namespace marlet::catalogue::Artwork {

namespace {

constexpr int jpegQuality = 86;

/// Words as an outline one unit high from baseline to the top of a capital: shapes scale alike at
/// every size, hinted text would not.
QPainterPath outline(const QString& words, bool bold) {
    QFont font("DejaVu Sans");
    font.setBold(bold);
    font.setPixelSize(100);
    font.setLetterSpacing(QFont::PercentageSpacing, bold ? 102 : 118);
    QPainterPath path;
    path.addText(0, 0, font, words);
    const QRectF box = path.boundingRect();
    if (box.isEmpty()) return {};
    QTransform place;
    place.scale(1 / 73.0, 1 / 73.0);  // a capital of this face is 0.73 of its size
    place.translate(-box.left(), 0);
    return place.map(path);
}

/// The title in two to four lines of about the same length.
QStringList titleLines(const QString& title) {
    const QStringList words = title.toUpper().split(' ', Qt::SkipEmptyParts);
    const qsizetype letters = title.size();
    const double rows = letters <= 8 ? 1 : letters <= 20 ? 2 : letters <= 34 ? 3 : 4;
    const double most = static_cast<double>(letters) / rows * 1.25;
    QStringList lines;
    for (const QString& word : words) {
        const bool fits =
            !lines.isEmpty() && static_cast<double>(lines.back().size() + word.size()) < most;
        if (fits)
            lines.back() += " " + word;
        else
            lines += word;
    }
    return lines;
}

/// Lays words between two edges: as wide as they allow, but no higher than tallest; long words are
/// pressed together, short ones are not stretched. Gives their height.
double layLine(QPainter& painter, const QString& words, bool bold, double left, double right,
               double baseline, double tallest, bool centred) {
    const QPainterPath path = outline(words, bold);
    if (path.isEmpty()) return 0;
    const double room = right - left;
    const double wide = path.boundingRect().width();
    double high = std::min(tallest, room / wide);
    double across = high;
    if (bold && high < tallest * 0.6) high = tallest * 0.6;  // condensed rather than tiny
    if (across * wide > room) across = room / wide;
    QTransform place;
    place.translate(centred ? left + (room - across * wide) / 2 : left, baseline);
    place.scale(across, high);
    painter.drawPath(place.map(path));
    return high;
}

/// Where the scene goes: under words it moves out of their way, up on a poster and right on a wide
/// picture.
QRectF sceneArea(const Picture& picture, const QRectF& area) {
    if (picture.language.empty()) return area;
    if (picture.shape == Shape::poster) return area.adjusted(0, 0, 0, -area.height() * 0.2);
    return area.adjusted(0, 0, area.width() * 0.42, 0);
}

/// The words stand at the foot, over a shade of the scene's darkest colour.
void paintWords(QPainter& painter, const QRectF& area, const Picture& picture,
                const Palette& palette) {
    const bool tall = picture.shape == Shape::poster;
    const double unit = std::min(area.width(), area.height());
    QColor shade = palette.near;
    QLinearGradient fade(0, area.top() + area.height() * 0.5, 0, area.bottom());
    shade.setAlpha(0);
    fade.setColorAt(0, shade);
    shade.setAlpha(225);
    fade.setColorAt(0.55, shade);
    painter.fillRect(area, fade);

    const double margin = unit * 0.08;
    const double left = area.left() + margin;
    const double right = tall ? area.right() - margin : area.left() + area.width() * 0.62;
    double baseline = area.bottom() - margin;
    painter.setBrush(palette.accent);
    baseline -= layLine(painter, QString::fromStdString(picture.line).toUpper(), false, left, right,
                        baseline, unit * 0.036, tall) +
                unit * 0.05;
    painter.drawRect(
        QRectF(tall ? area.center().x() - unit * 0.09 : left, baseline, unit * 0.18, unit * 0.006));
    baseline -= unit * 0.05;
    painter.setBrush(palette.ink);
    QStringList lines = titleLines(QString::fromStdString(picture.title));
    while (!lines.isEmpty())
        baseline -= layLine(painter, lines.takeLast(), true, left, right, baseline,
                            unit * (tall ? 0.15 : 0.11), tall) +
                    unit * 0.035;
}

std::string encoded(const QImage& image, const char* format, int quality) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, format, quality))
        throw std::runtime_error(std::string("no writer of pictures for ") + format);
    return bytes.toStdString();
}

}  // namespace

std::string draw(const Picture& picture, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // One scene for all sizes: it is drawn in the units of a small picture of the same shape.
    const QRectF area =
        picture.shape == Shape::poster ? QRectF(0, 0, 200, 300) : QRectF(0, 0, 320, 180);
    painter.scale(width / area.width(), height / area.height());
    Dice colours(hashOf(picture.family));
    Dice scene(hashOf(picture.path));
    const Palette& chosen = palette(colours);
    painter.fillRect(area, chosen.near);
    paintScene(painter, sceneArea(picture, area), picture.genre, chosen, scene);
    if (!picture.language.empty() && !QFontDatabase::families().isEmpty())
        paintWords(painter, area, picture, chosen);
    painter.end();
    const bool png = picture.path.ends_with(".png");
    return png ? encoded(image, "PNG", -1) : encoded(image, "JPEG", jpegQuality);
}

}  // namespace marlet::catalogue::Artwork
