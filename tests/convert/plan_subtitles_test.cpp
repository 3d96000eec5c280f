#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/plan_builder.h"
#include "convert/track_list.h"

namespace marlet::test {
namespace {

constexpr const char* text = "S_TEXT/UTF8";
constexpr const char* pgs = "S_HDMV/PGS";
constexpr const char* readByOCR = "Picture subtitles: read as text (OCR)";
constexpr const char* fewLines =
    "Looks like foreign parts only (far fewer lines than the full English subtitles)";

/// With an English sound track ahead, so that English is heard.
PlanInput heard(const std::vector<MKVTrack>& subtitles, std::vector<std::string> keep = {"eng"}) {
    std::vector tracks{soundTrack(1, "A_AAC", 2)};
    tracks.insert(tracks.end(), subtitles.begin(), subtitles.end());
    return film(std::move(tracks), std::move(keep));
}

SubChoice only(const MKVTrack& track, std::vector<std::string> keep = {"eng"}) {
    return PlanBuilder::make(heard({track}, std::move(keep))).subs.at(0);
}

/// What a track of `own` frames is taken for beside one of `full`.
SubChoice beside(std::int64_t own, std::int64_t full, const char* codec = text) {
    PlanInput input = heard({subtitleTrack(2, codec), subtitleTrack(3, text)});
    input.stats = {{2, {.count = own}}, {3, {.count = full}}};
    return PlanBuilder::make(input).subs.at(0);
}

TEST(PlanSubtitles, AreTextForEveryTextCodec) {
    for (const char* codec : {"S_TEXT/UTF8", "S_TEXT/ASCII", "S_TEXT/ASS", "S_TEXT/SSA", "S_ASS",
                              "S_SSA", "S_TEXT/WEBVTT"}) {
        const SubChoice choice = only(subtitleTrack(2, codec));
        EXPECT_EQ(choice.kind, SubKind::text) << codec;
        EXPECT_EQ(choice.unsupportedReason, std::nullopt) << codec;
        EXPECT_EQ(choice.note, std::nullopt) << codec;
        EXPECT_TRUE(choice.keep) << codec;
        EXPECT_EQ(choice.id, "mkv2");
    }
}

TEST(PlanSubtitles, OfPicturesAreReadAsText) {
    const SubChoice choice = only(subtitleTrack(2, pgs));
    EXPECT_EQ(choice.kind, SubKind::picture);
    EXPECT_EQ(choice.note, readByOCR);
    EXPECT_TRUE(choice.keep);
    EXPECT_FALSE(choice.splitForced);
}

TEST(PlanSubtitles, OfVobSubAreListedWithTheirReasonAndNeverFrozen) {
    ConvertPlan plan = PlanBuilder::make(heard({subtitleTrack(2, "S_VOBSUB")}));
    EXPECT_EQ(plan.subs.at(0).unsupportedReason,
              "picture subtitles of this kind (VobSub) can't be read yet");
    EXPECT_FALSE(plan.subs[0].keep);
    EXPECT_EQ(plan.subs[0].note, std::nullopt);
    plan.subs[0].keep = true;
    EXPECT_TRUE(plan.snapshot()->subs.empty());
}

TEST(PlanSubtitles, OfAnUnknownCodecAreListedWithTheirReason) {
    const SubChoice choice = only(subtitleTrack(2, "S_KATE"));
    EXPECT_EQ(choice.unsupportedReason, "S_KATE subtitles can't be converted");
    EXPECT_FALSE(choice.keep);
}

TEST(PlanSubtitles, ThatCannotBeReadSayWhy) {
    PlanInput input = heard({subtitleTrack(2, text), subtitleTrack(3, pgs)});
    input.unreadable = {{2, "it is encrypted"}, {3, "it is encrypted"}};
    for (const SubChoice& choice : PlanBuilder::make(input).subs) {
        EXPECT_EQ(choice.unsupportedReason, "it is encrypted");
        EXPECT_FALSE(choice.keep);
        EXPECT_EQ(choice.note, std::nullopt);
    }
}

TEST(PlanSubtitles, HaveTheCanonicalCodeOfTheirLanguage) {
    EXPECT_EQ(only(subtitleTrack(2, text, "deu")).language, "ger");
    EXPECT_EQ(only(subtitleTrack(2, text, "zh-Hans")).language, "chi");
    EXPECT_EQ(only(subtitleTrack(2, text, "ro")).language, "ro");
    EXPECT_TRUE(only(subtitleTrack(2, text, "en-GB")).keep);
}

TEST(PlanSubtitles, AreKeptWhenTheirLanguageIsWanted) {
    EXPECT_TRUE(only(subtitleTrack(2, text, "ger"), {"eng", "ger"}).keep);
    EXPECT_FALSE(only(subtitleTrack(2, text, "ger")).keep);
    // English is heard, since nobody has French; its full subtitles stay out.
    EXPECT_FALSE(only(subtitleTrack(2, text, "eng"), {"fre"}).keep);
}

TEST(PlanSubtitles, OfForeignPartsAreKeptWhenTheirLanguageIsHeard) {
    EXPECT_TRUE(only(subtitleTrack(2, text, "eng", {}, true), {"fre"}).keep);
    EXPECT_TRUE(only(subtitleTrack(2, text, "ger", {}, true), {"eng", "ger"}).keep);
    EXPECT_FALSE(only(subtitleTrack(2, text, "ger", "Foreign parts")).keep)
        << "a language that nobody keeps or hears";
}

TEST(PlanSubtitles, AreForeignPartsByFlagOrName) {
    EXPECT_TRUE(only(subtitleTrack(2, text, "eng", {}, true)).isForced);
    EXPECT_TRUE(only(subtitleTrack(2, text, "eng", "English FORCED")).isForced);
    EXPECT_TRUE(only(subtitleTrack(2, text, "eng", "Foreign parts")).isForced);
    EXPECT_FALSE(only(subtitleTrack(2, text, "eng", "Full")).isForced);
    EXPECT_EQ(only(subtitleTrack(2, text, "eng", {}, true)).note, std::nullopt);
}

TEST(PlanSubtitles, AreForeignPartsWithFarFewerLinesThanTheFullOnes) {
    EXPECT_TRUE(beside(30, 600).isForced);
    EXPECT_EQ(beside(30, 600).note, fewLines);
    EXPECT_EQ(beside(30, 600).label, "English · Foreign parts only");
    EXPECT_FALSE(beside(200, 600).isForced);
    EXPECT_FALSE(beside(120, 600).isForced) << "a fifth is not less than a fifth";
    EXPECT_TRUE(beside(119, 600).isForced);
}

TEST(PlanSubtitles, AreNotJudgedByAPeerOfFewLines) {
    EXPECT_FALSE(beside(1, 19).isForced);
    EXPECT_TRUE(beside(1, 20).isForced);
}

TEST(PlanSubtitles, AreNotJudgedByCountsThatNobodyKnows) {
    EXPECT_FALSE(beside(0, 600).isForced);
    EXPECT_FALSE(PlanBuilder::make(heard({subtitleTrack(2, text), subtitleTrack(3, text)}))
                     .subs.at(0)
                     .isForced);
    PlanInput noPeer = heard({subtitleTrack(2, text), subtitleTrack(3, text, "ger")});
    noPeer.stats = {{2, {.count = 30}}, {3, {.count = 600}}};
    EXPECT_FALSE(PlanBuilder::make(noPeer).subs.at(0).isForced);
    PlanInput uncountedPeer = heard({subtitleTrack(2, text), subtitleTrack(3, text)});
    uncountedPeer.stats = {{2, {.count = 30}}};
    EXPECT_FALSE(PlanBuilder::make(uncountedPeer).subs.at(0).isForced);
}

TEST(PlanSubtitles, AreJudgedByTheLargestPeer) {
    PlanInput input = heard(
        {subtitleTrack(2, text, "en-US"), subtitleTrack(3, text), subtitleTrack(4, pgs, "en-GB")});
    input.stats = {{2, {.count = 30}}, {3, {.count = 40}}, {4, {.count = 600}}};
    const ConvertPlan plan = PlanBuilder::make(input);
    EXPECT_TRUE(plan.subs[0].isForced);
    EXPECT_TRUE(plan.subs[1].isForced);
    EXPECT_FALSE(plan.subs[2].isForced);
}

TEST(PlanSubtitles, OfALanguageThatNobodyHearsAreNotJudgedByTheirLines) {
    PlanInput input =
        heard({subtitleTrack(2, text, "ger"), subtitleTrack(3, text, "ger")}, {"eng", "ger"});
    input.stats = {{2, {.count = 30}}, {3, {.count = 600}}};
    EXPECT_FALSE(PlanBuilder::make(input).subs.at(0).isForced);
}

TEST(PlanSubtitles, OfPicturesKeepBothNotes) {
    EXPECT_EQ(beside(30, 600, pgs).note, std::string(fewLines) + ". " + readByOCR);
}

TEST(PlanSubtitles, AreLabelledByWhatTheirNameAdds) {
    EXPECT_EQ(only(subtitleTrack(2, text)).label, "English");
    EXPECT_EQ(only(subtitleTrack(2, text, "eng", "English SDH")).label,
              "English · SDH (for the hard of hearing)");
    EXPECT_EQ(only(subtitleTrack(2, text, "ger", "Deutsch (SRT)")).label, "German");
    EXPECT_EQ(only(subtitleTrack(2, text, "en-GB", "Commentary")).label, "English · Commentary");
}

}  // namespace
}  // namespace marlet::test
