#include "support/mkv_builder.h"

#include <bit>

#include "support/box_builder.h"

namespace marlet::test::mkv {

namespace {

Bytes shortest(std::uint64_t value) {
    Bytes bytes = be64(value);
    while (bytes.size() > 1 && bytes.front() == 0) bytes.erase(bytes.begin());
    return bytes;
}

/// The value with a marker bit, so many bytes wide.
Bytes marked(std::uint64_t value, std::size_t width) {
    const Bytes wide = be64(value | std::uint64_t{1} << (7 * width));
    return {wide.end() - static_cast<std::ptrdiff_t>(width), wide.end()};
}

Bytes sizeOf(std::uint64_t value) {
    std::size_t width = 1;
    while (value >= (std::uint64_t{1} << (7 * width)) - 1) width++;
    return marked(value, width);
}

Bytes joinedList(std::initializer_list<Bytes> parts) {
    return joined(std::vector<Bytes>(parts));
}

Bytes xiphSize(std::size_t size) {
    Bytes bytes(size / 255, 255);
    bytes.push_back(static_cast<std::uint8_t>(size % 255));
    return bytes;
}

Bytes ebmlSizes(const std::vector<Bytes>& frames) {
    Bytes head = sizeOf(frames[0].size());
    for (std::size_t i = 1; i + 1 < frames.size(); i++) {
        constexpr std::int64_t middle = (1 << 13) - 1;  // two bytes wide
        const auto more = static_cast<std::int64_t>(frames[i].size()) -
                          static_cast<std::int64_t>(frames[i - 1].size());
        append(head, marked(static_cast<std::uint64_t>(more + middle), 2));
    }
    return head;
}

}  // namespace

Bytes element(std::uint32_t id, ByteView payload) {
    return joined({shortest(id), sizeOf(payload.size()), Bytes(payload.begin(), payload.end())});
}

Bytes element(std::uint32_t id, std::initializer_list<Bytes> children) {
    return element(id, joinedList(children));
}

Bytes endless(std::uint32_t id, ByteView payload, std::size_t width) {
    const std::uint64_t ones = (std::uint64_t{1} << (7 * width)) - 1;
    return joined({shortest(id), marked(ones, width), Bytes(payload.begin(), payload.end())});
}

Bytes lying(std::uint32_t id, std::uint64_t size, ByteView payload) {
    return joined({shortest(id), marked(size, 8), Bytes(payload.begin(), payload.end())});
}

Bytes number(std::uint32_t id, std::uint64_t value) {
    return element(id, shortest(value));
}

Bytes real(std::uint32_t id, double value) {
    return element(id, be64(std::bit_cast<std::uint64_t>(value)));
}

Bytes text(std::uint32_t id, std::string_view value) {
    return element(id, viewOf(value));
}

Bytes header() {
    return element(0x1A45DFA3, text(0x4282, "matroska"));
}

Bytes segment(std::initializer_list<Bytes> children) {
    return element(0x18538067, children);
}

Bytes info(double duration) {
    return element(0x1549A966, {number(0x2AD7B1, 1'000'000), real(0x4489, duration)});
}

Bytes tracks(std::initializer_list<Bytes> entries) {
    return element(0x1654AE6B, entries);
}

Bytes entry(std::uint64_t trackNumber, std::uint64_t type, std::string_view codec,
            std::initializer_list<Bytes> more) {
    return element(
        0xAE, {number(0xD7, trackNumber), number(0x83, type), text(0x86, codec), joinedList(more)});
}

Bytes soundFile(std::initializer_list<Bytes> children, std::initializer_list<Bytes> entryMore) {
    return joined({header(), segment({info(), tracks({entry(1, 2, "A_AC3", entryMore)}),
                                      joinedList(children)})});
}

Bytes cluster(std::uint64_t time, std::initializer_list<Bytes> children) {
    return element(0x1F43B675, {number(0xE7, time), joinedList(children)});
}

Bytes blockBody(std::uint64_t track, std::int16_t time, std::uint8_t flags, ByteView data) {
    return joined({sizeOf(track), be16(static_cast<std::uint16_t>(time)), Bytes{flags},
                   Bytes(data.begin(), data.end())});
}

Bytes simpleBlock(std::uint64_t track, std::int16_t time, ByteView data, std::uint8_t flags) {
    return element(0xA3, blockBody(track, time, flags, data));
}

Bytes laced(Lace lace, const std::vector<Bytes>& frames) {
    Bytes head = {static_cast<std::uint8_t>(frames.size() - 1)};
    if (lace == Lace::Xiph)
        for (std::size_t i = 0; i + 1 < frames.size(); i++)
            append(head, xiphSize(frames[i].size()));
    if (lace == Lace::EBML && frames.size() > 1) append(head, ebmlSizes(frames));
    return joined({head, joined(frames)});
}

Bytes lacedBlock(std::uint64_t track, std::int16_t time, Lace lace,
                 const std::vector<Bytes>& frames) {
    return simpleBlock(track, time, laced(lace, frames),
                       static_cast<std::uint8_t>(keyframe | static_cast<std::uint8_t>(lace)));
}

Bytes chapters(std::initializer_list<Bytes> editions) {
    return element(0x1043A770, editions);
}

Bytes edition(std::initializer_list<Bytes> atoms) {
    return element(0x45B9, atoms);
}

Bytes atom(std::uint64_t start, std::string_view title, std::initializer_list<Bytes> more) {
    return element(0xB6,
                   {number(0x91, start), element(0x80, {text(0x85, title), text(0x437C, "eng")}),
                    joinedList(more)});
}

}  // namespace marlet::test::mkv
