#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"

// Synthetic Matroska bytes (RFC 8794, RFC 9559), element by element.
namespace marlet::test::mkv {

/// With the shortest size.
Bytes element(std::uint32_t id, ByteView payload);
Bytes element(std::uint32_t id, std::initializer_list<Bytes> children);
/// Of unknown size, told in so many bytes.
Bytes endless(std::uint32_t id, ByteView payload, std::size_t width = 1);
/// A head with a size of 8 bytes that may lie, and a payload.
Bytes lying(std::uint32_t id, std::uint64_t size, ByteView payload = {});
/// Shortest big-endian, one byte at least.
Bytes number(std::uint32_t id, std::uint64_t value);
Bytes real(std::uint32_t id, double value);
Bytes text(std::uint32_t id, std::string_view value);

// --- a file ---
Bytes header();
Bytes segment(std::initializer_list<Bytes> children);
/// Info with a scale of a millisecond and a duration in it.
Bytes info(double duration = 1000);
Bytes tracks(std::initializer_list<Bytes> entries);
/// Number, type and codec, then what else is given.
Bytes entry(std::uint64_t number, std::uint64_t type, std::string_view codec,
            std::initializer_list<Bytes> more = {});
/// Header, Segment, Info and one sound track of the number 1, then what is given.
Bytes soundFile(std::initializer_list<Bytes> children, std::initializer_list<Bytes> entryMore = {});

Bytes cluster(std::uint64_t time, std::initializer_list<Bytes> children);
inline constexpr std::uint8_t keyframe = 0x80;
enum class Lace : std::uint8_t { None = 0, Xiph = 2, Fixed = 4, EBML = 6 };
/// Track number, relative time, flags, data: the payload of a block.
Bytes blockBody(std::uint64_t track, std::int16_t time, std::uint8_t flags, ByteView data);
Bytes simpleBlock(std::uint64_t track, std::int16_t time, ByteView data,
                  std::uint8_t flags = keyframe);
Bytes laced(Lace lace, const std::vector<Bytes>& frames);
Bytes lacedBlock(std::uint64_t track, std::int16_t time, Lace lace,
                 const std::vector<Bytes>& frames);

Bytes chapters(std::initializer_list<Bytes> editions);
Bytes edition(std::initializer_list<Bytes> atoms);
/// Start in nanoseconds, one title in English, then what else is given.
Bytes atom(std::uint64_t start, std::string_view title, std::initializer_list<Bytes> more = {});

}  // namespace marlet::test::mkv
