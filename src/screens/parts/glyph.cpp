#include "screens/parts/glyph.h"

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
    painter->setPen(QPen(color_, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPath(GlyphPaths::find(name_));
}

}  // namespace marlet
