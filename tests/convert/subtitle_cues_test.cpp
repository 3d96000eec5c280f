#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/cue_printing.h"
#include "convert/mkv_files.h"
#include "convert/subtitle_text.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SubtitleCues : public testing::Test {
protected:
    /// The cues of the first track of a file with these subtitles.
    std::vector<Cue> of(const std::string& name, const std::string& content,
                        const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = options;
        arguments.push_back(folder_.write(name, content));
        const auto mkv = merge(folder_ / "film.mkv", arguments);
        if (!mkv || mkv->tracks().empty()) throw std::runtime_error("no track");
        codec_ = mkv->tracks().front().codecID;
        return SubtitleText::cues(*mkv, mkv->tracks().front());
    }

    static std::string ass(const std::string& events) {
        return "[Script Info]\nScriptType: v4.00+\n\n[V4+ Styles]\nFormat: Name, Fontname, "
               "Fontsize\nStyle: Default,Arial,20\n\n[Events]\nFormat: Layer, Start, End, Style, "
               "Name, MarginL, MarginR, MarginV, Effect, Text\n" +
               events;
    }

    TempFolder folder_;
    std::string codec_;
};

TEST_F(SubtitleCues, AreTheLinesOfATextTrack) {
    EXPECT_THAT(
        of("a.srt",
           "1\n00:00:01,000 --> 00:00:02,500\nHello <i>there</i>\n\n"
           "2\n00:01:05,250 --> 00:01:07,000\nTwo\nlinés\n"),
        ElementsAre(Cue{1000, 2500, "Hello <i>there</i>"}, Cue{65250, 67000, "Two\nlinés"}));
    EXPECT_EQ(codec_, "S_TEXT/UTF8");
}

TEST_F(SubtitleCues, AreReadOutOfCompressedTracks) {
    EXPECT_THAT(
        of("a.srt", "1\n00:00:01,000 --> 00:00:02,500\nHello\n", {"--compression", "0:zlib"}),
        ElementsAre(Cue{1000, 2500, "Hello"}));
}

TEST_F(SubtitleCues, LastLongEnoughToBeRead) {
    EXPECT_THAT(of("a.srt", "1\n00:00:01,000 --> 00:00:01,020\nblink\n"),
                ElementsAre(Cue{1000, 1100, "blink"}));
}

TEST_F(SubtitleCues, OfStyledLinesAreTheirPlainText) {
    EXPECT_THAT(
        of("a.ass",
           ass("Dialogue: 0,0:00:05.00,0:00:06.00,Default,,0,0,0,,later\n"
               "Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,{\\an8\\i1}Hello,\\Nworld\n"
               "Dialogue: 0,0:00:03.00,0:00:04.00,Default,,0,0,0,,{\\p1}m 0 0 l 1 1{\\p0}\n")),
        ElementsAre(Cue{1000, 2000, "Hello,\nworld"}, Cue{5000, 6000, "later"}));
    EXPECT_EQ(codec_, "S_TEXT/ASS");
}

TEST_F(SubtitleCues, OfATrackWithoutTextAreNone) {
    EXPECT_THAT(
        of("a.ass", ass("Dialogue: 0,0:00:03.00,0:00:04.00,Default,,0,0,0,,{\\p1}m 0 0{\\p0}\n")),
        IsEmpty());
}

/// By hand, since mkvmerge gives every line its length.
TEST_F(SubtitleCues, WithoutALengthLastThreeSeconds) {
    const auto block = [](std::uint8_t time, const std::string& text) {
        return element({0xA3}, {{0x81, 0, time, 0x80}, bytesOf(text)});
    };
    const Bytes file =
        madeFile({trackEntry(1, 17, "S_TEXT/UTF8")}, {element({0xE7}, {{100}}), block(50, "second"),
                                                      block(10, " first\r\n"), block(60, " \n ")});
    const auto mkv = MKVFile::open(folder_.write("made.mkv", file));
    ASSERT_NE(mkv, nullptr);
    EXPECT_THAT(SubtitleText::cues(*mkv, mkv->tracks().at(0)),
                ElementsAre(Cue{110, 3110, "first"}, Cue{150, 3150, "second"}));
}

}  // namespace
}  // namespace marlet::test
