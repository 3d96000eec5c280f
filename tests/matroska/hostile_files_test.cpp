// Files that lie. Each ends in a small answer, in small memory, in next to no time.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "matroska/mkv_file.h"
#include "matroska/mkv_reading.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace mkv;

constexpr std::uint64_t gib = std::uint64_t{1} << 30;

/// These bytes, then nothing for so many GiB, of which the disk keeps none.
std::filesystem::path largeFile(const TempFolder& folder, ByteView front) {
    const auto path = folder.write("large.mkv", front);
    std::filesystem::resize_file(path, 8 * gib);
    return path;
}

/// By how much the greatest memory of this process has grown since the object was made.
class Growth {
public:
    std::int64_t mebibytes() const { return (peak() - before_) / 1024; }

private:
    static std::int64_t peak() {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    }
    std::int64_t before_ = peak();
};

TEST(HostileMatroska, ATrackWhosePrivateClaimsTheWholeFileGetsAPart) {
    const TempFolder folder;
    const Bytes entryHead = joined({number(0xD7, 1), number(0x83, 2)});
    const Bytes lie = joined({header(), lying(0x18538067, 8 * gib), lying(0x1654AE6B, 7 * gib),
                              lying(0xAE, 6 * gib, joined({entryHead, lying(0x63A2, 4 * gib)}))});
    const Growth growth;
    const auto file = MKVFile::open(largeFile(folder, lie));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->tracks()[0].codecPrivate.size(), std::size_t{32} << 20);
    EXPECT_LT(growth.mebibytes(), 300);
}

TEST(HostileMatroska, PrivatesOfManyTracksShareOneLimit) {
    const TempFolder folder;
    constexpr std::uint64_t privateSize = std::uint64_t{30} << 20;
    constexpr std::uint64_t entrySize = privateSize + 11;
    const Bytes front =
        joined({lying(0x18538067, 8 * gib), lying(0x1654AE6B, 6 * (entrySize + 9))});
    const auto path = largeFile(folder, front);
    std::fstream out(path, std::ios::in | std::ios::out | std::ios::binary);
    for (std::uint64_t i = 0; i < 6; i++) {
        const Bytes head = lying(0xAE, entrySize, lying(0x63A2, privateSize));
        out.seekp(static_cast<std::streamoff>(front.size() + i * (entrySize + 9)));
        out.write(reinterpret_cast<const char*>(head.data()),
                  static_cast<std::streamsize>(head.size()));
    }
    out.close();

    const Growth growth;
    const auto file = MKVFile::open(path);
    ASSERT_EQ(file->tracks().size(), 6U);
    std::size_t all = 0;
    for (const MKVTrack& track : file->tracks()) all += track.codecPrivate.size();
    EXPECT_EQ(all, std::size_t{128} << 20);
    EXPECT_LT(growth.mebibytes(), 300);
}

TEST(HostileMatroska, AThousandTracksAreRead) {
    Bytes entries;
    for (std::uint64_t i = 1; i <= 1000; i++) append(entries, entry(i, 2, "A_AC3"));
    const OpenMKV file(segment({element(0x1654AE6B, entries)}));
    ASSERT_EQ(file->tracks().size(), 1000U);
    EXPECT_EQ(file->tracks()[999].number, 1000);
}

TEST(HostileMatroska, TracksAndChaptersBeyondAllMeasureAreCut) {
    Bytes entries;
    for (int i = 0; i < 70'000; i++) append(entries, Bytes{0xAE, 0x80});
    EXPECT_EQ(OpenMKV(segment({element(0x1654AE6B, entries)}))->tracks().size(), 65'536U);
    Bytes atoms;
    for (int i = 0; i < 70'000; i++) append(atoms, Bytes{0xB6, 0x80});
    const OpenMKV file(soundFile(
        {chapters({element(0x45B9, atoms)}), chapters({edition({element(0xB6, atoms)})})}));
    EXPECT_LE(file->chapters().size(), 65'537U);
}

TEST(HostileMatroska, AFrameThatClaimsTheWholeFileIsEmpty) {
    const TempFolder folder;
    const Bytes block = joined({Bytes{0xA3, 0x01, 0, 0, 1, 0, 0, 0, 0}, Bytes{0x81, 0, 0, 0x80}});
    const Bytes front = joined({header(), lying(0x18538067, 8 * gib), tracks({entry(1, 2, "A")}),
                                lying(0x1F43B675, 7 * gib, block)});
    const Growth growth;
    const auto file = MKVFile::open(largeFile(folder, front));
    ASSERT_TRUE(file);
    int seen = 0;
    file->forEachBlock({}, {}, [&](const MKVBlock& block_) {
        seen++;
        EXPECT_GT(block_.frames.at(0).size, std::int64_t{4'000'000'000});
        EXPECT_EQ(file->data(block_), std::vector<Bytes>{Bytes{}});
        return true;
    });
    EXPECT_EQ(seen, 1);
    EXPECT_LT(growth.mebibytes(), 300);
}

TEST(HostileMatroska, AFrameThatRunsPastTheEndIsWhatIsThere) {
    const Bytes front = joined(
        {header(), endless(0x18538067,
                           joined({tracks({entry(1, 2, "A")}),
                                   lying(0x1F43B675, 1000,
                                         lying(0xA3, 900, bytesOf("\x81\x01\x02\x80rest")))}),
                           8)});
    const OpenMKV file(front);
    EXPECT_EQ(file.texts(), std::vector<std::string>{"rest"});
    EXPECT_EQ(file.blocks().at(0).frames.at(0).size, 896);
}

TEST(HostileMatroska, ElementsThatReachOutOfTheirParentsAreCutThere) {
    // Each Tracks holds an entry that claims all that follows. Walked as they claim, so many of
    // them would take hours.
    Bytes content;
    for (int i = 0; i < 40'000; i++) {
        const Bytes claim = lying(0xAE, 0xFFFFFFFF, number(0xD7, 1));
        append(content, element(0x1654AE6B, claim));
    }
    const OpenMKV file(segment({content}));
    EXPECT_EQ(file->tracks().size(), 40'000U);

    Bytes atoms;
    for (int i = 0; i < 40'000; i++) append(atoms, element(0xB6, lying(0xB6, 0xFFFFFFFF)));
    EXPECT_EQ(OpenMKV(soundFile({chapters({element(0x45B9, atoms)})}))->chapters().size(), 65'536U);
}

TEST(HostileMatroska, SizesOfNearly56BitsOverflowNothing) {
    const std::uint64_t most = (std::uint64_t{1} << 56) - 2;
    const Bytes track = tracks({entry(1, 2, "A")});
    EXPECT_FALSE(OpenMKV(joined({lying(0xEC, most), segment({track})})));
    const OpenMKV segmentLies(joined({lying(0x18538067, most, track)}));
    EXPECT_TRUE(segmentLies);
    const OpenMKV clusterLies(
        joined({lying(0x18538067, most,
                      joined({track, lying(0x1F43B675, most, simpleBlock(1, 0, bytesOf("a")))}))}));
    EXPECT_EQ(clusterLies.texts(), std::vector<std::string>{"a"});
    const OpenMKV laceLies(soundFile({cluster(
        0,
        {simpleBlock(1, 0, Bytes{2, 0x01, 255, 255, 255, 255, 255, 255, 254, 0xFF, 'a'}, 0x86)})}));
    EXPECT_TRUE(laceLies.blocks().at(0).frames.empty());
}

TEST(HostileMatroska, AFileThatNamesManyTracksInItsBlocksIsCountedWithinBounds) {
    Bytes blocks;
    for (std::uint64_t i = 1; i <= 70'000; i++) append(blocks, simpleBlock(i, 0, Bytes{1}));
    const OpenMKV file(soundFile({cluster(0, {blocks})}));
    EXPECT_EQ(file->blockStats().size(), 65'536U);
}

TEST(HostileMatroska, AFileThatShrinksWhileItIsReadEndsThere) {
    const TempFolder folder;
    const auto path =
        folder.write("a.mkv", soundFile({cluster(0, {simpleBlock(1, 0, Bytes(5000, 'x'))})}));
    const auto file = MKVFile::open(path);
    MKVBlock block;
    file->forEachBlock({}, {}, [&](const MKVBlock& one) {
        block = one;
        return true;
    });
    std::filesystem::resize_file(path, block.frames.at(0).offset + 10);
    EXPECT_EQ(file->data(block).at(0), Bytes(10, 'x'));
    std::filesystem::resize_file(path, 10);
    EXPECT_TRUE(file->blockStats().empty());
}

TEST(HostileMatroska, ReadsThatFailEndTheWalkAndGiveWhatThereIs) {
    const TempFolder folder;
    const auto path =
        folder.write("a.mkv", soundFile({cluster(0, {simpleBlock(1, 0, Bytes(500))})}));
    const auto file = MKVFile::open(path);
    const Sys::Fault fault(Sys::Call::Read, EIO, 1, true, path);
    EXPECT_TRUE(file->blockStats().empty());
    EXPECT_FALSE(MKVFile::open(path));
}

}  // namespace
}  // namespace marlet::test
