#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/mkv_files.h"
#include "convert/plan_builder.h"
#include "support/pgs_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

/// A film with English 5.1 and German stereo, full and sparse English subtitles, a chapter, and a
/// sidecar.
class PlanOfAFile : public testing::Test {
protected:
    static std::string lines(int count) {
        std::string out;
        for (int i = 0; i < count; i++)
            out += std::to_string(i + 1) + "\n00:00:00," + std::to_string(100 + i) +
                   " --> 00:00:01,000\nline\n\n";
        return out;
    }

    void SetUp() override {
        const auto media = folder_ / "media.mkv";
        ffmpeg({"-f",       "lavfi",   "-i",     "testsrc=s=64x36:r=25:d=1",
                "-f",       "lavfi",   "-i",     "anullsrc=r=48000:cl=5.1",
                "-f",       "lavfi",   "-i",     "anullsrc=r=44100:cl=stereo",
                "-map",     "0",       "-map",   "1",
                "-map",     "2",       "-t",     "1",
                "-pix_fmt", "yuv420p", "-c:v",   "libx264",
                "-c:a:0",   "flac",    "-c:a:1", "aac",
                media});
        folder_.write("My Movie.de.srt", lines(1));
        mkv_ = merge(source_,
                     {"--language", "1:en-GB", "--language", "2:de", "--chapters",
                      folder_.write("chapters.txt", "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"),
                      media, "--language", "0:eng", folder_.write("full.srt", lines(40)),
                      "--language", "0:en-US", folder_.write("few.srt", lines(2))});
        ASSERT_NE(mkv_, nullptr);
    }

    ConvertPlan plan(const TrackStats& stats) const {
        return PlanBuilder::make(source_, *mkv_, {"eng"}, PlanBuilder::findSidecars(source_),
                                 stats);
    }

    TempFolder folder_;
    const std::filesystem::path source_ = folder_ / "My Movie.mkv";
    std::unique_ptr<MKVFile> mkv_;
};

TEST_F(PlanOfAFile, HoldsWhatTheFileHolds) {
    const ConvertPlan made = plan({});
    EXPECT_EQ(made.source, source_);
    EXPECT_EQ(made.duration, mkv_->durationSeconds());
    EXPECT_EQ(made.chapters, mkv_->chapters());
    EXPECT_EQ(made.keepLanguages, std::vector<std::string>{"eng"});
    EXPECT_TRUE(made.videoVerdict.isCopy()) << made.videoVerdict.message();

    ASSERT_EQ(made.audio.size(), 2U);
    EXPECT_EQ(made.audio[0].label, "English · Surround 5.1");
    EXPECT_EQ(made.audio[0].codec, "FLAC");
    EXPECT_EQ(made.audio[0].becomes,
              "Will be converted so Apple TV can play it (AC3 5.1 and AAC stereo)");
    EXPECT_EQ(made.audio[1].label, "German · Stereo");
    EXPECT_EQ(made.audio[1].becomes, "Left out");

    ASSERT_EQ(made.subs.size(), 3U);
    EXPECT_EQ(made.subs[2].label, "German");
    const ConvertPlanSnapshot snapshot = made.snapshot().value();
    EXPECT_EQ(snapshot.videoCodec, "V_MPEG4/ISO/AVC");
    EXPECT_EQ(snapshot.audio.size(), 1U);
    EXPECT_EQ(snapshot.audio.at(0).rate, 48000);
    EXPECT_EQ(snapshot.subs.size(), 2U);
    EXPECT_TRUE(snapshot.hasChapters);
}

TEST_F(PlanOfAFile, FindsForeignPartsOnceItsFramesAreCounted) {
    EXPECT_FALSE(plan({}).subs.at(1).isForced);
    const ConvertPlan counted = plan(mkv_->blockStats());
    EXPECT_FALSE(counted.subs.at(0).isForced);
    EXPECT_TRUE(counted.subs.at(1).isForced);
    EXPECT_TRUE(counted.subs.at(1).keep);
}

/// A .sup file of short lines; those at even places are forced, or all, or none.
enum class Forced { None, Even, All };
Bytes pictureLines(int count, Forced which) {
    const pgs::Picture white{4, 4, Bytes(64, 0xFF)};
    std::vector<pgs::Line> lines;
    for (int i = 0; i < count; i++) {
        const bool isForced = which == Forced::All || (which == Forced::Even && i % 2 == 0);
        lines.push_back({100 + i * 100, 150 + i * 100, {{white, 8, 8, isForced}}});
    }
    return pgs::sup(pgs::stream(lines));
}

TEST(PlanOfAFileWithPictures, FindsForeignPartsInTracksThatMkvmergeCompressed) {
    const TempFolder folder;
    const auto source = folder / "film.mkv";
    const auto mkv = merge(
        source, {"--language", "0:eng", folder.write("none.sup", pictureLines(8, Forced::None)),
                 "--language", "0:eng", folder.write("even.sup", pictureLines(8, Forced::Even)),
                 "--language", "0:ger", folder.write("all.sup", pictureLines(3, Forced::All))});
    ASSERT_NE(mkv, nullptr);
    ConvertPlan plan = PlanBuilder::make(source, *mkv, {"ger"}, {}, mkv->blockStats());
    PlanBuilder::applyPGS(plan, *mkv);
    ASSERT_EQ(plan.subs.size(), 4U);
    EXPECT_FALSE(plan.subs[0].isForced);
    EXPECT_FALSE(plan.subs[1].isForced);
    EXPECT_EQ(plan.subs[2].label, "German · Foreign parts only");
    EXPECT_TRUE(plan.subs[2].keep);
    EXPECT_EQ(plan.subs[3].id, "pgsforced" + std::to_string(mkv->tracks().at(1).number));
    EXPECT_EQ(plan.subs[3].label, "English · Foreign parts only");
    EXPECT_FALSE(plan.subs[3].keep) << "no English is heard";
}

/// ContentEncodings with one encryption (RFC 9559, 5.1.4.1.31).
Bytes encrypted() {
    const Bytes encryption = element({0x50, 0x35}, {element({0x47, 0xE1}, {{5}})});
    return element({0x6D, 0x80},
                   {element({0x62, 0x40}, {element({0x50, 0x33}, {{1}}), encryption})});
}

TEST(PlanOfAnEncryptedFile, SaysWhyNothingCanBeKept) {
    const TempFolder folder;
    const auto source =
        folder.write("film.mkv", madeFile({trackEntry(1, 1, "V_MPEGH/ISO/HEVC", {encrypted()}),
                                           trackEntry(2, 2, "A_AAC", {encrypted()}),
                                           trackEntry(3, 17, "S_TEXT/UTF8", {encrypted()})},
                                          {}));
    const auto mkv = MKVFile::open(source);
    ASSERT_NE(mkv, nullptr);
    const auto reason = mkv->unreadable(1);
    ASSERT_TRUE(reason);
    const ConvertPlan plan = PlanBuilder::make(source, *mkv, {"eng"}, {}, {});
    EXPECT_EQ(plan.videoVerdict, VideoVerdict::unsupported(*reason));
    EXPECT_EQ(plan.audio.at(0).becomes, "Left out: " + *mkv->unreadable(2));
    EXPECT_FALSE(plan.audio[0].keep);
    EXPECT_EQ(plan.subs.at(0).unsupportedReason, mkv->unreadable(3));
    EXPECT_EQ(plan.snapshot(), std::nullopt);
}

}  // namespace
}  // namespace marlet::test
