#include "convert/mux_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marlet {
namespace {

using Group = MuxTrack::Group;
using testing::ElementsAre;

TEST(MuxPlan, TheArgumentsAreThoseOfMP4BoxInItsOrder) {
    MuxPlan plan{.scratch = "/w/tmp", .slice = 250, .pad = 4200, .output = "/w/built.mp4"};
    plan.tracks = {
        {.file = "/w/source.mkv", .number = 1, .name = "Video"},
        {.file = "/w/source.mkv",
         .number = 3,
         .language = "eng",
         .name = "English",
         .delayMs = 200,
         .group = Group::sound},
        {.file = "/w/t4.m4a",
         .language = "fre",
         .name = "French · Stereo",
         .group = Group::sound,
         .isEnabled = false},
        {.file = "/w/s1.srt",
         .language = "eng",
         .name = "English · Foreign parts only",
         .group = Group::subtitles,
         .isForced = true},
        {.file = "/w/s2.srt",
         .language = "eng",
         .name = "English",
         .group = Group::subtitles,
         .isEnabled = false},
    };
    plan.chapters = "/w/chapters.txt";
    EXPECT_THAT(plan.arguments(),
                ElementsAre("-tmp", "/w/tmp", "-add", "/w/source.mkv#1:name=Video", "-add",
                            "/w/source.mkv#3:lang=eng:name=English:group=1:delay=200", "-add",
                            "/w/t4.m4a:lang=fre:name=French · Stereo:group=1:disable", "-add",
                            "/w/s1.srt:lang=eng:name=English · Foreign parts only:hdlr=sbtl:"
                            "txtflags=0x40000000:group=2",
                            "-add", "/w/s2.srt:lang=eng:name=English:hdlr=sbtl:group=2:disable",
                            "-chap", "/w/chapters.txt", "-inter", "250", "-moovpad", "4200", "-new",
                            "/w/built.mp4"));
    EXPECT_THAT(plan.inputs(), ElementsAre("/w/source.mkv", "/w/t4.m4a", "/w/s1.srt", "/w/s2.srt",
                                           "/w/chapters.txt"));
}

TEST(MuxPlan, AFilmWithoutChaptersNamesNone) {
    const MuxPlan plan{.scratch = "/t", .output = "/o"};
    EXPECT_THAT(plan.arguments(),
                ElementsAre("-tmp", "/t", "-inter", "500", "-moovpad", "0", "-new", "/o"));
}

TEST(MuxName, AColonBecomesADashAndQuotesGo) {
    EXPECT_EQ(muxName("Director: \"Cut\""), "Director - Cut");
    EXPECT_EQ(muxName("::"), " - -");
}

TEST(MuxName, APlusCannotBeTakenForAnotherTrack) {
    EXPECT_EQ(muxName("Cast + Crew"), "Cast ＋ Crew");
}

TEST(MuxName, LineFeedsBecomeBlanksAndLettersStay) {
    EXPECT_EQ(muxName("A\nB\tC · Ä 😀 #2"), "A B C · Ä 😀 #2");
}

TEST(MuxName, ANameOfAMillionLettersIsCut) {
    EXPECT_EQ(muxName(std::string(1'000'000, 'x')), std::string(255, 'x'));
}

}  // namespace
}  // namespace marlet
