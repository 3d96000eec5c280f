#include "screens/parts/glyph.h"

#include <QGuiApplication>
#include <QPainter>

#include "screens/parts/glyph_paths.h"

namespace marlet {

namespace {

constexpr qreal field = 24;
constexpr qreal stroke = 1.75;  // of the field

}  // namespace

Glyph::Glyph(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setSize(16);
    setAntialiasing(true);
    connect(qGuiApp, &QGuiApplication::layoutDirectionChanged, this, [this] { update(); });
}

void Glyph::setName(const QString& name) {
    if (name_ == name) return;
    name_ = name;
    update();
    Q_EMIT changed();
}

void Glyph::setColor(const QColor& color) {
    if (color_ == color) return;
    color_ = color;
    update();
    Q_EMIT changed();
}

void Glyph::setSize(qreal size) {
    if (size_ == size) return;
    size_ = size;
    setImplicitSize(size, size);
    Q_EMIT changed();
}

void Glyph::paint(QPainter* painter) {
    const qreal side = std::min(width(), height());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(side / field, side / field);
    if (QGuiApplication::isRightToLeft() && GlyphPaths::pointsOnward(name_)) {
        painter->translate(field, 0);
        painter->scale(-1, 1);
    }
    painter->setPen(QPen(color_, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPath(GlyphPaths::find(name_));
}

}  // namespace marlet
