#include "support/pgs_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>

#include "support/mkv_builder.h"

namespace marlet::test::pgs {

namespace {

void put8(Bytes& out, int value) {
    out.push_back(static_cast<std::uint8_t>(value));
}
void put16(Bytes& out, int value) {
    BigEndian::put16(out, static_cast<std::uint16_t>(value));
}

std::uint8_t level(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

constexpr int transparent = 0;

/// One stretch of a colour. The format has short ways for short ones and for colour 0.
void putRun(Bytes& out, std::uint8_t colour, int length) {
    if (colour != 0 && length < 3) {
        out.insert(out.end(), static_cast<std::size_t>(length), colour);
        return;
    }
    const int kind = colour == 0 ? 0 : 0x80;
    put8(out, 0);
    if (length < 64) {
        put8(out, kind | length);
    } else {
        put8(out, kind | 0x40 | length >> 8);
        put8(out, length);
    }
    if (colour != 0) put8(out, colour);
}

}  // namespace

Bytes lyingSegment(std::uint8_t type, std::uint16_t size, ByteView payload) {
    Bytes out{type};
    BigEndian::put16(out, size);
    append(out, payload);
    return out;
}

Bytes segment(std::uint8_t type, ByteView payload) {
    if (payload.size() > std::numeric_limits<std::uint16_t>::max())
        throw std::invalid_argument("no segment is that long");
    return lyingSegment(type, static_cast<std::uint16_t>(payload.size()), payload);
}

Bytes compositionSegment(const std::vector<Row>& rows, std::uint8_t state, const Plane& plane,
                         std::uint16_t number) {
    constexpr int framesASecond = 0x10;
    Bytes payload;
    put16(payload, plane.width);
    put16(payload, plane.height);
    put8(payload, framesASecond);
    put16(payload, number);
    put8(payload, state);
    put8(payload, 0);  // no change of the palette alone
    put8(payload, 0);  // palette
    put8(payload, static_cast<int>(rows.size()));
    int window_ = 0;
    for (const Row& row : rows) {
        put16(payload, row.id);
        put8(payload, window_++);
        put8(payload, (row.forced ? 0x40 : 0) | (row.cropped ? 0x80 : 0));
        put16(payload, row.x);
        put16(payload, row.y);
        if (row.cropped) append(payload, Bytes{0, 0, 0, 0, 0x0F, 0xFF, 0x0F, 0xFF});
    }
    return segment(composition, payload);
}

Bytes windowSegment(const std::vector<Rectangle>& windows) {
    Bytes payload;
    put8(payload, static_cast<int>(windows.size()));
    int id = 0;
    for (const Rectangle& one : windows) {
        put8(payload, id++);
        put16(payload, one.x);
        put16(payload, one.y);
        put16(payload, one.width);
        put16(payload, one.height);
    }
    return segment(window, payload);
}

Entry entryOf(std::uint8_t index, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
              std::uint8_t alpha) {
    constexpr double ofRed = 0.2126;
    constexpr double ofBlue = 0.0722;
    const double luma = ofRed * red + (1 - ofRed - ofBlue) * green + ofBlue * blue;
    constexpr double range = 224.0 / 255;
    return {index, level(16 + luma * 219 / 255),
            level(128 + (red - luma) / (2 * (1 - ofRed)) * range),
            level(128 + (blue - luma) / (2 * (1 - ofBlue)) * range), alpha};
}

Bytes paletteSegment(const std::vector<Entry>& entries) {
    Bytes payload{0, 0};  // palette, version
    for (const Entry& entry : entries)
        append(payload, Bytes{entry.index, entry.y, entry.cr, entry.cb, entry.alpha});
    return segment(palette, payload);
}

Bytes objectStart(int id, int width, int height, ByteView runs, std::uint8_t flags) {
    Bytes payload;
    put16(payload, id);
    put8(payload, 0);  // version
    put8(payload, flags);
    // The length counts the size of the picture; all parts are in it, but nobody needs it.
    const std::size_t length = runs.size() + 4;
    put8(payload, static_cast<int>(length >> 16 & 0xFF));
    put16(payload, static_cast<int>(length & 0xFFFF));
    put16(payload, width);
    put16(payload, height);
    append(payload, runs);
    return segment(object, payload);
}

Bytes objectPart(int id, ByteView runs, std::uint8_t flags) {
    Bytes payload;
    put16(payload, id);
    put8(payload, 0);
    put8(payload, flags);
    append(payload, runs);
    return segment(object, payload);
}

Bytes objectSegments(int id, int width, int height, ByteView runs, std::size_t most) {
    if (runs.size() <= most) return objectStart(id, width, height, runs);
    Bytes out = objectStart(id, width, height, runs.first(most), first);
    // FFmpeg goes by the length of the whole, which stands behind the head of the segment.
    const std::size_t length = runs.size() + 4;
    for (int i = 0; i < 3; i++)
        out[static_cast<std::size_t>(7 + i)] =
            static_cast<std::uint8_t>(length >> (16 - 8 * i) & 0xFF);
    for (std::size_t at = most; at < runs.size(); at += most) {
        const std::size_t size = std::min(most, runs.size() - at);
        append(out, objectPart(id, runs.subspan(at, size), at + size == runs.size() ? last : 0));
    }
    return out;
}

Bytes endSegment() {
    return segment(end, {});
}

Bytes runs(ByteView indices, int width) {
    constexpr int longest = 0x3FFF;
    const auto wide = static_cast<std::size_t>(width);
    Bytes out;
    for (std::size_t row = 0; row + wide <= indices.size(); row += wide) {
        const ByteView line = indices.subspan(row, wide);
        for (std::size_t at = 0; at < wide;) {
            std::size_t to = at + 1;
            while (to < wide && line[to] == line[at] && to - at < longest) to++;
            putRun(out, line[at], static_cast<int>(to - at));
            at = to;
        }
        append(out, Bytes{0, 0});
    }
    return out;
}

std::vector<Indexed> indexed(const std::vector<const Picture*>& pictures) {
    using Colour = std::array<std::uint8_t, 4>;
    constexpr std::size_t most = 255;
    // The highest bits of a colour; all that is transparent is one colour.
    const auto coarse = [](const std::uint8_t* pixel, int lost) {
        Colour colour{};
        if (pixel[3] >> lost == 0) return colour;
        for (std::size_t i = 0; i < 4; i++) colour[i] = static_cast<std::uint8_t>(pixel[i] >> lost);
        return colour;
    };
    for (int lost = 0; lost < 8; lost++) {
        std::map<Colour, Entry> entries{{Colour{}, {transparent, 16, 128, 128, 0}}};
        std::vector<Indexed> result;
        for (const Picture* picture : pictures) {
            Indexed& one = result.emplace_back();
            for (std::size_t at = 0; at + 4 <= picture->rgba.size(); at += 4) {
                const std::uint8_t* pixel = &picture->rgba[at];
                const Colour colour = coarse(pixel, lost);
                auto found = entries.find(colour);
                if (found == entries.end()) {
                    if (entries.size() > most) break;
                    const auto index = static_cast<std::uint8_t>(entries.size());
                    found =
                        entries
                            .emplace(colour, entryOf(index, pixel[0], pixel[1], pixel[2], pixel[3]))
                            .first;
                }
                one.indices.push_back(found->second.index);
            }
        }
        if (entries.size() > most) continue;
        std::vector<Entry> all;
        for (const auto& [colour, entry] : entries) all.push_back(entry);
        for (Indexed& one : result) one.entries = all;
        return result;
    }
    throw std::logic_error("one bit a colour always fits");
}

Bytes displaySet(const std::vector<Placed>& pictures, const Plane& plane, std::uint16_t number) {
    std::vector<Row> rows;
    std::vector<Rectangle> windows;
    std::vector<const Picture*> drawn;
    for (const Placed& one : pictures) {
        rows.push_back({static_cast<int>(rows.size()), one.x, one.y, one.forced});
        windows.push_back({one.x, one.y, one.picture.width, one.picture.height});
        drawn.push_back(&one.picture);
    }
    Bytes out = compositionSegment(rows, pictures.empty() ? normal : epochStart, plane, number);
    if (!pictures.empty()) {
        const std::vector<Indexed> coded = indexed(drawn);
        append(out, windowSegment(windows));
        append(out, paletteSegment(coded.front().entries));
        for (std::size_t i = 0; i < coded.size(); i++)
            append(out, objectSegments(static_cast<int>(i), drawn[i]->width, drawn[i]->height,
                                       runs(coded[i].indices, drawn[i]->width)));
    }
    append(out, endSegment());
    return out;
}

std::vector<Timed> stream(const std::vector<Line>& lines, const Plane& plane) {
    std::set<std::int64_t> times;
    for (const Line& line : lines) times.insert({line.startMs, line.endMs});
    std::vector<Timed> sets;
    for (const std::int64_t time : times) {
        std::vector<Placed> shown;
        for (const Line& line : lines)
            if (line.startMs <= time && time < line.endMs)
                shown.insert(shown.end(), line.pictures.begin(), line.pictures.end());
        sets.push_back({time, displaySet(shown, plane, static_cast<std::uint16_t>(sets.size()))});
    }
    return sets;
}

Bytes sup(const std::vector<Timed>& sets) {
    constexpr std::int64_t ticksPerMs = 90;
    Bytes out;
    for (const Timed& set : sets) {
        const ByteView all(set.segments);
        for (std::size_t at = 0; at + 3 <= all.size();) {
            const std::size_t size = 3 + BigEndian::u16(all, static_cast<std::int64_t>(at) + 1);
            append(out, viewOf("PG"));
            BigEndian::put32(out, static_cast<std::uint32_t>(set.ms * ticksPerMs));
            BigEndian::put32(out, 0);  // time of decoding
            append(out, all.subspan(at, std::min(size, all.size() - at)));
            at += size;
        }
    }
    return out;
}

Bytes film(const std::vector<Track>& tracks) {
    constexpr std::uint64_t subtitles = 17;
    Bytes entries;
    std::multimap<std::int64_t, Bytes> blocks;  // by time
    std::uint64_t number = 0;
    for (const Track& track : tracks) {
        number++;
        append(entries, mkv::entry(number, subtitles, "S_HDMV/PGS",
                                   {mkv::text(0x22B59C, track.language), track.more}));
        for (const Timed& set : track.sets)
            blocks.emplace(set.ms, mkv::simpleBlock(number, 0, set.segments));
    }
    Bytes clusters;
    for (const auto& [ms, block] : blocks)
        append(clusters, mkv::cluster(static_cast<std::uint64_t>(ms), {block}));
    const double length = blocks.empty() ? 0 : static_cast<double>(blocks.rbegin()->first);
    Bytes out = mkv::header();
    append(out, mkv::segment({mkv::info(length), mkv::tracks({entries}), clusters}));
    return out;
}

Bytes film(const std::vector<Timed>& sets) {
    return film({Track{.sets = sets}});
}

}  // namespace marlet::test::pgs
