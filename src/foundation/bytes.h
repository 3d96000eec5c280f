#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace marlet {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

inline ByteView viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
inline Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}
inline std::string textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
inline void append(Bytes& out, ByteView more) {
    out.insert(out.end(), more.begin(), more.end());
}

/// The part of data from `from` to `to` (offsets), clamped to what is there.
ByteView slice(ByteView data, std::int64_t from, std::int64_t to);
/// Whether so many bytes are there from `at` (an offset) on.
inline bool holds(ByteView data, std::int64_t at, std::int64_t count) {
    const auto size = static_cast<std::int64_t>(data.size());
    return at >= 0 && size >= count && at <= size - count;
}

/// ISO Latin-1 bytes as UTF-8 text, and back ('?' for what Latin-1 lacks).
std::string latin1ToUtf8(ByteView bytes);
Bytes utf8ToLatin1(std::string_view text);

std::string toHex(ByteView bytes);

/// Big-endian reading that forgives: what lies past the end reads as 0 or as an empty text.
namespace BigEndian {

std::uint16_t u16(ByteView data, std::int64_t at);
std::uint32_t u32(ByteView data, std::int64_t at);
/// Its two halves are read separately; a half past the end is 0.
std::uint64_t u64(ByteView data, std::int64_t at);
/// Four bytes as ISO Latin-1, given as UTF-8 ("©nam"); empty when they are not all there.
std::string fourCC(ByteView data, std::int64_t at);

void put16(Bytes& out, std::uint16_t value);
void put32(Bytes& out, std::uint32_t value);
void put64(Bytes& out, std::uint64_t value);

}  // namespace BigEndian
}  // namespace marlet
