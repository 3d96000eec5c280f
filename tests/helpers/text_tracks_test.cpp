#include "helpers/text_tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/box_reader.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A track of an .srt with what its samples hold.
struct Made {
    TrackMedia media;
    std::vector<std::string> samples;
};

template <typename Make>
Made made(const Make& make) {
    const TempFolder folder;
    Made result;
    {
        NewFile scratch(folder / "texts");
        result.media = make(scratch);
        scratch.finish();
    }
    const Bytes bytes = readFile(folder / "texts");
    const FrameList& frames = result.media.frames;
    for (std::size_t i = 0; i < frames.sizes.size(); i++)
        result.samples.push_back(
            textOf(ByteView(bytes).subspan(frames.offsets[i], frames.sizes[i])));
    return result;
}

Made subtitle(const std::string& text, std::uint32_t flags = 0) {
    return made(
        [&](NewFile& scratch) { return SubtitleTrack::fromSRT(text, flags, 1920, 1080, scratch); });
}

std::string cue(const std::string& times, const std::string& text) {
    return "1\n" + times + "\n" + text + "\n\n";
}

std::string chapterFailure(const std::string& text) {
    try {
        ChapterFile::parse(text);
    } catch (const MFError& error) {
        return error.description();
    }
    return {};
}

}  // namespace

TEST(SubtitleTrack, FillsTheTimeBetweenLinesWithNothing) {
    const Made track = subtitle(cue("00:00:01,000 --> 00:00:02,500", "One") +
                                cue("00:00:04,000 --> 00:00:05,000", "Two"));
    EXPECT_THAT(track.media.times.durations, ElementsAre(1000, 1500, 1500, 1000, 0));
    EXPECT_THAT(track.samples, ElementsAre(std::string("\0\0", 2), std::string("\0\3One", 5),
                                           std::string("\0\0", 2), std::string("\0\3Two", 5),
                                           std::string("\0\0", 2)));
}

TEST(SubtitleTrack, TurnsTagsIntoStylesCountedInCharacters) {
    const Made track = subtitle(cue("00:00:00,000 --> 00:00:01,000", "é<i>ab<b>c</b></i> <x>"));
    ASSERT_THAT(track.samples, SizeIs(2));
    EXPECT_EQ(track.samples[0], std::string("\0\6é"
                                            "abc \0\0\0\x22styl\0\2"
                                            "\0\1\0\3\0\1\2\x36\xFF\xFF\xFF\xFF"
                                            "\0\3\0\4\0\1\3\x36\xFF\xFF\xFF\xFF",
                                            8 + 34));
}

TEST(SubtitleTrack, MarksEachLineOfAForcedTrack) {
    const Made track = subtitle(cue("00:00:00,000 --> 00:00:01,000", "x"), 0x40000000);
    EXPECT_EQ(track.samples[0], std::string("\0\1x\0\0\0\x08"
                                            "frcd",
                                            11));
    EXPECT_EQ(track.samples[1], std::string("\0\0", 2));
}

TEST(SubtitleTrack, LeavesNonsenseOut) {
    for (const char* text : {"", "nonsense\n\nmore", "1\n00:00:05,000 --> 00:00:04,000\nback\n",
                             "1\n00:00:xx,000 --> 00:00:04,000\nno time\n"})
        EXPECT_THAT(subtitle(text).samples, ElementsAre(std::string("\0\0", 2))) << text;
}

TEST(SubtitleTrack, CutsATextThatNoSampleCanHold) {
    const Made track = subtitle(cue("00:00:00,000 --> 00:00:01,000", std::string(70'000, 'x')));
    EXPECT_EQ(track.samples[0].size(), 2U + 65'535);
}

TEST(ChapterFile, ReadsStartsAndTitles) {
    EXPECT_THAT(ChapterFile::parse("\xEF\xBB\xBF"
                                   "CHAPTER02=00:01:05.250\r\nCHAPTER02NAME=B = b: #\r\n"
                                   "CHAPTER01=00:00:00.000\r\nCHAPTER01NAME=A\r\n"),
                ElementsAre(ChapterMark{0, "A"}, ChapterMark{65'250, "B = b: #"}));
}

TEST(ChapterFile, RefusesStartsThatAreNone) {
    for (const char* start : {"", "0", "00:00:00", "00:00:00.00", "00:60:00.000", "-1:00:00.000",
                              "00:00:00,000", "00:00:00.0x0", "99999:00:00.000"})
        EXPECT_EQ(chapterFailure("CHAPTER01=" + std::string(start)),
                  "\"CHAPTER01=" + std::string(start) + "\" is no start of a chapter");
    EXPECT_EQ(chapterFailure("nothing"), "the chapter file has no chapters");
}

TEST(ChapterFile, CutsLongTitlesOfTheListBetweenCharacters) {
    const std::vector<ChapterMark> chapters{{0, std::string(254, 'x') + "é"}};
    const Bytes list = ChapterFile::list(chapters);
    EXPECT_EQ(list.size(), 8 + 4 + 5 + 8 + 1 + 254U);
}

TEST(ChapterFile, MakesATrackThatEndsWithTheFilm) {
    const std::vector<ChapterMark> chapters{{1000, "A"}, {3000, "B"}};
    const Made track =
        made([&](NewFile& scratch) { return ChapterFile::track(chapters, 10.5, scratch); });
    EXPECT_THAT(track.media.times.durations, ElementsAre(2000, 7500));
    EXPECT_EQ(track.samples[0], std::string("\0\1A\0\0\0\x0C"
                                            "encd\0\0\1\0",
                                            15));
}

}  // namespace marlet::test
