#include "catalogue/motifs.h"

#include <QLinearGradient>
#include <QPainterPath>
#include <QPolygonF>
#include <QRadialGradient>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <vector>

namespace marlet::catalogue::Artwork {

namespace {

constexpr double pi = std::numbers::pi;

using Motif = void (*)(QPainter&, const QRectF&, const Palette&, Dice&);

void disc(QPainter& painter, QPointF centre, double radius, const QBrush& brush) {
    painter.setBrush(brush);
    painter.drawEllipse(centre, radius, radius);
}

/// A disc with a soft halo round it.
void glow(QPainter& painter, QPointF centre, double radius, const QColor& colour) {
    QColor halo = colour;
    QRadialGradient light(centre, radius * 2.6);
    halo.setAlpha(120);
    light.setColorAt(0.3, halo);
    halo.setAlpha(0);
    light.setColorAt(1, halo);
    disc(painter, centre, radius * 2.6, light);
    disc(painter, centre, radius, colour);
}

/// Everything below a line that rolls; height is where it rolls about, as part of the area.
QPainterPath rollingGround(const QRectF& area, double height, double swing, Dice& dice) {
    const double first = dice.between(0.6, 1.6);
    const double second = dice.between(2.0, 4.0);
    const double shift = dice.between(0, 2 * pi);
    QPainterPath path(area.bottomLeft());
    constexpr int steps = 80;
    for (int i = 0; i <= steps; i++) {
        const double x = static_cast<double>(i) / steps;
        const double roll = std::sin(x * first * 2 * pi + shift) +
                            0.35 * std::sin(x * second * 2 * pi + shift * 1.7);
        path.lineTo(area.left() + x * area.width(),
                    area.top() + area.height() * (height + swing * roll));
    }
    path.lineTo(area.bottomRight());
    path.closeSubpath();
    return path;
}

void hills(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    const double radius = std::min(area.width(), area.height()) * dice.between(0.12, 0.2);
    glow(painter,
         {area.left() + area.width() * dice.between(0.25, 0.75),
          area.top() + area.height() * dice.between(0.24, 0.4)},
         radius, palette.accent);
    constexpr int layers = 5;
    for (int i = 0; i < layers; i++) {
        const double part = static_cast<double>(i) / (layers - 1);
        painter.setBrush(blend(palette.far, palette.near, part));
        painter.drawPath(rollingGround(area, 0.46 + 0.1 * i, 0.035, dice));
    }
}

void towers(QPainter& painter, const QRectF& area, const QColor& wall, const QColor* lights,
            double low, double high, Dice& dice) {
    double x = area.left();
    while (x < area.right()) {
        const double width = area.width() * dice.between(0.06, 0.14);
        const double height = area.height() * dice.between(low, high);
        const QRectF tower(x, area.bottom() - height, width + 0.3, height);
        painter.setBrush(wall);
        painter.drawRect(tower);
        if (lights != nullptr) {
            painter.setBrush(*lights);
            const double pane = area.width() * 0.009;
            for (double py = tower.top() + 3 * pane; py < area.bottom(); py += 3.4 * pane)
                for (double px = x + 1.5 * pane; px < x + width - 1.6 * pane; px += 2.6 * pane)
                    if (dice.below(4) == 0) painter.drawRect(QRectF(px, py, pane, 1.6 * pane));
        }
        x += width;
    }
}

void skyline(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    const double radius = std::min(area.width(), area.height()) * dice.between(0.14, 0.2);
    glow(painter,
         {area.left() + area.width() * dice.between(0.3, 0.7), area.top() + area.height() * 0.28},
         radius, palette.accent);
    towers(painter, area, blend(palette.skyBottom, palette.far, 0.6), nullptr, 0.42, 0.62, dice);
    towers(painter, area, palette.far, &palette.skyBottom, 0.34, 0.52, dice);
    towers(painter, area, palette.near, &palette.accent, 0.24, 0.42, dice);
}

void rays(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    const QPointF centre(area.center().x(), area.top() + area.height() * dice.between(0.48, 0.56));
    const double reach = area.width() + area.height();
    const int count = 2 * (8 + dice.below(5));
    QColor beam = palette.accent;
    beam.setAlpha(105);
    painter.setBrush(beam);
    for (int i = 0; i < count; i += 2) {
        QPolygonF wedge;
        wedge << centre;
        for (int edge = 0; edge < 2; edge++) {
            const double angle = 2 * pi * (i + edge + 0.5) / count;
            wedge << centre + QPointF(std::cos(angle), std::sin(angle)) * reach;
        }
        painter.drawPolygon(wedge);
    }
    const double unit = std::min(area.width(), area.height());
    disc(painter, centre, unit * 0.31, palette.near);
    disc(painter, centre, unit * 0.28, palette.accent);
    disc(painter, centre, unit * 0.2, palette.skyTop);
    disc(painter, centre, unit * 0.12, palette.ink);
    painter.setBrush(palette.near);
    painter.drawPath(rollingGround(area, 0.76, 0.02, dice));
}

void rings(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    QPointF centre = area.center() - QPointF(0, area.height() * 0.1);
    double radius = std::max(area.width(), area.height()) * 0.62;
    const QPointF drift(dice.between(-0.012, 0.012) * area.width(),
                        dice.between(-0.012, 0.004) * area.height());
    constexpr int count = 11;
    for (int i = 0; i < count; i++) {
        const double part = static_cast<double>(i) / (count - 1);
        const QColor tone = i % 2 == 0 ? blend(palette.near, palette.far, part)
                                       : blend(palette.skyTop, palette.skyBottom, part);
        disc(painter, centre, radius, tone);
        centre += drift;
        radius *= 0.8;
    }
    glow(painter, centre, radius * 1.1, palette.accent);
}

void figure(QPainter& painter, QPointF feet, double height, const QColor& colour) {
    painter.setBrush(colour);
    painter.drawEllipse(feet - QPointF(0, height * 0.9), height * 0.1, height * 0.1);
    QPainterPath coat(feet + QPointF(-height * 0.16, 0));
    coat.quadTo(feet + QPointF(-height * 0.15, -height * 0.7), feet + QPointF(0, -height * 0.82));
    coat.quadTo(feet + QPointF(height * 0.15, -height * 0.7), feet + QPointF(height * 0.16, 0));
    coat.closeSubpath();
    painter.drawPath(coat);
}

void doorway(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    const double horizon = area.top() + area.height() * 0.6;
    painter.setBrush(palette.far);
    painter.drawRect(area.adjusted(0, 0, 0, horizon - area.bottom()));
    painter.setBrush(palette.near);
    painter.drawRect(QRectF(area.left(), horizon, area.width(), area.bottom() - horizon));
    const double unit = std::min(area.width(), area.height());
    const double x = area.left() + area.width() * dice.between(0.4, 0.6);
    const double half = unit * 0.13;
    const double top = horizon - unit * 0.52;
    QLinearGradient light(0, top, 0, horizon);
    light.setColorAt(0, palette.ink);
    light.setColorAt(1, palette.accent);
    painter.setBrush(light);
    painter.drawRect(QRectF(x - half, top, 2 * half, horizon - top));
    QLinearGradient floor(0, horizon, 0, area.bottom());
    floor.setColorAt(0, palette.accent);
    QColor dark = palette.near;
    dark.setAlpha(0);
    floor.setColorAt(1, dark);
    painter.setBrush(floor);
    const double slant = area.width() * dice.between(-0.25, 0.25);
    painter.drawPolygon(QPolygonF({{x - half, horizon},
                                   {x + half, horizon},
                                   {x + slant + 3.4 * half, area.bottom()},
                                   {x + slant - 3.4 * half, area.bottom()}}));
    figure(painter, {x, horizon + unit * 0.05}, unit * 0.34, palette.near);
}

void sea(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    const double unit = std::min(area.width(), area.height());
    const double x = area.left() + area.width() * dice.between(0.35, 0.65);
    const double horizon = area.top() + area.height() * 0.5;
    glow(painter, {x, horizon - unit * 0.02}, unit * 0.2, palette.accent);
    painter.setBrush(palette.far);
    painter.drawRect(QRectF(area.left(), horizon, area.width(), area.bottom() - horizon));
    painter.setBrush(palette.accent);
    for (int i = 0; i < 9; i++) {  // the light on the water
        const double width = unit * dice.between(0.05, 0.2);
        const double y = horizon + unit * (0.02 + 0.03 * i);
        painter.drawRoundedRect(
            QRectF(x - width + unit * dice.between(-0.03, 0.03), y, 2 * width, unit * 0.009),
            unit * 0.005, unit * 0.005);
    }
    constexpr int rows = 4;
    const double crest = area.width() / 6;
    for (int row = 0; row < rows; row++) {
        const double y = area.top() + area.height() * (0.68 + 0.08 * row);
        const double shift = -crest * dice.unit();
        QPainterPath wave(QPointF(area.left() - crest, area.bottom()));
        wave.lineTo(area.left() + shift - crest, y);
        for (double px = area.left() + shift - crest; px < area.right() + crest; px += crest)
            wave.quadTo({px + crest / 2, y + area.height() * 0.05}, {px + crest, y});
        wave.lineTo(area.right() + crest, area.bottom());
        wave.closeSubpath();
        painter.setBrush(blend(palette.far, palette.near, (row + 1.0) / rows));
        painter.drawPath(wave);
    }
}

/// A hut with a slit dome whose telescope looks out.
void dome(QPainter& painter, QPointF foot, double size, const Palette& palette, double turn) {
    painter.save();
    painter.translate(foot);
    painter.setBrush(palette.near);
    painter.drawRect(QRectF(-size * 0.5, -size * 0.55, size, size * 0.6));
    painter.drawChord(QRectF(-size * 0.55, -size * 1.1, size * 1.1, size * 1.1), 0, 180 * 16);
    painter.translate(0, -size * 0.55);
    painter.rotate(turn);
    painter.setBrush(palette.accent);
    painter.drawRect(QRectF(-size * 0.06, -size * 0.56, size * 0.12, size * 0.42));
    painter.setBrush(palette.near);
    painter.drawRect(QRectF(-size * 0.035, -size * 0.74, size * 0.07, size * 0.5));
    painter.restore();
}

void stars(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    const double unit = std::min(area.width(), area.height());
    painter.setBrush(palette.ink);
    for (int i = 0; i < 150; i++) {
        const QPointF at(area.left() + area.width() * dice.unit(),
                         area.top() + area.height() * 0.7 * dice.unit());
        const double radius = unit * dice.between(0.001, 0.0045);
        painter.drawEllipse(at, radius, radius);
    }
    QPolygonF figureOfStars;
    for (int i = 0; i < 7; i++)
        figureOfStars << QPointF(area.left() + area.width() * (0.14 + 0.12 * i),
                                 area.top() + area.height() * dice.between(0.12, 0.42));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette.accent, unit * 0.004));
    painter.drawPolyline(figureOfStars);
    painter.setPen(Qt::NoPen);
    for (const QPointF& star : figureOfStars) glow(painter, star, unit * 0.013, palette.accent);
    painter.setBrush(palette.far);
    painter.drawPath(rollingGround(area, 0.66, 0.03, dice));
    dome(painter,
         {area.left() + area.width() * dice.between(0.3, 0.7), area.top() + area.height() * 0.73},
         unit * 0.3, palette, dice.between(-38, 38));
    painter.setBrush(palette.near);
    painter.drawPath(rollingGround(area, 0.75, 0.02, dice));
}

void squares(QPainter& painter, const QRectF& area, const Palette& palette, Dice& dice) {
    painter.save();
    painter.translate(area.center() - QPointF(0, area.height() * 0.08));
    const double turn = dice.between(5, 11) * (dice.below(2) == 0 ? 1 : -1);
    double side = (area.width() + area.height()) * 0.75;
    constexpr int count = 16;
    for (int i = 0; i < count; i++) {
        const double part = static_cast<double>(i) / (count - 1);
        painter.setBrush(i % 2 == 0 ? blend(palette.near, palette.accent, part)
                                    : blend(palette.far, palette.skyBottom, part));
        painter.drawRect(QRectF(-side / 2, -side / 2, side, side));
        painter.rotate(turn);
        side *= 0.82;
    }
    painter.restore();
}

const std::vector<Motif>& motifsFor(const std::string& genre) {
    static const std::map<std::string, std::vector<Motif>, std::less<>> byGenre = {
        {"Science Fiction", {rings, stars, skyline}},
        {"Horror", {doorway, squares, hills}},
        {"Thriller", {squares, doorway, skyline}},
        {"Crime", {skyline, doorway, squares}},
        {"Mystery", {doorway, squares, sea}},
        {"Comedy", {rays, stars, hills}},
        {"Adventure", {sea, hills, rays}},
        {"Animation", {hills, rays, sea}},
        {"Fantasy", {stars, hills, rings}},
        {"Western", {hills, rays}},
        {"Documentary", {stars, rings, sea}},
        {"Drama", {sea, squares, skyline}}};
    static const std::vector<Motif> others = {hills, sea, rays};
    const auto found = byGenre.find(genre);
    return found == byGenre.end() ? others : found->second;
}

}  // namespace

QColor blend(const QColor& a, const QColor& b, double part) {
    const auto mix = [part](double from, double to) {
        return static_cast<int>(std::lround(from + (to - from) * part));
    };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

const Palette& palette(Dice& dice) {
    static const std::array<Palette, 9> palettes = {{
        {"#16213e", "#e94560", "#533483", "#0f1a33", "#ffd56b", "#fff4e0"},
        {"#264653", "#e9c46a", "#2a9d8f", "#16313b", "#f4a261", "#fdf6e3"},
        {"#3d0c11", "#d80032", "#780c28", "#1d060a", "#f9dec9", "#fff0e6"},
        {"#0b132b", "#5bc0be", "#3a506b", "#0a1023", "#f7f7c6", "#f2fbfb"},
        {"#2d1b4e", "#f08a5d", "#b83b5e", "#1f1135", "#f9ed69", "#fff9d6"},
        {"#1b4332", "#b7e4c7", "#40916c", "#0d281d", "#ffe066", "#f4fff8"},
        {"#22223b", "#c9ada7", "#4a4e69", "#17172b", "#f2e9e4", "#ffffff"},
        {"#5f0f40", "#fb8b24", "#9a031e", "#2e0620", "#ffd9a0", "#fff3e2"},
        {"#03506f", "#ffa372", "#0a7099", "#0a043c", "#ffe3b3", "#fff8ec"},
    }};
    return palettes[static_cast<std::size_t>(dice.below(static_cast<int>(palettes.size())))];
}

void paintScene(QPainter& painter, const QRectF& area, const std::string& genre,
                const Palette& palette, Dice& dice) {
    QLinearGradient sky(area.topLeft(), area.bottomLeft());
    sky.setColorAt(0, palette.skyTop);
    sky.setColorAt(0.75, palette.skyBottom);
    painter.setPen(Qt::NoPen);
    painter.fillRect(area, sky);
    const std::vector<Motif>& motifs = motifsFor(genre);
    motifs[static_cast<std::size_t>(dice.below(static_cast<int>(motifs.size())))](painter, area,
                                                                                  palette, dice);
}

}  // namespace marlet::catalogue::Artwork
