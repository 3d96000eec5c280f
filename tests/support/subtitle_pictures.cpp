#include "support/subtitle_pictures.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace marlet::test {

namespace {

/// Fonts need one. It is never taken down: what Qt keeps for fonts has no order of ending that
/// fits static destruction.
void needGuiApplication() {
    if (QCoreApplication::instance() == nullptr) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static int argc = 1;
        static char name[] = "marlet-pictures";
        static char* argv[] = {name, nullptr};
        new QGuiApplication(argc, argv);
    }
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr)
        throw std::logic_error("this program has an application object without fonts");
}

QFont fontOf(const SubtitleStyle& style, double size) {
    QFont font(QString::fromStdString(style.typeface));
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
    font.setItalic(style.italic);
    font.setBold(style.bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    if (QFontInfo(font).family().compare(QString::fromStdString(style.typeface),
                                         Qt::CaseInsensitive) != 0)
        throw std::runtime_error("the typeface " + style.typeface + " isn't installed");
    return font;
}

/// Baseline of the first line at 0.
QPainterPath outlinesOf(const std::string& text, const SubtitleStyle& style, const QFont& font) {
    const QFontMetricsF metrics(font);
    const QStringList lines = QString::fromStdString(text).split(u'\n');
    double widest = 0;
    for (const QString& line : lines) widest = std::max(widest, metrics.horizontalAdvance(line));
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    double baseline = 0;
    for (const QString& line : lines) {
        const double rest = widest - metrics.horizontalAdvance(line);
        path.addText(style.isLeftAligned ? 0 : rest / 2, baseline, font, line);
        baseline += metrics.lineSpacing();
    }
    return path;
}

QImage draw(const QPainterPath& path, const SubtitleStyle& style, double outline) {
    const QRectF bounds = path.boundingRect();
    const double margin = std::ceil(outline) + 1;
    QImage image(static_cast<int>(std::ceil(bounds.width() + 2 * margin)),
                 static_cast<int>(std::ceil(bounds.height() + 2 * margin)),
                 QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) throw std::runtime_error("no picture of that size");
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(margin - bounds.left(), margin - bounds.top());
    if (outline > 0) {
        const QPen pen(QColor::fromRgb(style.outlineColour), 2 * outline, Qt::SolidLine,
                       Qt::RoundCap, Qt::RoundJoin);
        painter.strokePath(path, pen);
    }
    painter.fillPath(path, QColor::fromRgb(style.colour));
    painter.end();
    return image.convertToFormat(QImage::Format_RGBA8888);
}

}  // namespace

pgs::Placed renderLines(const std::string& text, const SubtitleStyle& style, int planeWidth,
                        int planeHeight) {
    needGuiApplication();
    const double size = style.size > 0 ? style.size : planeHeight / 20.0;
    const double outline = style.outline >= 0 ? style.outline : size / 18;
    const QImage image = draw(outlinesOf(text, style, fontOf(style, size)), style, outline);

    pgs::Placed placed;
    placed.picture = {image.width(), image.height(), {}};
    const auto rowBytes = static_cast<std::size_t>(image.width()) * 4;
    for (int row = 0; row < image.height(); row++)
        append(placed.picture.rgba, ByteView(image.constScanLine(row), rowBytes));
    placed.x = std::max(0, (planeWidth - image.width()) / 2);
    placed.y = std::max(0, planeHeight - planeHeight / 14 - image.height());
    return placed;
}

}  // namespace marlet::test
