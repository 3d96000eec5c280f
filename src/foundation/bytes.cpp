#include "foundation/bytes.h"

#include <algorithm>

namespace marlet {

ByteView slice(ByteView data, std::int64_t from, std::int64_t to) {
    const auto size = static_cast<std::int64_t>(data.size());
    from = std::clamp<std::int64_t>(from, 0, size);
    to = std::clamp<std::int64_t>(to, from, size);
    return data.subspan(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from));
}

std::string latin1ToUtf8(ByteView bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const std::uint8_t byte : bytes) {
        if (byte < 0x80) {
            text.push_back(static_cast<char>(byte));
        } else {
            text.push_back(static_cast<char>(0xC0 | (byte >> 6)));
            text.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
    return text;
}

Bytes utf8ToLatin1(std::string_view text) {
    Bytes bytes;
    bytes.reserve(text.size());
    const auto isContinuation = [&](std::size_t at) {
        return at < text.size() && (static_cast<std::uint8_t>(text[at]) & 0xC0) == 0x80;
    };
    for (std::size_t at = 0; at < text.size(); at++) {
        const auto lead = static_cast<std::uint8_t>(text[at]);
        if (lead < 0x80) {
            bytes.push_back(lead);
            continue;
        }
        // Only C2 and C3 lead to U+0080...U+00FF (RFC 3629).
        const bool fits = (lead == 0xC2 || lead == 0xC3) && isContinuation(at + 1);
        if (fits) {
            const auto low = static_cast<std::uint8_t>(text[at + 1]) & 0x3F;
            bytes.push_back(static_cast<std::uint8_t>((lead & 0x03) << 6 | low));
            at++;
            continue;
        }
        bytes.push_back('?');
        if (lead >= 0xC0)
            while (isContinuation(at + 1)) at++;
    }
    return bytes;
}

std::string toHex(ByteView bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0x0F]);
    }
    return text;
}

namespace BigEndian {
namespace {

bool isThere(ByteView data, std::int64_t at, std::size_t count) {
    return at >= 0 && data.size() >= count && static_cast<std::uint64_t>(at) <= data.size() - count;
}

template <typename Value>
Value read(ByteView data, std::int64_t at) {
    if (!isThere(data, at, sizeof(Value))) return 0;
    Value value = 0;
    for (std::size_t i = 0; i < sizeof(Value); i++)
        value = static_cast<Value>(value << 8 | data[static_cast<std::size_t>(at) + i]);
    return value;
}

template <typename Value>
void put(Bytes& out, Value value) {
    for (std::size_t i = sizeof(Value); i > 0; i--)
        out.push_back(static_cast<std::uint8_t>(value >> (8 * (i - 1))));
}

}  // namespace

std::uint16_t u16(ByteView data, std::int64_t at) {
    return read<std::uint16_t>(data, at);
}

std::uint32_t u32(ByteView data, std::int64_t at) {
    return read<std::uint32_t>(data, at);
}

std::uint64_t u64(ByteView data, std::int64_t at) {
    // The second half of an offset near the end of the number range must not overflow.
    const bool hasSecond = at <= static_cast<std::int64_t>(data.size());
    const std::uint64_t high = u32(data, at);
    const std::uint64_t low = hasSecond ? u32(data, at + 4) : 0;
    return high << 32 | low;
}

std::string fourCC(ByteView data, std::int64_t at) {
    if (!isThere(data, at, 4)) return {};
    return latin1ToUtf8(data.subspan(static_cast<std::size_t>(at), 4));
}

void put16(Bytes& out, std::uint16_t value) {
    put(out, value);
}
void put32(Bytes& out, std::uint32_t value) {
    put(out, value);
}
void put64(Bytes& out, std::uint64_t value) {
    put(out, value);
}

}  // namespace BigEndian
}  // namespace marlet
