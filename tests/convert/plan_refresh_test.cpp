#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/plan_builder.h"
#include "convert/track_list.h"

namespace marlet::test {
namespace {

constexpr const char* converted = "Will be converted so Apple TV can play it ";

struct Outcome {
    bool copyOriginal;
    bool makeSurround;
    bool makeStereo;
    std::string becomes;
    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << outcome.copyOriginal << outcome.makeSurround << outcome.makeStereo << ' '
         << outcome.becomes;
}

Outcome outcomeOf(const AudioChoice& choice) {
    return {choice.copyOriginal, choice.makeSurround, choice.makeStereo, choice.becomes};
}

Outcome alone(const std::string& codec, int channels) {
    return outcomeOf(PlanBuilder::make(film({soundTrack(1, codec, channels)})).audio.at(0));
}

/// With a kept stereo track of the language beside it.
Outcome withPartner(const std::string& codec, int channels) {
    ConvertPlan plan = PlanBuilder::make(
        film({soundTrack(1, codec, channels), soundTrack(2, "A_AAC", 2, "en-GB")}));
    for (AudioChoice& choice : plan.audio) choice.keep = true;
    PlanBuilder::refresh(plan);
    return outcomeOf(plan.audio.at(0));
}

std::string said(const std::string& kinds) {
    return converted + ("(" + kinds + ")");
}

TEST(PlanRefresh, KeepsCopyableStereoAsItIs) {
    const Outcome kept{true, false, false, "Kept as it is"};
    EXPECT_EQ(alone("A_AAC", 1), kept);
    EXPECT_EQ(alone("A_EAC3", 2), kept);
    EXPECT_EQ(withPartner("A_AC3", 2), kept);
}

TEST(PlanRefresh, AddsStereoToCopyableSurroundWithoutAPartner) {
    const Outcome added{true, false, true, "Kept as it is, plus an AAC stereo track"};
    EXPECT_EQ(alone("A_AC3", 6), added);
    EXPECT_EQ(alone("A_AAC", 3), added);
    EXPECT_EQ(withPartner("A_AC3", 6), (Outcome{true, false, false, "Kept as it is"}));
}

TEST(PlanRefresh, MakesSurroundOfFivePointOneAndSevenPointOne) {
    const Outcome both{false, true, true, said("AC3 5.1 and AAC stereo")};
    const Outcome surround{false, true, false, said("AC3 5.1")};
    EXPECT_EQ(alone("A_DTS", 6), both);
    EXPECT_EQ(alone("A_TRUEHD", 8), both);
    EXPECT_EQ(withPartner("A_DTS", 6), surround);
    EXPECT_EQ(withPartner("A_TRUEHD", 8), surround);
}

TEST(PlanRefresh, MakesStereoAloneOfAnyOtherChannelCount) {
    const Outcome stereo{false, false, true, said("AAC stereo")};
    for (const int channels : {1, 2, 3, 4, 5, 7, 9}) {
        EXPECT_EQ(alone("A_DTS", channels), stereo) << channels;
        EXPECT_EQ(withPartner("A_DTS", channels), stereo) << channels;
    }
}

TEST(PlanRefresh, TakesNoPartnerFromAnotherLanguage) {
    ConvertPlan plan = PlanBuilder::make(
        film({soundTrack(1, "A_DTS", 6), soundTrack(2, "A_AAC", 2, "ger")}, {"eng", "ger"}));
    EXPECT_TRUE(plan.audio[0].makeStereo);
}

TEST(PlanRefresh, TakesNoPartnerThatIsLeftOut) {
    ConvertPlan plan =
        PlanBuilder::make(film({soundTrack(1, "A_DTS", 6), soundTrack(2, "A_AAC", 2)}));
    EXPECT_FALSE(plan.audio[0].makeStereo);
    plan.audio[1].keep = false;
    PlanBuilder::refresh(plan);
    EXPECT_TRUE(plan.audio[0].makeStereo);
    EXPECT_EQ(outcomeOf(plan.audio[1]), (Outcome{false, false, false, "Left out"}));
}

int defaultTrack(const ConvertPlan& plan) {
    int found = 0;
    for (const AudioChoice& choice : plan.audio) {
        if (!choice.isDefault) continue;
        EXPECT_EQ(found, 0) << "one default alone";
        found = choice.track.number;
    }
    return found;
}

TEST(PlanRefresh, MakesTheFirstWantedLanguageTheDefault) {
    const std::vector tracks{soundTrack(1, "A_AC3", 6, "ger", true), soundTrack(2, "A_AAC", 2)};
    EXPECT_EQ(defaultTrack(PlanBuilder::make(film(tracks, {"eng", "ger"}))), 2);
    EXPECT_EQ(defaultTrack(PlanBuilder::make(film(tracks, {"ger", "eng"}))), 1);
    ConvertPlan plan = PlanBuilder::make(film(tracks, {"eng"}));
    plan.audio[0].keep = true;
    PlanBuilder::refresh(plan);
    EXPECT_EQ(defaultTrack(plan), 2) << "a language that nobody asked for comes last";
}

TEST(PlanRefresh, MakesSurroundTheDefaultBeforeStereo) {
    EXPECT_EQ(defaultTrack(PlanBuilder::make(
                  film({soundTrack(1, "A_AAC", 2, "eng", true), soundTrack(2, "A_AC3", 6)}))),
              2);
}

TEST(PlanRefresh, DecidesBetweenEqualsByFlagAndOrder) {
    ConvertPlan plan = PlanBuilder::make(
        film({soundTrack(1, "A_AAC", 2), soundTrack(2, "A_AAC", 2), soundTrack(3, "A_AAC", 2)}));
    for (AudioChoice& choice : plan.audio) choice.keep = true;
    PlanBuilder::refresh(plan);
    EXPECT_EQ(defaultTrack(plan), 1);
    plan.audio[1].track.isDefault = plan.audio[2].track.isDefault = true;
    PlanBuilder::refresh(plan);
    EXPECT_EQ(defaultTrack(plan), 2);
}

TEST(PlanRefresh, HasNoDefaultWhenNothingIsKept) {
    ConvertPlan plan = PlanBuilder::make(film({soundTrack(1, "A_AAC", 2)}));
    plan.audio[0].keep = false;
    PlanBuilder::refresh(plan);
    EXPECT_EQ(defaultTrack(plan), 0);
}

TEST(PlanMerge, CarriesOverWhatAPersonChose) {
    PlanInput input = film({soundTrack(1, "A_DTS", 6), soundTrack(2, "A_AAC", 2),
                            subtitleTrack(3, "S_TEXT/UTF8"), subtitleTrack(4, "S_TEXT/UTF8")});
    ConvertPlan old = PlanBuilder::make(input);
    old.audio[1].keep = false;
    old.audio[1].touched = true;
    old.audio[0].keep = false;  // not touched: the newer plan knows better
    old.subs[1].keep = false;
    old.subs[1].touched = true;

    ConvertPlan fresh = PlanBuilder::make(input);
    PlanBuilder::merge(old, fresh);
    EXPECT_TRUE(fresh.audio[0].keep);
    EXPECT_FALSE(fresh.audio[0].touched);
    EXPECT_FALSE(fresh.audio[1].keep);
    EXPECT_TRUE(fresh.audio[1].touched);
    EXPECT_TRUE(fresh.audio[0].makeStereo) << "worked out again";
    EXPECT_TRUE(fresh.subs[0].keep);
    EXPECT_FALSE(fresh.subs[1].keep);
    EXPECT_TRUE(fresh.subs[1].touched);
}

TEST(PlanMerge, PassesOverWhatIsGone) {
    ConvertPlan old = PlanBuilder::make(film({soundTrack(1, "A_AAC", 2)}));
    old.audio[0].touched = true;
    old.audio[0].keep = false;
    ConvertPlan fresh = PlanBuilder::make(film({soundTrack(5, "A_AAC", 2)}));
    const ConvertPlan before = fresh;
    PlanBuilder::merge(old, fresh);
    EXPECT_EQ(fresh, before);
}

TEST(PlanSnapshot, HoldsWhatIsKeptAndNothingElse) {
    PlanInput input = film({soundTrack(1, "A_DTS", 6), soundTrack(2, "A_AAC", 2, "ger"),
                            subtitleTrack(3, "S_TEXT/UTF8"), subtitleTrack(4, "S_HDMV/PGS", "fre"),
                            subtitleTrack(5, "S_HDMV/PGS", "eng", "Forced")});
    input.duration = 61.5;
    input.chapters = {{.startNs = 0, .title = "Start"}};
    input.sidecars = {"/films/My Movie.en.srt"};
    const ConvertPlanSnapshot snapshot = PlanBuilder::make(input).snapshot().value();
    EXPECT_EQ(snapshot.video, 100);
    EXPECT_EQ(snapshot.videoCodec, "V_MPEG4/ISO/AVC");
    EXPECT_EQ(snapshot.duration, 61.5);
    EXPECT_TRUE(snapshot.hasChapters);

    using Audio = ConvertPlanSnapshot::Audio;
    EXPECT_EQ(snapshot.audio, std::vector<Audio>({{.track = 1,
                                                   .language = "eng",
                                                   .name = "English · Surround 5.1",
                                                   .makeSurround = true,
                                                   .makeStereo = true,
                                                   .channels = 6,
                                                   .rate = 48000,
                                                   .isDefault = true}}));
    using Sub = ConvertPlanSnapshot::Sub;
    EXPECT_EQ(snapshot.subs,
              std::vector<Sub>(
                  {{.id = "mkv3", .track = 3, .kind = 0, .language = "eng", .name = "English"},
                   {.id = "mkv5",
                    .track = 5,
                    .kind = 1,
                    .language = "eng",
                    .name = "English · Foreign parts only",
                    .forced = true},
                   {.id = "side:My Movie.en.srt",
                    .sidecar = "/films/My Movie.en.srt",
                    .kind = 2,
                    .language = "eng",
                    .name = "English"}}));
}

TEST(PlanSnapshot, CallsALanguageThatIsNoneUnknown) {
    const ConvertPlan plan = PlanBuilder::make(film({soundTrack(1, "A_AAC", 2, "ro")}, {"ro"}));
    EXPECT_EQ(plan.snapshot()->audio.at(0).language, "und");
    EXPECT_FALSE(plan.snapshot()->hasChapters);
}

TEST(PlanSnapshot, IsNothingForVideoThatCannotBeCarried) {
    PlanInput input = film({soundTrack(1, "A_AAC", 2)});
    input.tracks.front().codecID = "V_VP9";
    const ConvertPlan plan = PlanBuilder::make(input);
    EXPECT_EQ(plan.videoVerdict.message(),
              "VP9: Apple TV can't play it, and Marlet never re-encodes video");
    EXPECT_EQ(plan.snapshot(), std::nullopt);
}

}  // namespace
}  // namespace marlet::test
