// Files by mkvmerge and FFmpeg, and FFmpeg's own reading of them.

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "foundation/digest.h"
#include "matroska/mkv_file.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Strings = std::vector<std::string>;

/// The sources are the same for all tests of this program: made once.
const TempFolder& sources() {
    static const TempFolder folder;
    static const bool made = [] {
        folder.write("a.srt",
                     "1\n00:00:00,500 --> 00:00:01,500\nOne line\n\n2\n00:00:02,000 --> "
                     "00:00:02,750\nAnother line\n\n");
        ffmpeg({"-f",
                "lavfi",
                "-i",
                "testsrc2=size=64x36:rate=25:duration=3",
                "-f",
                "lavfi",
                "-i",
                "sine=sample_rate=48000:duration=3",
                "-i",
                (folder / "a.srt").string(),
                "-map",
                "0",
                "-map",
                "0",
                "-map",
                "1",
                "-map",
                "1",
                "-map",
                "1",
                "-map",
                "2",
                "-c:v:0",
                "libx264",
                "-bf",
                "2",
                "-preset",
                "ultrafast",
                "-c:v:1",
                "mpeg4",
                "-c:a:0",
                "aac",
                "-c:a:1",
                "ac3",
                "-c:a:2",
                "libmp3lame",
                "-c:s",
                "srt",
                "-metadata:s:a:1",
                "language=ger",
                "-metadata:s:a:1",
                "title=Kommentar",
                (folder / "source.mkv").string()});
        return true;
    }();
    EXPECT_TRUE(made);
    return folder;
}

/// mkvmerge's file of the source with these arguments.
std::filesystem::path merged(const TempFolder& folder, Strings arguments) {
    const auto file = folder / "merged.mkv";
    arguments.push_back((sources() / "source.mkv").string());
    mkvmerge(file, arguments);
    return file;
}

/// SHA-256 of every packet, by stream in file order.
std::map<int, Strings> packetsByFFmpeg(const std::filesystem::path& file) {
    std::istringstream lines(
        runTool({"ffprobe", "-v", "fatal", "-fflags", "+noparse", "-show_packets",
                 "-show_data_hash", "SHA256", "-show_entries", "packet=stream_index,data_hash",
                 "-of", "compact", file.string()}));
    std::map<int, Strings> packets;
    int current = 0;
    for (std::string line; std::getline(lines, line);) {
        // Side data breaks a packet's line in two.
        const auto stream = line.find("stream_index=");
        const auto hash = line.find("SHA256:");
        if (stream != std::string::npos) current = std::stoi(line.substr(stream + 13));
        if (hash != std::string::npos) packets[current].push_back(line.substr(hash + 7, 64));
    }
    return packets;
}

std::map<int, Strings> packetsByMarlet(const MKVFile& file) {
    std::map<int, int> streams;
    for (const MKVTrack& track : file.tracks())
        streams.emplace(track.number, static_cast<int>(streams.size()));
    std::map<int, Strings> packets;
    file.forEachBlock({}, {}, [&](const MKVBlock& block) {
        for (const Bytes& frame : file.data(block))
            packets[streams.at(block.track)].push_back(sha256Hex(frame));
        return true;
    });
    return packets;
}

void expectSamePackets(const std::filesystem::path& path) {
    const auto file = MKVFile::open(path);
    ASSERT_TRUE(file);
    const auto expected = packetsByFFmpeg(path);
    const auto found = packetsByMarlet(*file);
    ASSERT_EQ(expected.size(), file->tracks().size());
    ASSERT_EQ(found.size(), expected.size());
    for (const auto& [stream, packets] : expected) EXPECT_EQ(found.at(stream), packets) << stream;
    const auto stats = file->blockStats();
    for (const MKVTrack& track : file->tracks())
        EXPECT_EQ(stats.at(track.number).count,
                  static_cast<std::int64_t>(
                      expected.at(static_cast<int>(&track - file->tracks().data())).size()));
}

int framesOfFullestBlock(const MKVFile& file) {
    std::size_t most = 0;
    file.forEachBlock({}, {}, [&](const MKVBlock& block) {
        most = std::max(most, block.frames.size());
        return true;
    });
    return static_cast<int>(most);
}

TEST(RealMatroska, EveryFrameOfFFmpegsFileIsFFmpegsPacket) {
    expectSamePackets(sources() / "source.mkv");
}

TEST(RealMatroska, TracksAreToldAsFFmpegWroteThem) {
    const auto file = MKVFile::open(sources() / "source.mkv");
    ASSERT_EQ(file->tracks().size(), 6U);
    const MKVTrack& video = file->tracks()[0];
    EXPECT_EQ(video.type, 1);
    EXPECT_EQ(video.codecID, "V_MPEG4/ISO/AVC");
    EXPECT_EQ(video.pixelWidth, 64);
    EXPECT_EQ(video.pixelHeight, 36);
    EXPECT_FALSE(video.codecPrivate.empty());
    const MKVTrack& ac3 = file->tracks()[3];
    EXPECT_EQ(ac3.codecID, "A_AC3");
    EXPECT_EQ(ac3.language, "ger");
    EXPECT_EQ(ac3.name, "Kommentar");
    EXPECT_EQ(ac3.sampleRate, 48000);
    EXPECT_EQ(ac3.channels, 1);
    EXPECT_EQ(file->tracks()[5].type, 17);
    EXPECT_NEAR(file->durationSeconds().value_or(0), 3, 0.1);
}

TEST(RealMatroska, LacedSoundIsUnlacedByEveryKindOfLace) {
    for (const Strings& kind :
         {Strings{}, Strings{"--engage", "lacing_xiph"}, Strings{"--engage", "lacing_ebml"}}) {
        const TempFolder folder;
        const auto file = merged(folder, kind);
        EXPECT_GT(framesOfFullestBlock(*MKVFile::open(file)), 1);
        expectSamePackets(file);
    }
}

TEST(RealMatroska, FilesWithoutLacesAndWithoutSimpleBlocksAreRead) {
    const TempFolder folder;
    const auto file = merged(folder, {"--disable-lacing", "--engage", "no_simpleblocks"});
    EXPECT_EQ(framesOfFullestBlock(*MKVFile::open(file)), 1);
    expectSamePackets(file);
}

TEST(RealMatroska, CompressedTracksAndStrippedHeadersAreUndone) {
    const TempFolder folder;
    const auto file = merged(folder, {"--compression", "0:zlib", "--compression", "1:mpeg4_p2",
                                      "--compression", "3:zlib", "--compression", "5:zlib"});
    const auto opened = MKVFile::open(file);
    Bytes stored;
    opened->forEachBlock(std::set<int>{2}, {}, [&](const MKVBlock& block) {
        stored = opened->data(block).at(0);
        return false;
    });
    ASSERT_GT(stored.size(), 3U);
    EXPECT_EQ(toHex(ByteView(stored).first(3)), "000001");
    for (const MKVTrack& track : opened->tracks()) EXPECT_FALSE(opened->unreadable(track.number));
    expectSamePackets(file);
}

TEST(RealMatroska, AFileThatWasWrittenIntoAPipeIsRead) {
    const TempFolder folder;
    const auto file = folder / "live.mkv";
    ffmpeg({"-i", (sources() / "source.mkv").string(), "-map", "0", "-c", "copy", "-live", "1",
            "-f", "matroska", file.string()});
    const auto opened = MKVFile::open(file);
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->segmentEnd(), std::filesystem::file_size(file));
    expectSamePackets(file);
}

TEST(RealMatroska, ChaptersAreReadWhereverTheyStand) {
    const TempFolder folder;
    const auto list = folder.write("chapters.txt",
                                   "CHAPTER01=00:00:00.000\nCHAPTER01NAME=Début\n"
                                   "CHAPTER02=00:00:01.500\nCHAPTER02NAME=End\n");
    const std::vector<MKVChapter> expected = {{0, "Début", "eng"}, {1'500'000'000, "End", "eng"}};
    const auto front = merged(folder, {"--chapters", list.string()});
    EXPECT_EQ(MKVFile::open(front)->chapters(), expected);

    const auto back = folder / "back.mkv";
    std::filesystem::copy_file(sources() / "source.mkv", back);
    mkvpropedit(back, {"--chapters", list.string()});
    const auto opened = MKVFile::open(back);
    EXPECT_EQ(opened->chapters(), expected);
    expectSamePackets(back);
}

}  // namespace
}  // namespace marlet::test
