#pragma once

#include <QPainterPath>
#include <QString>
#include <QStringList>

namespace marlet::GlyphPaths {

/// The strokes of a symbol on a field of 24 by 24; empty for a name that isn't known.
QPainterPath find(const QString& name);
QStringList names();

}  // namespace marlet::GlyphPaths
