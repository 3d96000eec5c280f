#include "helpers/track_request.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"

namespace marlet::test {

namespace {

std::string failure(const std::string& argument) {
    try {
        TrackRequests::parse(argument);
    } catch (const MFError& error) {
        return error.description();
    }
    return {};
}

}  // namespace

TEST(TrackRequest, TakesATrackOfAFileWithAllOptions) {
    const TrackRequest wanted{.file = "/w/source.mkv",
                              .track = 12,
                              .language = "deu",
                              .name = "German",
                              .group = 1,
                              .disabled = true,
                              .delayMs = 40};
    EXPECT_EQ(
        TrackRequests::parse("/w/source.mkv#12:lang=deu:name=German:group=1:disable:delay=40"),
        wanted);
}

TEST(TrackRequest, TakesASubtitleWithItsFlagsInHexadecimal) {
    const TrackRequest wanted{.file = "/w/s1.srt",
                              .language = "eng",
                              .name = "English",
                              .handler = "sbtl",
                              .textFlags = 0x40000000,
                              .group = 2};
    EXPECT_EQ(TrackRequests::parse(
                  "/w/s1.srt:lang=eng:name=English:hdlr=sbtl:txtflags=0x40000000:group=2"),
              wanted);
}

TEST(TrackRequest, TakesAFileWithoutOptions) {
    EXPECT_EQ(TrackRequests::parse("/w/t2.m4a"), (TrackRequest{.file = "/w/t2.m4a"}));
    EXPECT_EQ(TrackRequests::parse("source.mov#2"),
              (TrackRequest{.file = "source.mov", .track = 2}));
}

TEST(TrackRequest, LetsANameHoldAllButAColon) {
    EXPECT_EQ(
        TrackRequests::parse("/w/source.mkv#2:lang=eng:name=AC/DC #1 = \"x\"\n😀:group=1").name,
        "AC/DC #1 = \"x\"\n😀");
    EXPECT_EQ(TrackRequests::parse("/w/source.mkv#2:name=").name, "");
}

TEST(TrackRequest, LetsAPathHoldColonsAndHashes) {
    const TrackRequest parsed = TrackRequests::parse("/w/a:b/#1/x:y/source.mkv#3:name=N");
    EXPECT_EQ(parsed.file, "/w/a:b/#1/x:y/source.mkv");
    EXPECT_EQ(parsed.track, 3U);
    EXPECT_EQ(TrackRequests::parse("/w/#1/t2.m4a").file, "/w/#1/t2.m4a");
}

TEST(TrackRequest, TakesAnyLanguageAndKeepsOneThatTheHeaderCanHold) {
    const auto language = [](const std::string& text) {
        return TrackRequests::parse("a.mkv#1:lang=" + text).language;
    };
    EXPECT_EQ(language("fre"), "fre");
    EXPECT_EQ(language("qaa"), "qaa");
    EXPECT_EQ(language("en"), "eng");
    EXPECT_EQ(language("x1"), "und");
    EXPECT_EQ(language(""), "und");
}

TEST(TrackRequest, RefusesValuesThatAreNone) {
    for (const char* option : {"hdlr=sub", "txtflags=0x", "txtflags=0x1FFFFFFFF", "group=",
                               "group=40000", "group=-1", "delay=1.5", "delay=-3", "disable=1"})
        EXPECT_EQ(failure("a.srt:" + std::string(option)),
                  "\"" + std::string(option) + "\" can't be understood")
            << option;
    EXPECT_EQ(failure("a.mkv#x"), "\"x\" can't be understood");
    EXPECT_EQ(failure("a.mkv#0"), "\"0\" can't be understood");
}

TEST(TrackRequest, RefusesAnOptionGivenTwiceAndAMissingFile) {
    EXPECT_EQ(failure("a:name=x:name=y"), "\"name=x\" can't be understood");
    EXPECT_EQ(failure(":name=x"), "\":name=x\" names no file");
    EXPECT_EQ(failure(""), "\"\" names no file");
}

}  // namespace marlet::test
