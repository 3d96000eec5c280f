#include "mp4/image_info.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace marlet {

namespace {

// PNG is ISO/IEC 15948, JPEG is ISO/IEC 10918-1.

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

std::uint32_t littleEndian(ByteView image, std::int64_t at, int bytes) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : slice(image, at, at + bytes))
        value = value >> 8 | std::uint32_t{byte} << 24;
    return value >> (8 * (4 - bytes));
}

std::optional<Size> sizeOfPNG(ByteView image) {
    constexpr std::int64_t header = 16;  // behind the signature and the header chunk's own start
    if (!holds(image, header, 8)) return std::nullopt;
    return Size{BigEndian::u32(image, header), BigEndian::u32(image, header + 4)};
}

std::optional<Size> sizeOfGIF(ByteView image) {
    if (!holds(image, 6, 4)) return std::nullopt;
    return Size{littleEndian(image, 6, 2), littleEndian(image, 8, 2)};
}

std::optional<Size> sizeOfBMP(ByteView image) {
    if (!holds(image, 18, 8)) return std::nullopt;
    const std::uint32_t height = littleEndian(image, 22, 4);
    constexpr std::uint32_t topDown = 0x8000'0000;  // a negative height
    return Size{littleEndian(image, 18, 4), height >= topDown ? 0 - height : height};
}

/// A start of frame: C0 to CF without the tables and the arithmetic conditioning among them.
bool isStartOfFrame(std::uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Markers that stand alone: they have no length behind them.
bool standsAlone(std::uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

std::optional<Size> sizeOfJPEG(ByteView image) {
    constexpr std::uint8_t startOfScan = 0xDA;
    std::int64_t at = 2;
    while (holds(image, at, 4)) {
        const std::uint8_t marker = image[static_cast<std::size_t>(at) + 1];
        if (image[static_cast<std::size_t>(at)] != 0xFF || marker == startOfScan) break;
        if (marker == 0xFF) {  // fill byte
            at++;
        } else if (standsAlone(marker)) {
            at += 2;
        } else if (isStartOfFrame(marker)) {
            if (!holds(image, at, 9)) break;
            return Size{BigEndian::u16(image, at + 7), BigEndian::u16(image, at + 5)};
        } else {
            at += 2 + std::max<std::int64_t>(BigEndian::u16(image, at + 2), 2);
        }
    }
    return std::nullopt;
}

struct Kind {
    std::string_view name;
    std::string_view signature;
    std::optional<Size> (*size)(ByteView image);
};

constexpr std::array<Kind, 4> kinds = {{
    {"JPEG", "\xFF\xD8\xFF", sizeOfJPEG},
    {"PNG", "\x89PNG\r\n\x1A\n", sizeOfPNG},
    {"GIF", "GIF8", sizeOfGIF},
    {"BMP", "BM", sizeOfBMP},
}};

bool startsWith(ByteView image, std::string_view signature) {
    return image.size() >= signature.size() &&
           std::ranges::equal(image.first(signature.size()), viewOf(signature));
}

}  // namespace

std::string imageInfo(ByteView image) {
    const std::string bytes = std::to_string(image.size()) + " bytes";
    for (const Kind& kind : kinds) {
        if (!startsWith(image, kind.signature)) continue;
        const auto size = kind.size(image);
        if (!size) return std::string(kind.name) + ", " + bytes;
        return std::string(kind.name) + " " + std::to_string(size->width) + "x" +
               std::to_string(size->height) + ", " + bytes;
    }
    return "image of unknown kind, " + bytes;
}

}  // namespace marlet
