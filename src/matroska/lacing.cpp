#include "matroska/lacing.h"

#include <algorithm>
#include <optional>

#include "matroska/ebml.h"

namespace marlet::Lacing {

namespace {

/// The sizes of all frames but the last, and the length of the head that tells them.
struct Told {
    std::vector<std::int64_t> sizes;
    std::size_t head = 1;
};

std::optional<Told> readXiph(ByteView head, std::size_t frameCount) {
    constexpr std::uint8_t goesOn = 255;
    Told told;
    while (told.sizes.size() + 1 < frameCount) {
        std::int64_t size = 0;
        while (told.head < head.size()) {
            const std::uint8_t byte = head[told.head++];
            size += byte;
            if (byte != goesOn) break;
        }
        told.sizes.push_back(size);
    }
    return told;
}

std::optional<Told> readFixed(std::uint64_t payloadSize, std::size_t frameCount) {
    Told told;
    told.sizes.assign(frameCount - 1, static_cast<std::int64_t>((payloadSize - 1) / frameCount));
    return told;
}

/// The first size, then what each next one is larger by, from the middle of its width's range.
std::optional<Told> readEBML(ByteView head, std::size_t frameCount) {
    // There is no size to tell for a frame alone.
    if (frameCount == 1) return std::nullopt;
    Told told;
    while (told.sizes.size() + 1 < frameCount) {
        const auto size = EBML::readSize(head, told.head);
        if (!size) return std::nullopt;
        told.head += size->width;
        auto value = static_cast<std::int64_t>(size->value);
        if (!told.sizes.empty())
            value += told.sizes.back() - ((std::int64_t{1} << (7 * size->width - 1)) - 1);
        told.sizes.push_back(value);
    }
    return told;
}

std::optional<Told> read(Kind kind, ByteView head, std::uint64_t size, std::size_t frameCount) {
    switch (kind) {
        case Kind::Xiph:
            return readXiph(head, frameCount);
        case Kind::Fixed:
            return readFixed(size, frameCount);
        case Kind::EBML:
            return readEBML(head, frameCount);
        case Kind::None:
            break;
    }
    return std::nullopt;
}

}  // namespace

std::size_t headLength(Kind kind, std::uint8_t first, std::uint64_t size) {
    constexpr std::uint64_t widestSize = 8;
    const std::uint64_t frameCount = std::uint64_t{first} + 1;
    std::uint64_t length = 2;
    if (kind == Kind::EBML) length = 1 + widestSize * frameCount;
    // More bytes of 255 than that tell more than the payload holds.
    if (kind == Kind::Xiph) length = 2 + frameCount + size / 255;
    return static_cast<std::size_t>(std::min<std::uint64_t>(length, longestHead));
}

std::vector<MKVBlock::Frame> frames(Kind kind, ByteView head, std::uint64_t offset,
                                    std::uint64_t size) {
    if (head.size() < 2 || size < 2) return {};
    const std::size_t frameCount = std::size_t{head[0]} + 1;
    auto told = read(kind, head, size, frameCount);
    if (!told) return {};

    auto left = static_cast<std::int64_t>(size) - static_cast<std::int64_t>(told->head);
    std::vector<MKVBlock::Frame> result;
    result.reserve(frameCount);
    std::uint64_t at = offset + told->head;
    const auto add = [&](std::int64_t frame) {
        if (frame < 0 || frame > left) return false;
        result.push_back({at, frame});
        at += static_cast<std::uint64_t>(frame);
        left -= frame;
        return true;
    };
    for (const std::int64_t frame : told->sizes)
        if (!add(frame)) return {};
    if (!add(left)) return {};
    return result;
}

}  // namespace marlet::Lacing
