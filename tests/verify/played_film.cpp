#include "verify/played_film.h"

#include <algorithm>
#include <array>
#include <map>
#include <stdexcept>

#include "foundation/digest.h"
#include "support/box_reader.h"

namespace marlet::test {

namespace {

using Lines = std::vector<std::string>;

std::string hexOf(ByteView bytes, std::int64_t from, std::int64_t to) {
    return toHex(slice(bytes, from, to));
}

/// A table of (count, value), a value a sample.
std::vector<std::uint32_t> unrolled(ByteView table) {
    std::vector<std::uint32_t> values;
    for (std::int64_t row = 0; row < BigEndian::u32(table, 4); row++) {
        const std::uint32_t count = BigEndian::u32(table, 8 + 8 * row);
        if (count > 20'000'000) throw std::runtime_error("an odd count");
        values.insert(values.end(), count, BigEndian::u32(table, 12 + 8 * row));
    }
    return values;
}

std::uint32_t descriptionOf(ByteView stsc, std::uint32_t chunk) {
    std::uint32_t index = 0;
    for (std::int64_t row = 0; row < BigEndian::u32(stsc, 4); row++)
        if (BigEndian::u32(stsc, 8 + 12 * row) <= chunk)
            index = BigEndian::u32(stsc, 16 + 12 * row);
    return index;
}

std::string valueAt(const std::vector<std::uint32_t>& values, std::size_t i) {
    return i < values.size() ? std::to_string(values[i]) : "-";
}

/// Number of a track to its position; what leads nowhere is left out.
std::map<std::uint32_t, int> positionsOf(ByteView moov) {
    std::map<std::uint32_t, int> positions;
    for (int t = 0; t < countOf(moov, "trak"); t++) {
        const ByteView tkhd = payloadOf(payloadOf(moov, "trak", t), "tkhd");
        positions.emplace(BigEndian::u32(tkhd, tkhd[0] == 1 ? 20 : 12), t);
    }
    return positions;
}

/// What is told of every track, chapter text or not.
void tellHeaders(ByteView trak, ByteView mdia, Lines& lines) {
    const ByteView tkhd = payloadOf(trak, "tkhd");
    const ByteView mdhd = payloadOf(mdia, "mdhd");
    if (tkhd[0] == 1 || mdhd[0] == 1) throw std::runtime_error("no header of version 0");
    lines.push_back("flags " + std::to_string(tkhd[3] & 3));
    lines.push_back("track dates " + hexOf(tkhd, 4, 12));
    lines.push_back("track rest " + hexOf(tkhd, 32, 84));
    lines.push_back("media dates " + hexOf(mdhd, 4, 12));
    lines.push_back("language " + hexOf(mdhd, 20, 24));
    lines.push_back("handler " + hexOf(payloadOf(mdia, "hdlr"), 8, 12));
}

void tellEdits(ByteView moov, ByteView trak, Lines& lines) {
    if (!hasChild(trak, "edts")) return;
    lines.push_back("edits " + toHex(payloadOf(payloadOf(trak, "edts"), "elst")) + " in " +
                    hexOf(payloadOf(moov, "mvhd"), 12, 16));
}

void tellReferences(ByteView moov, ByteView trak, Lines& lines) {
    if (!hasChild(trak, "tref")) return;
    const auto positions = positionsOf(moov);
    const ByteView tref = payloadOf(trak, "tref");
    for (std::int64_t at = 0; at + 8 <= static_cast<std::int64_t>(tref.size());) {
        const std::uint32_t size = BigEndian::u32(tref, at);
        if (size < 8) throw std::runtime_error("an odd reference");
        std::string line = "references " + BigEndian::fourCC(tref, at + 4);
        for (std::int64_t id = at + 8; id + 4 <= at + size; id += 4) {
            const auto position = positions.find(BigEndian::u32(tref, id));
            if (position != positions.end()) line += " " + std::to_string(position->second);
        }
        lines.push_back(line);
        at += size;
    }
}

bool isChapterText(ByteView moov, int track) {
    const ByteView trak = payloadOf(moov, "trak", track);
    if (BigEndian::fourCC(payloadOf(payloadOf(trak, "mdia"), "hdlr"), 8) != "text") return false;
    const auto positions = positionsOf(moov);
    for (int t = 0; t < countOf(moov, "trak"); t++) {
        const ByteView other = payloadOf(moov, "trak", t);
        if (!hasChild(other, "tref") || !hasChild(payloadOf(other, "tref"), "chap")) continue;
        const ByteView chap = payloadOf(payloadOf(other, "tref"), "chap");
        for (std::int64_t at = 0; at + 4 <= static_cast<std::int64_t>(chap.size()); at += 4) {
            const auto position = positions.find(BigEndian::u32(chap, at));
            if (position != positions.end() && position->second == track) return true;
        }
    }
    return false;
}

/// Times to a fiftieth of a second: a proof allows them to move by half of that.
void tellChapters(ByteView file, int track, ByteView mdia, Lines& lines) {
    const ByteView stbl = payloadOf(payloadOf(mdia, "minf"), "stbl");
    const std::uint64_t scale = BigEndian::u32(payloadOf(mdia, "mdhd"), 12);
    if (scale == 0) throw std::runtime_error("no time scale");
    const auto durations = unrolled(payloadOf(stbl, "stts"));
    std::uint64_t time = 0;
    std::size_t i = 0;
    for (const Bytes& sample : samplesOf(file, track)) {
        lines.push_back("chapter at " + std::to_string((time * 1000 / scale + 10) / 20) + ": " +
                        hexOf(sample, 2, 2 + BigEndian::u16(sample, 0)));
        time += i < durations.size() ? durations[i] : 0;
        i++;
    }
}

/// The bytes of `stsd` without those of its `esds` that mean nothing to a decoder: version and
/// flags of the box, the descriptor's own flags and priority, and a reserved bit (ISO/IEC
/// 14496-1, 7.2.6).
Bytes withoutLayout(ByteView stsd) {
    Bytes bytes(stsd.begin(), stsd.end());
    const Bytes name = bytesOf("esds");
    const auto found = std::ranges::search(bytes, name);
    if (found.empty()) return bytes;
    const auto at = found.end();
    std::fill(at, at + 4, std::uint8_t{0});
    // Four bytes of version, tag and size of five, the number of two: then the flags.
    at[11] &= 0xE0;
    // Tag and size of five, the object type: then the stream type, its direction and a reserved
    // bit.
    at[18] |= 0x03;
    return bytes;
}

void tellSamples(ByteView file, int track, ByteView mdia, Lines& lines) {
    const ByteView stbl = payloadOf(payloadOf(mdia, "minf"), "stbl");
    lines.push_back("time scale " + hexOf(payloadOf(mdia, "mdhd"), 12, 16));
    const auto durations = unrolled(payloadOf(stbl, "stts"));
    const auto offsets =
        hasChild(stbl, "ctts") ? unrolled(payloadOf(stbl, "ctts")) : std::vector<std::uint32_t>();
    const ByteView stsc = payloadOf(stbl, "stsc");
    const auto samples = samplesOf(file, track);
    lines.push_back("descriptions " + toHex(withoutLayout(payloadOf(stbl, "stsd"))));
    lines.push_back(hasChild(stbl, "stss")
                        ? "keyframes " + toHex(payloadOf(stbl, "stss").subspan(4))
                        : "all keyframes");
    std::size_t number = 0;
    std::uint32_t chunkNumber = 0;
    for (const StoredChunk& chunk : chunksOf(file, track)) {
        chunkNumber++;
        for (const std::uint32_t size : chunk.sampleSizes) {
            const Bytes& bytes = samples.at(number);
            if (bytes.size() != size) throw std::runtime_error("a sample past the end");
            lines.push_back("sample " + sha256Hex(bytes) + " for " + valueAt(durations, number) +
                            " shown at " + valueAt(offsets, number) + " by " +
                            std::to_string(descriptionOf(stsc, chunkNumber)));
            number++;
        }
    }
    lines.push_back(std::to_string(durations.size()) + " times, " + std::to_string(offsets.size()) +
                    " offsets");
    lines.push_back(std::to_string(number) + " of " +
                    std::to_string(BigEndian::u32(payloadOf(stbl, "stsz"), 8)) + " samples");
}

void tellTrack(ByteView file, ByteView moov, int track, Lines& lines) {
    const ByteView trak = payloadOf(moov, "trak", track);
    const ByteView mdia = payloadOf(trak, "mdia");
    lines.push_back("track");
    tellHeaders(trak, mdia, lines);
    if (isChapterText(moov, track)) {
        tellChapters(file, track, mdia, lines);
        return;
    }
    tellEdits(moov, trak, lines);
    tellReferences(moov, trak, lines);
    tellSamples(file, track, mdia, lines);
    const ByteView dref = payloadOf(payloadOf(payloadOf(mdia, "minf"), "dinf"), "dref");
    lines.push_back("media here " + std::to_string(dref[19] & 1));
}

/// Version 1: eight bytes, a count, then times in units of 100 ns and titles.
void tellChapterList(ByteView chpl, Lines& lines) {
    std::int64_t at = 9;
    for (int left = chpl[8]; left > 0; left--) {
        const std::int64_t title = at + 9;
        const std::int64_t next = title + slice(chpl, at + 8, at + 9)[0];
        lines.push_back("listed at " +
                        std::to_string((BigEndian::u64(chpl, at) / 10'000 + 10) / 20) + ": " +
                        hexOf(chpl, title, next));
        at = next;
    }
}

void tellTags(ByteView moov, Lines& lines) {
    if (!hasChild(moov, "udta")) return;
    const ByteView udta = payloadOf(moov, "udta");
    if (hasChild(udta, "meta"))
        lines.push_back("tags " + toHex(payloadOf(payloadOf(udta, "meta").subspan(4), "ilst")));
    if (hasChild(udta, "chpl")) tellChapterList(payloadOf(udta, "chpl"), lines);
}

}  // namespace

std::vector<std::string> playedFilm(ByteView file) {
    Lines lines;
    try {
        const ByteView moov = payloadOf(file, "moov");
        lines.push_back("movie " + hexOf(payloadOf(moov, "mvhd"), 20, 72));
        for (int track = 0; track < countOf(moov, "trak"); track++)
            tellTrack(file, moov, track, lines);
        tellTags(moov, lines);
    } catch (const std::exception& failure) {
        return {std::string("unreadable: ") + failure.what()};
    }
    return lines;
}

BytePlace placeOf(ByteView file, std::size_t at) {
    static constexpr std::array<std::string_view, 10> folders = {
        "moov", "trak", "mdia", "minf", "stbl", "udta", "meta", "edts", "tref", "dinf"};
    BytePlace place;
    std::size_t pos = 0;
    std::size_t end = file.size();
    while (pos + 8 <= end) {
        const std::size_t size = BigEndian::u32(file, static_cast<std::int64_t>(pos));
        if (size < 8 || at < pos) break;
        const std::string type = BigEndian::fourCC(file, static_cast<std::int64_t>(pos + 4));
        if (type == "trak") place.track++;
        if (at >= pos + size) {
            pos += size;
            continue;
        }
        place.box += (place.box.empty() ? "" : "/") + type;
        place.at = static_cast<std::int64_t>(at) - static_cast<std::int64_t>(pos + 8);
        if (place.at < 0 || std::ranges::find(folders, type) == folders.end()) break;
        end = pos + size;
        pos += 8 + (type == "meta" ? 4 : 0);
    }
    return place;
}

}  // namespace marlet::test
