#pragma once

#include <QPainterPath>
#include <QString>
#include <QStringList>

namespace marlet::GlyphPaths {

/// The strokes of a symbol on a field of 24 by 24; empty for a name that isn't known.
QPainterPath find(const QString& name);
QStringList names();
/// Whether it points along a row, and so the other way where rows begin at the right.
bool pointsOnward(const QString& name);

}  // namespace marlet::GlyphPaths
