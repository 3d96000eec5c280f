#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "convert/pgs_parser.h"
#include "foundation/bytes.h"

/// The segments that a Presentation Graphic Stream is made of: a type, a size of 16 bits and a
/// payload each, big-endian throughout.
namespace marlet::PGSSegments {

enum class Type : std::uint8_t { Palette = 20, Object = 21, Composition = 22, End = 128 };

struct Segment {
    Type type{};  ///< others are possible, and nothing to us
    ByteView payload;
};

constexpr std::size_t headSize = 3;

/// Takes the first segment off a frame; nothing at its end, or when the segment runs past it.
std::optional<Segment> next(ByteView& frame);

using Palette = std::array<std::uint32_t, 256>;  ///< 0xAABBGGRR
/// Sets the entries that the payload of a palette names.
void readPalette(ByteView payload, Palette& palette);

struct Composition {
    bool startsEpoch = false;
    std::vector<PGSParser::Obj> objects;  ///< those whose rows are there
};
/// The longest payload of a composition that tells anything: 255 objects, each cropped.
constexpr std::size_t longestComposition = 11 + std::size_t{255} * 16;
std::optional<Composition> readComposition(ByteView payload);

/// A piece of an object's picture.
struct ObjectPart {
    int id = 0;
    bool isFirst = false;
    bool isLast = false;
    int width = 0;   ///< of the picture; with the first only
    int height = 0;  ///< likewise
    ByteView runs;
};
std::optional<ObjectPart> readObject(ByteView payload);

}  // namespace marlet::PGSSegments
