// Streams that other programs read or write: FFmpeg draws the same, mkvmerge carries them along.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "convert/mkv_files.h"
#include "convert/pgs_reading.h"
#include "support/media.h"
#include "support/subtitle_pictures.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace pgs;

constexpr Plane plane{1280, 720};

Placed line(const std::string& text, const SubtitleStyle& style, int y, bool forced = false) {
    Placed placed = renderLines(text, style, plane.width, plane.height);
    placed.y = y;
    placed.forced = forced;
    return placed;
}
/// Three displays: a line, two that overlap in time, the second alone.
std::vector<Timed> lines() {
    return stream(
        {{1000, 3000, {line("– I'll go.\n– Où ça?", {.colour = 0xFFE000, .italic = true}, 500)}},
         {2000, 4000, {line("Far away", {.typeface = "DejaVu Serif"}, 60, true)}}},
        plane);
}
/// Each picture that FFmpeg shows of a .sup file, RGBA, without the empty screen.
std::vector<Bytes> drawnByFFmpeg(const std::filesystem::path& sup) {
    const std::string raw = runTool({"ffmpeg", "-v", "quiet", "-i", sup.string(), "-filter_complex",
                                     "[0:s:0]format=rgba[v]", "-map", "[v]", "-fps_mode",
                                     "passthrough", "-f", "rawvideo", "pipe:1"});
    constexpr std::size_t frame = std::size_t{plane.width} * plane.height * 4;
    std::vector<Bytes> pictures;
    for (std::size_t at = 0; at + frame <= raw.size(); at += frame) {
        Bytes picture = bytesOf(std::string_view(raw).substr(at, frame));
        const bool isEmpty = std::all_of(picture.begin(), picture.end(),
                                         [](std::uint8_t byte) { return byte == 0; });
        if (!isEmpty && (pictures.empty() || pictures.back() != picture))
            pictures.push_back(std::move(picture));
    }
    return pictures;
}
/// The whole screen of an event, RGBA.
Bytes drawn(const PGSParser::Event& event) {
    Bytes screen(std::size_t{plane.width} * plane.height * 4);
    for (const PGSParser::Obj& object : event.objects) {
        const PGSParser::Bitmap& bitmap = event.bitmaps.at(object.id);
        for (int y = 0; y < bitmap.h; y++)
            for (int x = 0; x < bitmap.w; x++) {
                const auto from = static_cast<std::size_t>(y * bitmap.w + x);
                const auto to =
                    static_cast<std::size_t>((object.y + y) * plane.width + object.x + x) * 4;
                const std::uint32_t colour = event.palette[bitmap.idx[from]];
                for (std::size_t i = 0; i < 4; i++)
                    screen[to + i] = static_cast<std::uint8_t>(colour >> (8 * i));
            }
    }
    return screen;
}
/// The greatest difference of two pictures where something is to be seen.
int difference(const Bytes& one, const Bytes& other) {
    int greatest = 0;
    for (std::size_t i = 0; i < one.size(); i++) {
        if (one[i | 3] == 0 && other[i | 3] == 0) continue;
        greatest = std::max(greatest, std::abs(one[i] - other[i]));
    }
    return greatest;
}

TEST(PGSOfOthers, LooksTheSameToFFmpeg) {
    const TempFolder folder;
    const auto sets = lines();
    const auto expected = drawnByFFmpeg(folder.write("lines.sup", sup(sets)));
    const auto events = eventsOf(sets);
    ASSERT_EQ(events.size(), 3U);
    ASSERT_EQ(expected.size(), 3U);
    for (std::size_t i = 0; i < 3; i++)
        // Of colours alone: alpha and place leave nothing to round.
        EXPECT_LE(difference(drawn(events[i]), expected[i]), 2) << i;
}

TEST(PGSOfOthers, LooksAsItWasDrawn) {
    const Placed placed = line("Hello", {.colour = 0x40C0FF}, 300);
    const auto events = eventsOf(stream({{1000, 2000, {placed}}}, plane));
    ASSERT_EQ(events.size(), 1U);
    const PGSParser::Bitmap& bitmap = events[0].bitmaps.at(0);
    ASSERT_EQ(bitmap.w, placed.picture.width);
    ASSERT_EQ(bitmap.h, placed.picture.height);
    EXPECT_EQ(events[0].objects.at(0), (PGSParser::Obj{0, placed.x, placed.y, false}));
    int greatest = 0;
    for (std::size_t i = 0; i < bitmap.idx.size(); i++) {
        const std::uint32_t colour = events[0].palette[bitmap.idx[i]];
        const std::uint8_t* pixel = &placed.picture.rgba[i * 4];
        if (pixel[3] < 16) continue;
        for (std::size_t part = 0; part < 4; part++)
            greatest = std::max(
                greatest, std::abs(static_cast<int>(colour >> (8 * part) & 0xFF) - pixel[part]));
    }
    EXPECT_LE(greatest, 18) << "an edge has more shades than a palette has entries";
}

TEST(PGSOfOthers, IsTheSameThroughMkvmergeCompressedOrNot) {
    const TempFolder folder;
    const auto sets = lines();
    const auto file = folder.write("lines.sup", sup(sets));
    const auto expected = eventsOf(sets);
    for (const std::string compression : {"zlib", "none"}) {
        const auto merged =
            merge(folder / (compression + ".mkv"),
                  {"--compression", "0:" + compression, "--language", "0:fre", file.string()});
        ASSERT_TRUE(merged);
        const MKVTrack& track = merged->tracks().at(0);
        EXPECT_EQ(track.codecID, "S_HDMV/PGS");
        EXPECT_EQ(merged->encodings(track.number).empty(), compression == "none");
        RunControl control;
        const auto events = PGSParser::events(*merged, track, control);
        ASSERT_EQ(events.size(), expected.size()) << compression;
        for (std::size_t i = 0; i < events.size(); i++) {
            EXPECT_EQ(events[i].startMs, expected[i].startMs);
            EXPECT_EQ(events[i].endMs, expected[i].endMs);
            EXPECT_EQ(events[i].forced, expected[i].forced);
            EXPECT_EQ(events[i].objects, expected[i].objects);
            EXPECT_EQ(events[i].palette, expected[i].palette);
            EXPECT_EQ(events[i].bitmaps, expected[i].bitmaps);
        }
        EXPECT_EQ(PGSParser::forcedStats(*merged, track), (PGSParser::ForcedStats{3, 2}))
            << "two of the three compositions show the forced line";
    }
}

}  // namespace
}  // namespace marlet::test
