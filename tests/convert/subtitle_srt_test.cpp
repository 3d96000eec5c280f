#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/cue_printing.h"
#include "convert/subtitle_text.h"

namespace marlet::test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
constexpr auto nothing = std::nullopt;

constexpr const char* twoCues =
    "1\n00:00:01,000 --> 00:00:02,500\nHello <i>there</i>\n\n"
    "2\n00:01:05,250 --> 00:01:07,000\nTwo\nlines\n";

const std::vector<Cue> bothCues{{1000, 2500, "Hello <i>there</i>"}, {65250, 67000, "Two\nlines"}};

TEST(SubtitleTime, IsReadToTheMillisecond) {
    EXPECT_EQ(SubtitleText::ms("00:00:01,500"), 1500);
    EXPECT_EQ(SubtitleText::ms("00:00:01.500"), 1500) << "a dot reads like a comma";
    EXPECT_EQ(SubtitleText::ms("01:02:03,004"), 3723004);
    EXPECT_EQ(SubtitleText::ms(" 100:00:00 \n"), 360000000);
    EXPECT_EQ(SubtitleText::ms("0:0:0.0006"), 1) << "rounded";
    EXPECT_EQ(SubtitleText::ms("0:0:0.0004"), 0);
}

TEST(SubtitleTime, OfAnotherFormIsNone) {
    for (const char* stamp : {"", "1", "00:01", "00:00:00:01", "a:00:01", "00:b:01", "00:00:c",
                              "00:00:", "::", "1.5:0:0", "00:00:1 5", "00:00:inf", "00:00:nan",
                              "00:00:1e300", "99999999999999999999:0:0"})
        EXPECT_EQ(SubtitleText::ms(stamp), nothing) << stamp;
}

TEST(ReadSRT, GivesTimesAndLines) {
    EXPECT_EQ(SubtitleText::parseSRT(twoCues), bothCues);
}

TEST(ReadSRT, IsUndoneByWriting) {
    EXPECT_EQ(SubtitleText::parseSRT(SubtitleText::writeSRT(bothCues)), bothCues);
}

TEST(ReadSRT, TakesAnyLineEndsAndAByteOrderMark) {
    std::string windows = "\xEF\xBB\xBF";
    std::string old;
    for (const char c : std::string(twoCues)) {
        if (c == '\n') windows += '\r';
        windows += c;
        old += c == '\n' ? '\r' : c;
    }
    EXPECT_EQ(SubtitleText::parseSRT(windows), bothCues);
    EXPECT_EQ(SubtitleText::parseSRT(old), bothCues);
}

TEST(ReadSRT, PassesOverMarksBehindTheEnd) {
    EXPECT_THAT(SubtitleText::parseSRT("1\n00:00:01,000 --> 00:00:02,000  X1:40 X2:600\nHi"),
                ElementsAre(Cue{1000, 2000, "Hi"}));
}

TEST(ReadSRT, NeedsNoNumbers) {
    EXPECT_THAT(SubtitleText::parseSRT("00:00:01.0-->00:00:02.0\nHi\n\nWEBVTT\nNOTE x\n"
                                       "00:00:03.0 --> 00:00:04.0\nHo --> hum"),
                ElementsAre(Cue{1000, 2000, "Hi"}, Cue{3000, 4000, "Ho --> hum"}));
}

TEST(ReadSRT, PassesOverWhatIsNoCue) {
    EXPECT_THAT(SubtitleText::parseSRT("no time\n\n"
                                       "1\n00:00:01,000 --> 00:00:02,000 --> 00:00:03,000\nA\n\n"
                                       "2\n00:00:01,000 -->\nB\n\n"
                                       "3\nx --> 00:00:02,000\nC\n\n"
                                       "4\n00:00:01,000 --> 00:00:02,000\n\n"
                                       "5\n00:00:01,000 --> 00:00:02,000\n  \n\n\n\n"
                                       "6\n00:00:05,000 --> 00:00:06,000\n last \n"),
                ElementsAre(Cue{5000, 6000, "last"}));
    EXPECT_THAT(SubtitleText::parseSRT(""), IsEmpty());
    EXPECT_THAT(SubtitleText::parseSRT("\n\n\n\n"), IsEmpty());
}

TEST(ReadSRT, KeepsTheOrderOfTheFile) {
    EXPECT_THAT(SubtitleText::parseSRT("00:00:05,0 --> 00:00:06,0\nB\n\n00:00:01,0 --> 00:00:02,0\n"
                                       "A"),
                ElementsAre(Cue{5000, 6000, "B"}, Cue{1000, 2000, "A"}));
}

TEST(WriteSRT, NumbersCuesAndPadsTimes) {
    EXPECT_EQ(SubtitleText::writeSRT(bothCues),
              "1\n00:00:01,000 --> 00:00:02,500\nHello <i>there</i>\n\n"
              "2\n00:01:05,250 --> 00:01:07,000\nTwo\nlines\n\n");
    EXPECT_EQ(SubtitleText::writeSRT({}), "");
}

TEST(WriteSRT, HasRoomForManyHours) {
    EXPECT_EQ(SubtitleText::writeSRT({{360000001, 3600000000, "x"}}),
              "1\n100:00:00,001 --> 1000:00:00,000\nx\n\n");
}

TEST(WriteSRT, BeginsNothingBeforeTheFilm) {
    EXPECT_EQ(SubtitleText::writeSRT({{-500, 1000, "x"}}),
              "1\n00:00:00,000 --> 00:00:01,000\nx\n\n");
}

TEST(WriteSRT, LosesNoLineBehindAnEmptyOne) {
    const std::string written = SubtitleText::writeSRT({{0, 1000, "one\n\ntwo\r\n\r\nthree"}});
    EXPECT_THAT(SubtitleText::parseSRT(written), ElementsAre(Cue{0, 1000, "one\ntwo\nthree"}));
}

TEST(SubtitleEncoding, IsFoundOutFromTheBytes) {
    const std::string line = "1\n00:00:01,000 --> 00:00:02,000\n";
    const auto read = [](const std::string& bytes) {
        return SubtitleText::parseSRT(SubtitleText::decode(viewOf(bytes)));
    };
    const auto wide = [](const std::string& ascii, bool little) {
        std::string out;
        for (const char c : ascii) out += little ? std::string{c, '\0'} : std::string{'\0', c};
        return out;
    };
    const auto isCafe = ElementsAre(Cue{1000, 2000, "Café"});
    EXPECT_THAT(read(line + "Café"), isCafe) << "UTF-8";
    EXPECT_THAT(read("\xEF\xBB\xBF" + line + "Café"), isCafe) << "UTF-8 with a mark";
    EXPECT_THAT(read("\xFF\xFE" + wide(line + "Caf", true) + "\xE9\0"s), isCafe) << "UTF-16LE";
    EXPECT_THAT(read("\xFE\xFF" + wide(line + "Caf", false) + "\0\xE9"s), isCafe) << "UTF-16BE";
    EXPECT_THAT(read(line + "Caf\xE9"), isCafe) << "Windows-1252";
}

}  // namespace
}  // namespace marlet::test
