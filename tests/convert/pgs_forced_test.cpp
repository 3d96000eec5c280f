// How many pictures of a track are forced, and what that costs.

#include <gtest/gtest.h>

#include <fstream>

#include "convert/mkv_files.h"
#include "convert/pgs_parser.h"
#include "convert/pgs_reading.h"
#include "support/mkv_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace pgs;
using PGSParser::ForcedStats;

ForcedStats statsOf(const std::vector<Bytes>& frames) {
    std::vector<Timed> sets;
    for (const Bytes& frame : frames)
        sets.push_back({static_cast<std::int64_t>(sets.size()) * 1000, frame});
    return OpenPictures(sets).forcedStats();
}
/// A display set with a picture of noise, which no compression makes small.
Bytes noisy(const std::vector<Row>& rows) {
    Bytes runs;
    std::uint32_t random = 1;
    for (int i = 0; i < 60'000; i++) {
        random = random * 1'664'525 + 1'013'904'223;
        runs.push_back(static_cast<std::uint8_t>(random >> 24 | 1));
    }
    return together({compositionSegment(rows), windowSegment({{0, 0, 300, 200}}),
                     paletteSegment({{1, 235, 128, 128, 255}}), objectStart(0, 300, 200, runs),
                     endSegment()});
}
std::vector<Timed> noisyFilm(int count) {
    std::vector<Timed> sets;
    for (int i = 0; i < count; i++) {
        sets.push_back({i * 4000, noisy({{0, 10, 10, i % 3 == 0}})});
        sets.push_back(clearAt(i * 4000 + 2000));
    }
    return sets;
}
/// Bytes that this process has read from files so far.
std::int64_t bytesRead() {
    std::ifstream counts("/proc/self/io");
    std::string name;
    std::int64_t value = 0;
    while (counts >> name >> value)
        if (name == "rchar:") return value;
    throw std::runtime_error("no counts of bytes read");
}

TEST(ForcedPictures, AreCountedByTheirCompositions) {
    EXPECT_EQ(statsOf({}), (ForcedStats{0, 0}));
    EXPECT_EQ(statsOf({noisy({{0}}), displaySet({}), noisy({{0, 1, 2, true}}), displaySet({})}),
              (ForcedStats{2, 1}));
}

TEST(ForcedPictures, AreThoseWithAnyForcedObject) {
    EXPECT_EQ(statsOf({noisy({{0}, {1, 0, 0, true}})}), (ForcedStats{1, 1}));
    EXPECT_EQ(statsOf({noisy({{0, 0, 0, false, true}, {1, 0, 0, true, true}})}),
              (ForcedStats{1, 1}))
        << "cropped ones take more room";
    EXPECT_EQ(statsOf({noisy({{0, 0x4040, 0x4040, false, true}, {0x4040, 0x4040, 0x4040}})}),
              (ForcedStats{1, 0}));
    std::vector<Row> many(255, Row{0, 0, 0, false, true});
    EXPECT_EQ(statsOf({noisy(many)}), (ForcedStats{1, 0}));
    many.back().forced = true;
    EXPECT_EQ(statsOf({noisy(many)}), (ForcedStats{1, 1})) << "the last of as many as there can be";
}

TEST(ForcedPictures, AreLookedForInTheFirstSegmentOnly) {
    EXPECT_EQ(statsOf({together({windowSegment({{0, 0, 9, 9}}), noisy({{0, 0, 0, true}})})}),
              (ForcedStats{0, 0}));
    EXPECT_EQ(statsOf({together({noisy({{0}}), noisy({{0, 0, 0, true}})})}), (ForcedStats{1, 0}));
    EXPECT_EQ(statsOf({together({displaySet({}), noisy({{0, 0, 0, true}})})}), (ForcedStats{0, 0}));
}

TEST(ForcedPictures, AreNotMadeUpByCompositionsThatLie) {
    Bytes composition = compositionSegment({{0}});
    composition[13] = 9;  // objects, while there is one
    EXPECT_EQ(statsOf({together({composition, segment(99, Bytes(200, 0x40))})}),
              (ForcedStats{1, 0}));
    for (std::size_t length = 0; length < 22; length++) {
        const Bytes whole = compositionSegment({{0, 0, 0, true}});
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(statsOf({cut}), (ForcedStats{length < 14 ? 0 : 1, 0})) << length;
    }
}

TEST(ForcedPictures, AreCountedInTracksThatAreCompressed) {
    const auto sets = noisyFilm(30);
    const TempFolder folder;
    const auto sup = folder.write("lines.sup", pgs::sup(sets));
    const auto merged = merge(folder / "film.mkv", {sup.string()});
    ASSERT_TRUE(merged);
    const MKVTrack& track = merged->tracks().at(0);
    EXPECT_EQ(track.codecID, "S_HDMV/PGS");
    ASSERT_EQ(merged->encodings(track.number).size(), 1U) << "mkvmerge compresses them unasked";

    const std::int64_t before = bytesRead();
    EXPECT_EQ(PGSParser::forcedStats(*merged, track), (ForcedStats{30, 10}));
    EXPECT_LT(bytesRead() - before, 60 * 1000) << "of " << merged->size();
    EXPECT_GT(merged->size(), 30 * 50'000U);
}

TEST(ForcedPictures, AreCountedInTracksWithStrippedHeaders) {
    const Bytes stripped = mkv::element(
        0x6D80, {mkv::element(0x6240, {mkv::element(0x5034, {mkv::number(0x4254, 3),
                                                             mkv::element(0x4255, Bytes{22})})})});
    std::vector<Timed> sets = noisyFilm(6);
    for (Timed& set : sets) set.segments.erase(set.segments.begin());
    const OpenPictures open(pgs::film({Track{.sets = sets, .more = stripped}}));
    EXPECT_EQ(open.forcedStats(), (ForcedStats{6, 2}));
    EXPECT_EQ(open.events().size(), 6U);
}

TEST(ForcedPictures, StopBeingCountedWhenNobodyWaits) {
    const OpenPictures open(noisyFilm(9));
    int calls = 0;
    const auto stats = PGSParser::forcedStats(*open.mkv, *open.mkv->track(1), [&](double share) {
        EXPECT_GE(share, 0);
        EXPECT_LE(share, 1);
        return ++calls < 5;
    });
    EXPECT_EQ(stats, (ForcedStats{2, 1}));
}

/// Twenty GiB that are holes but for the heads of clusters, blocks and compositions.
TEST(ForcedPictures, OfAWholeFilmAreCountedWithoutReadingAnyPicture) {
    constexpr std::uint64_t film = std::uint64_t{20} << 30;
    constexpr int clusters = 2000;
    constexpr std::size_t pictureBytes = 60'000;
    constexpr std::uint64_t subtitleID = 2;
    const TempFolder folder;
    const auto path = folder / "film.mkv";
    Bytes head = mkv::header();
    const Bytes inside =
        together({mkv::info(7'200'000), mkv::tracks({mkv::entry(1, 1, "V_MPEGH/ISO/HEVC"),
                                                     mkv::entry(subtitleID, 17, "S_HDMV/PGS")})});
    append(head, mkv::lying(0x18538067, film - head.size() - 12, inside));

    const std::uint64_t clusterBytes = (film - head.size()) / clusters - 12;
    {
        std::ofstream out(path, std::ios::binary);
        const auto put = [&](const Bytes& bytes) {
            out.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
        };
        put(head);
        std::uint64_t at = head.size();
        for (int i = 0; i < clusters; i++) {
            const Bytes time = mkv::number(0xE7, static_cast<std::uint64_t>(i) * 3600);
            const Bytes composition = compositionSegment({{0, 5, 5, i % 4 == 0}});
            const Bytes block = mkv::blockBody(subtitleID, 0, mkv::keyframe, composition);
            Bytes begin = mkv::lying(0x1F43B675, clusterBytes, time);
            append(begin, mkv::lying(0xA3, pictureBytes, block));
            const std::uint64_t blockEnd = at + begin.size() - block.size() + pictureBytes;
            const std::uint64_t end = at + 12 + clusterBytes;
            out.seekp(static_cast<std::streamoff>(at));
            put(begin);
            out.seekp(static_cast<std::streamoff>(blockEnd));
            put(mkv::lying(0xA3, end - blockEnd - 9, mkv::blockBody(1, 0, mkv::keyframe, {})));
            at = end;
        }
    }
    std::filesystem::resize_file(path, film);

    const auto mkv = MKVFile::open(path);
    ASSERT_TRUE(mkv);
    const std::int64_t before = bytesRead();
    EXPECT_EQ(PGSParser::forcedStats(*mkv, *mkv->track(static_cast<int>(subtitleID))),
              (ForcedStats{clusters, clusters / 4}));
    // The heads of a cluster, its time and two blocks, and the first bytes of the composition.
    EXPECT_LT(bytesRead() - before, clusters * 256);
}

}  // namespace
}  // namespace marlet::test
