// Films made by mkvmerge, sound laced, and what FFmpeg and MP4Box make of them.

#include "foundation/text.h"
#include "support/box_reader.h"
#include "support/bundle.h"
#include "support/media.h"
#include "support/temp_folder.h"
#include "verify/conversion_test.h"

namespace marlet::test {
namespace {

/// H.264 with B-frames or HEVC, laced AAC and AC3, two chapters: made once for each.
std::filesystem::path realSource(const std::string& encoder) {
    static const TempFolder folder;
    const auto file = folder / (encoder + ".mkv");
    if (exists(file)) return file;
    const auto raw = (folder / (encoder + "-raw.mkv")).string();
    const auto chapters = folder.write("chapters.txt",
                                       "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"
                                       "CHAPTER02=00:00:01.000\nCHAPTER02NAME=Zwölf\n");
    ffmpeg({"-f",     "lavfi", "-i",     "testsrc2=size=64x36:rate=25:duration=2",
            "-f",     "lavfi", "-i",     "sine=sample_rate=48000:duration=2",
            "-map",   "0",     "-map",   "1",
            "-map",   "1",     "-c:v",   encoder,
            "-bf",    "2",     "-g",     "20",
            "-c:a:0", "aac",   "-c:a:1", "ac3",
            raw});
    mkvmerge(file, {"--chapters", chapters.string(), "--language", "1:fre", "--language", "2:en-GB",
                    raw});
    return file;
}

class RealConversion : public testing::TestWithParam<std::string> {
protected:
    RealConversion() {
        source_ = realSource(GetParam());
        built_ = folder_ / "built.mp4";
    }
    void copyByFFmpeg() {
        ffmpeg(
            {"-i", source_.string(), "-map", "0:v", "-map", "0:a", "-c", "copy", built_.string()});
    }
    Report verify() {
        const auto mkv = MKVFile::open(source_);
        ConvertPlanSnapshot plan;
        plan.hasChapters = true;
        RunControl control;
        return ConvertVerify::run(
            *mkv, plan, built_,
            {{.kind = Expected::Kind::video, .source = 1},
             {.kind = Expected::Kind::audioCopy, .source = 2, .language = "fre"},
             {.kind = Expected::Kind::audioCopy, .source = 3, .language = "en-GB"}},
            control);
    }
    /// The offset of a byte in the middle of a sample.
    std::size_t insideSample(const Bytes& file, int track, std::size_t chunk) {
        const StoredChunk stored = chunksOf(file, track).at(chunk);
        return static_cast<std::size_t>(stored.offset) + stored.sampleSizes.at(0) / 2;
    }

    TempFolder folder_;
    std::filesystem::path source_;
    std::filesystem::path built_;
};

TEST_P(RealConversion, ACopyByFFmpegIsProved) {
    copyByFFmpeg();
    const Report report = verify();
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_EQ(report.notes.size(), 3U);
}

TEST_P(RealConversion, AChangedByteOfASampleIsRefused) {
    copyByFFmpeg();
    const Bytes right = readFile(built_);
    for (const int track : {0, 1, 2}) {
        Bytes wrong = right;
        wrong.at(insideSample(wrong, track, 1)) ^= 1;
        writeFile(built_, wrong);
        const std::vector<std::string> reasons = verify().reasons;
        ASSERT_EQ(reasons.size(), 1U);
        EXPECT_TRUE(Text::contains(reasons[0], ": 1 of ")) << reasons[0];
        EXPECT_TRUE(Text::contains(reasons[0], "frames differ from the original")) << reasons[0];
    }
}

TEST_P(RealConversion, TwoEnabledSoundTracksOfOneGroupAreRefused) {
    copyByFFmpeg();
    Bytes wrong = readFile(built_);
    for (const int track : {1, 2}) {
        wrong = edited(wrong, trackPath(track, {{"tkhd"}}), 34, be16(1));
        wrong = edited(wrong, trackPath(track, {{"tkhd"}}), 0, be32(3));
    }
    writeFile(built_, wrong);
    EXPECT_THAT(verify().reasons, ElementsAre("alternate group 1 has 2 enabled tracks"));
}

TEST_P(RealConversion, TheMediaToolsCopyDiffersAtMostInItsStarts) {
    const auto gpac = gpacOnPath();
    if (!gpac) GTEST_SKIP() << "no GPAC on the PATH";
    const auto chapters = folder_.write("chapters.txt",
                                        "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"
                                        "CHAPTER02=00:00:01.000\nCHAPTER02NAME=Zwölf\n");
    runTool({(*gpac / "MP4Box").string(), "-quiet", "-tmp", folder_.path().string(), "-add",
             source_.string() + "#1:name=Video", "-add", source_.string() + "#2:lang=fre:group=1",
             "-add", source_.string() + "#3:lang=eng:group=1:disable", "-chap", chapters.string(),
             "-inter", "500", "-moovpad", "5000", "-new", built_.string()});
    const Report report = verify();
    EXPECT_EQ(report.notes.size(), 3U);
    for (const std::string& reason : report.reasons)
        EXPECT_TRUE(Text::contains(reason, " s from the picture, in the source ")) << reason;
}

INSTANTIATE_TEST_SUITE_P(Encoders, RealConversion, testing::Values("libx264", "libx265"));

}  // namespace
}  // namespace marlet::test
