#pragma once

#include <QImage>
#include <QSize>

#include "foundation/bytes.h"

namespace marlet {

/// Turns bytes from outside into a picture for the screen. Any thread.
namespace PictureDecoder {

inline constexpr std::size_t mostBytes = 24 * 1024 * 1024;
/// Of a picture before it is scaled; a small file may claim any size.
inline constexpr qint64 mostPixels = qint64{32} * 1024 * 1024;
inline constexpr int longestSide = 16384;

/// JPEG, PNG, WebP or BMP, scaled while it is decoded so that it just covers the wanted size and
/// is never enlarged; an empty size, or one of its sides at 0, wants no scaling by it. A null image
/// for what is no such picture, is cut short, or passes a limit.
QImage decode(ByteView data, const QSize& wanted);

}  // namespace PictureDecoder
}  // namespace marlet
