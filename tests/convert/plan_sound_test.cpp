#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/plan_builder.h"
#include "convert/track_list.h"

namespace marlet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> kept(const ConvertPlan& plan) {
    std::vector<int> numbers;
    for (const AudioChoice& choice : plan.audio)
        if (choice.keep) numbers.push_back(choice.track.number);
    return numbers;
}

std::vector<int> kept(const PlanInput& input) {
    return kept(PlanBuilder::make(input));
}

AudioChoice only(const MKVTrack& track) {
    return PlanBuilder::make(film({track})).audio.at(0);
}

TEST(PlanVideo, IsTheFirstEnabledTrack) {
    PlanInput input = film({soundTrack(1, "A_AAC", 2)});
    input.tracks.push_back(videoTrack(7));
    EXPECT_EQ(PlanBuilder::make(input).video->number, 100);
    input.tracks.front().isEnabled = false;
    EXPECT_EQ(PlanBuilder::make(input).video->number, 7);
    input.tracks.back().isEnabled = false;
    EXPECT_EQ(PlanBuilder::make(input).video->number, 100) << "none is enabled";
}

TEST(PlanVideo, IsMissedInWords) {
    PlanInput input = film({soundTrack(1, "A_AAC", 2)});
    input.tracks.erase(input.tracks.begin());
    const ConvertPlan plan = PlanBuilder::make(input);
    EXPECT_EQ(plan.video, std::nullopt);
    EXPECT_EQ(plan.videoVerdict, VideoVerdict::unsupported("no video track"));
    EXPECT_EQ(plan.snapshot(), std::nullopt);
    EXPECT_EQ(kept(plan), std::vector{1}) << "the rest is planned all the same";
}

TEST(PlanVideo, ThatCannotBeReadIsUnsupportedForThatReason) {
    PlanInput input = film({});
    input.unreadable[100] = "it is encrypted";
    const ConvertPlan plan = PlanBuilder::make(input);
    EXPECT_EQ(plan.videoVerdict, VideoVerdict::unsupported("it is encrypted"));
    EXPECT_EQ(plan.snapshot(), std::nullopt);
}

TEST(PlanSound, KeepsTheBestSurroundAndTheBestStereoOfALanguage) {
    const ConvertPlan plan = PlanBuilder::make(
        film({soundTrack(1, "A_TRUEHD", 8), soundTrack(2, "A_AC3", 6), soundTrack(3, "A_AAC", 2)}));
    EXPECT_THAT(kept(plan), ElementsAre(1, 3));
    EXPECT_EQ(plan.audio[0].becomes, "Will be converted so Apple TV can play it (AC3 5.1)");
    EXPECT_EQ(plan.audio[1].becomes, "Left out");
    EXPECT_EQ(plan.audio[2].becomes, "Kept as it is");
    EXPECT_TRUE(plan.audio[0].isDefault);
    EXPECT_FALSE(plan.audio[2].isDefault);
}

TEST(PlanSound, OfNoWantedLanguageFollowsTheDefaultTrack) {
    EXPECT_THAT(kept(film({soundTrack(1, "A_AC3", 6, "fre"), soundTrack(2, "A_AAC", 2, "fre")})),
                ElementsAre(1, 2));
    EXPECT_THAT(
        kept(film({soundTrack(1, "A_AC3", 6, "fre"), soundTrack(2, "A_AAC", 2, "ger", true)})),
        ElementsAre(2));
    EXPECT_THAT(kept(film({soundTrack(1, "A_AC3", 6, "fre"), soundTrack(2, "A_AAC", 2, "ger")})),
                ElementsAre(1))
        << "without a default the first track counts";
    EXPECT_THAT(kept(film({soundTrack(1, "A_AC3", 6, "fre")}, {})), ElementsAre(1));
    EXPECT_THAT(kept(film({})), IsEmpty());
}

TEST(PlanSound, NeverPicksACommentary) {
    EXPECT_THAT(kept(film({soundTrack(1, "A_AAC", 2, "eng", true, "Director's COMMENTARY"),
                           soundTrack(2, "A_AAC", 2, "eng", true, "Audio Description"),
                           soundTrack(3, "A_MPEG/L3", 1)})),
                ElementsAre(3));
    EXPECT_THAT(kept(film({soundTrack(1, "A_AAC", 2, "eng", true, "Commentary")})), IsEmpty());
}

TEST(PlanSound, RanksCodecsBeforeChannels) {
    for (const auto& [better, worse] :
         std::vector<std::pair<std::string, std::string>>{{"A_TRUEHD", "A_DTS"},
                                                          {"A_FLAC", "A_EAC3"},
                                                          {"A_EAC3", "A_AC3"},
                                                          {"A_AC3", "A_OPUS"},
                                                          {"A_AAC", "A_VORBIS"}}) {
        EXPECT_THAT(kept(film({soundTrack(1, worse, 8), soundTrack(2, better, 6)})), ElementsAre(2))
            << better;
    }
    EXPECT_THAT(kept(film({soundTrack(1, "A_DTS", 6), soundTrack(2, "A_DTS", 8)})), ElementsAre(2));
    EXPECT_THAT(kept(film({soundTrack(1, "A_DTS", 6), soundTrack(2, "A_FLAC", 6)})), ElementsAre(1))
        << "of equal ones the first";
}

TEST(PlanSound, PrefersTheDefaultStereo) {
    EXPECT_THAT(kept(film({soundTrack(1, "A_FLAC", 2), soundTrack(2, "A_AAC", 2, "eng", true)})),
                ElementsAre(2));
    EXPECT_THAT(kept(film({soundTrack(1, "A_AAC", 1), soundTrack(2, "A_AAC", 2)})), ElementsAre(2));
    EXPECT_THAT(kept(film({soundTrack(1, "A_AAC", 2), soundTrack(2, "A_OPUS", 2)})),
                ElementsAre(1));
}

TEST(PlanSound, KeepsEveryWantedLanguage) {
    EXPECT_THAT(kept(film({soundTrack(1, "A_AAC", 2, "ger"), soundTrack(2, "A_AAC", 2, "fra"),
                           soundTrack(3, "A_AAC", 2, "eng")},
                          {"eng", "fre"})),
                ElementsAre(2, 3));
}

TEST(PlanSound, IsJudgedByTheFirstPartOfItsLanguage) {
    const ConvertPlan plan = PlanBuilder::make(
        film({soundTrack(1, "A_AAC", 2, "zh-Hans"), soundTrack(2, "A_AAC", 2, "en-GB")}));
    EXPECT_THAT(kept(plan), ElementsAre(2));
    EXPECT_EQ(plan.audio[0].label, "Chinese · Stereo");
    EXPECT_EQ(plan.audio[1].label, "English · Stereo");
    EXPECT_EQ(plan.snapshot()->audio.at(0).language, "eng");
}

TEST(PlanSound, ThatCannotBeReadIsNeverKept) {
    PlanInput input = film({soundTrack(1, "A_TRUEHD", 8), soundTrack(2, "A_AC3", 6)});
    input.unreadable[1] = "it is encrypted";
    ConvertPlan plan = PlanBuilder::make(input);
    EXPECT_THAT(kept(plan), ElementsAre(2));
    EXPECT_EQ(plan.audio[0].becomes, "Left out: it is encrypted");
    plan.audio[0].keep = true;
    PlanBuilder::refresh(plan);
    EXPECT_THAT(kept(plan), ElementsAre(2));

    input.unreadable[2] = "it is encrypted, too";
    EXPECT_THAT(kept(input), IsEmpty());
}

TEST(PlanSound, ThatCannotBeReadIsNobodysPartner) {
    PlanInput input = film({soundTrack(1, "A_AC3", 6), soundTrack(2, "A_AAC", 2)});
    input.unreadable[2] = "it is encrypted";
    ConvertPlan plan = PlanBuilder::make(input);
    plan.audio[1].keep = true;
    PlanBuilder::refresh(plan);
    EXPECT_TRUE(plan.audio[0].makeStereo);
}

TEST(PlanSound, IsLabelledByLanguageAndChannels) {
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 8)).label, "English · Surround 7.1");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 24)).format, "Surround 7.1");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 7)).format, "Surround 5.1");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 6)).format, "Surround 5.1");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 5)).format, "5 channels");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 3)).format, "3 channels");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 2)).format, "Stereo");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 1)).format, "Mono");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 2, "eng", false, "Loud")).label, "English · Stereo");
    EXPECT_EQ(only(soundTrack(1, "A_DTS", 2, "ger", false, "Commentary by Anna")).label,
              "German · Stereo · Commentary by Anna");
}

TEST(PlanSound, WithoutAChannelCountHasOneChannel) {
    const ConvertPlan plan = PlanBuilder::make(film({soundTrack(1, "A_OPUS", 0)}));
    EXPECT_EQ(plan.audio[0].format, "Stereo") << "the words for what was read";
    EXPECT_EQ(plan.audio[0].becomes, "Will be converted so Apple TV can play it (AAC stereo)");
    EXPECT_EQ(plan.snapshot()->audio.at(0).channels, 1);
}

TEST(PlanSound, HasShortNamesOfCodecs) {
    EXPECT_EQ(PlanBuilder::codecName("A_TRUEHD"), "TrueHD");
    EXPECT_EQ(PlanBuilder::codecName("A_EAC3"), "E-AC3");
    EXPECT_EQ(PlanBuilder::codecName("A_AC3/BSID9"), "AC3");
    EXPECT_EQ(PlanBuilder::codecName("A_DTS/LOSSLESS"), "DTS");
    EXPECT_EQ(PlanBuilder::codecName("A_AAC-2"), "AAC");
    EXPECT_EQ(PlanBuilder::codecName("A_FLAC"), "FLAC");
    EXPECT_EQ(PlanBuilder::codecName("A_OPUS"), "Opus");
    EXPECT_EQ(PlanBuilder::codecName("A_VORBIS"), "Vorbis");
    EXPECT_EQ(PlanBuilder::codecName("A_PCM/INT/LIT"), "PCM");
    EXPECT_EQ(PlanBuilder::codecName("A_MPEG/L3"), "MP3");
    EXPECT_EQ(PlanBuilder::codecName("A_MPEG/L2"), "A_MPEG/L2");
    EXPECT_EQ(only(soundTrack(1, "A_MPEG/L2", 2)).codec, "A_MPEG/L2");
}

TEST(PlanSound, OfThreeCodecsCanBeCopied) {
    for (const char* codec : {"A_AAC", "A_AC3", "A_EAC3"})
        EXPECT_TRUE(only(soundTrack(1, codec, 2)).canCopy) << codec;
    for (const char* codec : {"A_TRUEHD", "A_DTS", "A_FLAC", "A_OPUS", "A_MPEG/L3", "A_PCM"})
        EXPECT_FALSE(only(soundTrack(1, codec, 2)).canCopy) << codec;
}

}  // namespace
}  // namespace marlet::test
