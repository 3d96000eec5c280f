#include "write/track_film.h"

#include <algorithm>
#include <stdexcept>

#include "support/box_builder.h"
#include "support/box_reader.h"

namespace marlet::test {

namespace {

Bytes descriptor(std::uint8_t tag, const Bytes& body, Sizes sizes) {
    Bytes bytes = {tag};
    if (sizes == Sizes::Padded) append(bytes, Bytes{0x80, 0x80, 0x80});
    bytes.push_back(static_cast<std::uint8_t>(body.size()));
    append(bytes, body);
    return bytes;
}

}  // namespace

Bytes esdsBox(std::uint16_t id, Sizes sizes, std::uint8_t channels) {
    // AAC LC, 48 kHz.
    const Bytes config = {0x11, static_cast<std::uint8_t>(0x80 | channels << 3)};
    const Bytes decoder = joined(
        {Bytes{0x40, 0x15}, Bytes(3), be32(128000), be32(128000), descriptor(5, config, sizes)});
    const Bytes stream =
        joined({be16(id), Bytes{0}, descriptor(4, decoder, sizes), descriptor(6, Bytes{2}, sizes)});
    return fullBox("esds", 0, 0, descriptor(3, stream, sizes));
}

Bytes soundEntry(const Bytes& boxes, std::uint16_t version, std::uint16_t channels) {
    const std::size_t quickTime[] = {0, 16, 36};
    return joined({Bytes(6), be16(1), be16(version), Bytes(6), be16(channels), be16(16), Bytes(4),
                   be32(48000U << 16), Bytes(quickTime[version]), boxes});
}

Bytes pictureEntry(const Bytes& boxes) {
    return joined({Bytes(6), be16(1), Bytes(70), boxes});
}

Bytes systemEntry(const Bytes& boxes) {
    return joined({Bytes(6), be16(1), boxes});
}

ByteView trackBox(ByteView file, int track, const std::vector<std::string_view>& path) {
    ByteView found = payloadOf(payloadOf(file, "moov"), "trak", track);
    for (const std::string_view type : path) found = payloadOf(found, type);
    return found;
}

void patchTrack(Bytes& file, int track, const std::vector<std::string_view>& path,
                std::size_t offset, ByteView with) {
    const ByteView found = trackBox(file, track, path);
    if (offset + with.size() > found.size()) throw std::out_of_range("patch past the box");
    std::copy(with.begin(), with.end(),
              file.begin() + (found.data() - file.data()) + static_cast<std::ptrdiff_t>(offset));
}

std::size_t streamIDAt(ByteView file, int track) {
    const ByteView stsd = trackBox(file, track, {"mdia", "minf", "stbl", "stsd"});
    const Bytes name = bytesOf("esds");
    const auto esds = std::search(stsd.begin(), stsd.end(), name.begin(), name.end());
    if (esds == stsd.end()) throw std::runtime_error("no esds");
    // Behind the name: version and flags, the tag, and a size of one byte or four.
    const auto at = static_cast<std::size_t>(esds - stsd.begin()) + 4 + 4 + 1;
    return static_cast<std::size_t>(stsd.data() - file.data()) + at + (stsd[at] == 0x80 ? 4 : 1);
}

}  // namespace marlet::test
