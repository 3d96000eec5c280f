#include "helpers/boxes.h"

#include <limits>

#include "foundation/errors.h"

namespace marlet::Boxes {

Bytes box(BoxCode type, std::initializer_list<ByteView> parts) {
    std::size_t size = 8;
    for (const ByteView part : parts) size += part.size();
    if (size > std::numeric_limits<std::uint32_t>::max()) throw MFError("moov too large");
    Bytes bytes;
    bytes.reserve(size);
    BigEndian::put32(bytes, static_cast<std::uint32_t>(size));
    BigEndian::put32(bytes, type);
    for (const ByteView part : parts) append(bytes, part);
    return bytes;
}

Bytes full(BoxCode type, std::uint8_t version, std::uint32_t flags,
           std::initializer_list<ByteView> parts) {
    Bytes head;
    BigEndian::put32(head, std::uint32_t{version} << 24 | flags);
    Bytes bytes = box(type, parts);
    bytes.insert(bytes.begin() + 8, head.begin(), head.end());
    Bytes size;
    BigEndian::put32(size, static_cast<std::uint32_t>(bytes.size()));
    std::copy(size.begin(), size.end(), bytes.begin());
    return bytes;
}

Bytes u16s(std::initializer_list<std::uint32_t> values) {
    Bytes bytes;
    for (const std::uint32_t value : values)
        BigEndian::put16(bytes, static_cast<std::uint16_t>(value));
    return bytes;
}

Bytes u32s(std::initializer_list<std::uint32_t> values) {
    Bytes bytes;
    for (const std::uint32_t value : values) BigEndian::put32(bytes, value);
    return bytes;
}

std::uint16_t packedLanguage(std::string_view code) {
    std::uint32_t packed = 0;
    for (const char letter : code) packed = packed << 5 | (static_cast<std::uint8_t>(letter) & 31U);
    return static_cast<std::uint16_t>(packed);
}

Bytes handler(BoxCode type, std::string_view name) {
    Bytes text = bytesOf(name);
    text.push_back(0);
    return full(boxCode("hdlr"), 0, 0, {u32s({0, type, 0, 0, 0}), text});
}

Bytes matrix() {
    return turned(0, 0, 0);
}

Bytes turned(int quarters, std::uint32_t width, std::uint32_t height) {
    constexpr std::uint32_t one = 0x10000, minus = 0xFFFF0000, end = 0x40000000;
    const std::uint32_t w = width << 16, h = height << 16;
    switch (quarters) {
        case 1:
            return u32s({0, one, 0, minus, 0, 0, h, 0, end});
        case 2:
            return u32s({minus, 0, 0, 0, minus, 0, w, h, end});
        case 3:
            return u32s({0, minus, 0, one, 0, 0, 0, w, end});
        default:
            return u32s({one, 0, 0, 0, one, 0, 0, 0, end});
    }
}

}  // namespace marlet::Boxes
