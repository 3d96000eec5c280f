#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <string>

#include "catalogue/hash.h"

namespace marlet::catalogue::Artwork {

struct Palette {
    QColor skyTop;
    QColor skyBottom;
    QColor far;
    QColor near;
    QColor accent;
    QColor ink;  ///< of the words; stands out from near
};

const Palette& palette(Dice& dice);

/// Paints one of the flat scenes that suit a genre over the whole area.
void paintScene(QPainter& painter, const QRectF& area, const std::string& genre,
                const Palette& palette, Dice& dice);

/// A colour between two; 0 gives the first, 1 the second.
QColor blend(const QColor& a, const QColor& b, double part);

}  // namespace marlet::catalogue::Artwork
