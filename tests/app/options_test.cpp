#include <gtest/gtest.h>

#include "app/headless.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Headless::parse;
using Headless::value;
using Arguments = std::vector<std::string>;
using Paths = std::vector<std::filesystem::path>;

TEST(Options, AValueMayStandBehindTheEqualsSignOrInTheNextArgument) {
    EXPECT_EQ(parse({"--scan=/films", "--report", "/r.tsv"}).scan, Paths{"/films"});
    EXPECT_EQ(parse({"--scan", "/films", "--report", "/r.tsv"}).report, "/r.tsv");
    EXPECT_EQ(parse({"--scan=/a=b"}).scan, Paths{"/a=b"});
}

TEST(Options, ANextArgumentThatStartsWithADashIsNoValueSoTheOptionIsIgnored) {
    const auto options = parse({"--scan", "--quit"});
    EXPECT_TRUE(options.scan.empty());
    EXPECT_TRUE(options.quit);
    EXPECT_TRUE(parse({"--scan", "-x"}).scan.empty());
    EXPECT_TRUE(parse({"--scan"}).scan.empty());
}

TEST(Options, AnEmptyValueIsNoneSoThatConfirmingNothingConfirmsNoFile) {
    const auto options = parse({"--confirm=", "--tag=", "--output-dir=", "--scan", "", "--quit"});
    EXPECT_TRUE(options.confirm.empty());
    EXPECT_TRUE(options.tag.empty());
    EXPECT_FALSE(options.outputDir);
    EXPECT_TRUE(options.scan.empty());
    EXPECT_TRUE(options.quit);
}

TEST(Options, AValueOfTheNextArgumentMayHoldAnEqualsSignOrBeAnyTextWithoutADash) {
    EXPECT_EQ(parse({"--confirm", "a=b", "--report", "r.tsv"}).confirm, Arguments{"a=b"});
    EXPECT_EQ(parse({"--tag", "a.mp4", "stray.mp4"}).tag, Paths{"a.mp4"});
}

TEST(Options, WhatIsToBeLeftOutIsAPartOfANameAColonAndTrackNumbers) {
    using Headless::Drop;
    using Headless::parseDrop;
    EXPECT_EQ(parse({"--drop=Film:1,2", "--drop", "Other:3"}).drop,
              (Arguments{"Film:1,2", "Other:3"}));
    EXPECT_EQ(parseDrop("Film:1,2"), (Drop{"Film", {1, 2}}));
    EXPECT_EQ(parseDrop("Film: A Sequel:4"), (Drop{"Film: A Sequel", {4}}));
    for (const char* bad : {"Film", ":1", "Film:", "Film:1,", "Film:x", "Film:1 ", "Film:-1", ""})
        EXPECT_FALSE(parseDrop(bad)) << bad;
}

TEST(Options, RepeatableOptionsGather) {
    EXPECT_EQ(parse({"--tag", "a", "--tag=b"}).tag, (Paths{"a", "b"}));
    EXPECT_EQ(parse({"--confirm=x", "--confirm=y"}).confirm, (Arguments{"x", "y"}));
}

TEST(Options, EveryModeHasItsOption) {
    const auto options = parse({"--virtual", "map", "--playable=f", "--audio-test", "w", "--mkv-in",
                                "m", "--test-key", "--history-csv", "h.csv"});
    EXPECT_EQ(options.virtualMap, "map");
    EXPECT_EQ(options.playable, "f");
    EXPECT_EQ(options.audioTest, "w");
    EXPECT_EQ(options.mkvIn, "m");
    EXPECT_EQ(options.historyCsv, "h.csv");
    EXPECT_TRUE(options.testKey);
    for (const char* name : {"--virtual", "--playable", "--audio-test", "--mkv-in", "--history-csv",
                             "--report", "--output-dir"}) {
        const auto none = parse({name, "--quit"});
        EXPECT_FALSE(none.virtualMap || none.playable || none.audioTest || none.mkvIn ||
                     none.historyCsv || none.report || none.outputDir)
            << name;
    }
}

TEST(Options, AFlagIsTestedByItsPresenceAlone) {
    EXPECT_TRUE(parse({"--json", "--strict-exit"}).json);
    EXPECT_TRUE(parse({"--json", "--strict-exit"}).strictExit);
    EXPECT_TRUE(parse({"--quit=no"}).quit);
    EXPECT_TRUE(parse({"--quit", "no"}).quit);
    EXPECT_FALSE(parse({"--Quit"}).quit);
    EXPECT_FALSE(parse({"-quit"}).quit);
}

TEST(Options, TheLastOfAValueGivenTwiceHolds) {
    EXPECT_EQ(parse({"--report", "a", "--report=b"}).report, "b");
}

TEST(Options, ScreenshotOptionsAreAcceptedAndTheirValuesAreNoFiles) {
    const auto options = parse({"--snapshots", "/shots", "--window=100x100", "--select", "Alien",
                                "--appearance", "dark", "--review", "r", "--quit"});
    EXPECT_TRUE(options.quit);
    EXPECT_TRUE(options.files.empty());
}

TEST(Options, UnknownOptionsAreIgnoredWithoutAWord) {
    EXPECT_TRUE(parse({"--sources=tmdb", "--apple-tv", "--wat", "--no-ai"}).noAI);
}

TEST(Options, PathsAloneAreFilesHandedOverByTheDesktop) {
    EXPECT_EQ(parse({"/a.mp4", "/b.mp4"}).files, (Paths{"/a.mp4", "/b.mp4"}));
    EXPECT_TRUE(parse({"--no-ai", "/a.mp4"}).files.empty());
}

TEST(Options, TheValueOfAnOptionIsTheFirstFoundWhateverTheNextArgumentIs) {
    EXPECT_EQ(value("--a", {"--b", "--a", "--c"}), "--c");
    EXPECT_EQ(value("--a", {"--a=1", "--a=2"}), "1");
    EXPECT_EQ(value("--a", {"--a="}), "");
    EXPECT_FALSE(value("--a", {"--a"}));
    EXPECT_FALSE(value("--a", {"--ab=1"}));
}

TEST(Options, PicturesAreAskedForByFolderFileAndFlag) {
    const auto shots = parse({"--shots",
                              "s",
                              "--snapshots=n",
                              "--website-shots",
                              "w",
                              "--poster-picks",
                              "p",
                              "--picker-demo",
                              "d",
                              "--empty-shots",
                              "e",
                              "--snapshot-about",
                              "a.png",
                              "--snapshot-about-window",
                              "b.png",
                              "--review",
                              "name",
                              "--window",
                              "1200x800",
                              "--select",
                              "A Film",
                              "--inspect-file",
                              "f.mkv",
                              "--shots-only",
                              "--sample-failure",
                              "--keep-open",
                              "--shot-watcher"})
                           .shots;
    EXPECT_EQ(shots.shots, "s");
    EXPECT_EQ(shots.snapshots, "n");
    EXPECT_EQ(shots.websiteShots, "w");
    EXPECT_EQ(shots.posterPicks, "p");
    EXPECT_EQ(shots.pickerDemo, "d");
    EXPECT_EQ(shots.emptyShots, "e");
    EXPECT_EQ(shots.about, "a.png");
    EXPECT_EQ(shots.aboutWindow, "b.png");
    EXPECT_EQ(shots.review, "name");
    EXPECT_EQ(shots.window, "1200x800");
    EXPECT_EQ(shots.select, "A Film");
    EXPECT_EQ(shots.inspectFile, "f.mkv");
    EXPECT_TRUE(shots.shotsOnly && shots.sampleFailure && shots.keepOpen && shots.watcher);
}

TEST(Options, APictureWithoutAPlaceAndWhatOnlySaysHowIsNoWishForAPicture) {
    EXPECT_FALSE(parse({"--shots", "--quit"}).shots.any());
    EXPECT_FALSE(parse({"--shots="}).shots.any());
    EXPECT_FALSE(parse({"--window", "9x9", "--select", "A", "--keep-open", "--shots-only",
                        "--sample-failure", "--shot-watcher"})
                     .shots.any());
    for (const char* name :
         {"--shots", "--snapshots", "--website-shots", "--poster-picks", "--picker-demo",
          "--empty-shots", "--snapshot-about", "--snapshot-about-window"})
        EXPECT_TRUE(parse({name, "x"}).shots.any()) << name;
}

TEST(Options, ASizeIsTwoNumbersWithACrossBetweenThem) {
    EXPECT_EQ(parseSize("1200x800"), std::pair(1200, 800));
    for (const char* bad : {"", "x", "1200", "1200x", "x800", "0x800", "1200x-1", "1200 x800",
                            "1200X800", "1200x800x2", "99999x800", "1e3x800"})
        EXPECT_FALSE(parseSize(bad)) << bad;
}

}  // namespace
}  // namespace marlet::test
