#pragma once

#include <initializer_list>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"

// Boxes that are made anew (ISO/IEC 14496-12, 4.2).
namespace marlet::Boxes {

/// "moov too large" when the parts don't fit into a 32-bit size.
Bytes box(BoxCode type, std::initializer_list<ByteView> parts);
/// With a version and flags in front.
Bytes full(BoxCode type, std::uint8_t version, std::uint32_t flags,
           std::initializer_list<ByteView> parts);

/// Big-endian numbers behind each other.
Bytes u16s(std::initializer_list<std::uint32_t> values);
Bytes u32s(std::initializer_list<std::uint32_t> values);

/// The language of an `mdhd`: three letters of five bits (8.4.2).
std::uint16_t packedLanguage(std::string_view code);
/// `hdlr` (8.4.3).
Bytes handler(BoxCode type, std::string_view name);
/// The unity transformation (8.3.2), moved by whole pixels.
Bytes matrix();
/// The same for a picture of that size which is turned with the clock by 0 to 3 quarters and stays
/// at the same corner.
Bytes turned(int quarters, std::uint32_t width, std::uint32_t height);

}  // namespace marlet::Boxes
