#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/pgs_film.h"
#include "convert/plan_parts.h"
#include "convert/track_list.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* pgs = "S_HDMV/PGS";
constexpr const char* text = "S_TEXT/UTF8";
constexpr const char* madeFrom =
    "Made from the forced lines of the picture subtitles (read as text)";

/// With English sound ahead; English is wanted unless told otherwise.
ConvertPlan heardInEnglish(const std::vector<MKVTrack>& subtitles,
                           std::vector<std::string> keep = {"eng"}) {
    std::vector tracks{soundTrack(1, "A_AAC", 2)};
    tracks.insert(tracks.end(), subtitles.begin(), subtitles.end());
    return PlanBuilder::make(film(std::move(tracks), std::move(keep)));
}

std::vector<std::string> ids(const ConvertPlan& plan) {
    std::vector<std::string> all;
    for (const SubChoice& choice : plan.subs) all.push_back(choice.id);
    return all;
}

/// What the plan's only subtitle becomes.
SubChoice counted(const MKVTrack& track, const PGSParser::ForcedStats& stats,
                  std::vector<std::string> keep = {"eng"}) {
    ConvertPlan plan = heardInEnglish({track}, std::move(keep));
    PlanParts::applyForcedCounts(plan, {{track.number, stats}});
    EXPECT_EQ(plan.subs.size(), 1U);
    return plan.subs.at(0);
}

/// The choice made for the forced lines of the plan's only subtitle.
SubChoice cutOut(const MKVTrack& track, std::vector<std::string> keep = {"eng"}) {
    ConvertPlan plan = heardInEnglish({track}, std::move(keep));
    PlanParts::applyForcedCounts(plan, {{track.number, {.events = 500, .forced = 20}}});
    EXPECT_EQ(plan.subs.size(), 2U);
    return plan.subs.at(1);
}

TEST(PlanPictures, WithoutEventsOrWithoutForcedOnesChangeNothing) {
    const ConvertPlan before =
        heardInEnglish({subtitleTrack(2, pgs), subtitleTrack(3, pgs), subtitleTrack(4, pgs)});
    ConvertPlan plan = before;
    PlanParts::applyForcedCounts(plan, {{2, {.events = 0, .forced = 0}}, {3, {.events = 500}}});
    EXPECT_EQ(plan, before) << "nobody counted the third";
}

TEST(PlanPictures, AllForcedAreForeignPartsOnly) {
    const SubChoice choice = counted(subtitleTrack(2, pgs), {.events = 20, .forced = 20});
    EXPECT_TRUE(choice.isForced);
    EXPECT_FALSE(choice.splitForced);
    EXPECT_EQ(choice.id, "mkv2");
    EXPECT_EQ(choice.label, "English · Foreign parts only");
    EXPECT_EQ(choice.note, "Picture subtitles: read as text (OCR)");
    EXPECT_TRUE(choice.keep);
}

TEST(PlanPictures, AllForcedAreLabelledBehindWhatTheirNameAdds) {
    EXPECT_EQ(counted(subtitleTrack(2, pgs, "eng", "SDH"), {.events = 20, .forced = 20}).label,
              "English · SDH (for the hard of hearing) · Foreign parts only");
}

TEST(PlanPictures, AlreadyLabelledAsForeignAreNotLabelledTwice) {
    EXPECT_EQ(counted(subtitleTrack(2, pgs, "eng", {}, true), {.events = 20, .forced = 20}).label,
              "English · Foreign parts only");
}

TEST(PlanPictures, AllForcedAreKeptWhenTheirLanguageIsHeardOrTheyWereKept) {
    const PGSParser::ForcedStats all{.events = 20, .forced = 20};
    ASSERT_FALSE(heardInEnglish({subtitleTrack(2, pgs)}, {"fre"}).subs.at(0).keep);
    EXPECT_TRUE(counted(subtitleTrack(2, pgs, "en-GB"), all, {"fre"}).keep) << "heard";
    EXPECT_TRUE(counted(subtitleTrack(2, pgs, "ger"), all, {"eng", "ger"}).keep) << "kept before";
    const SubChoice neither = counted(subtitleTrack(2, pgs, "ger"), all);
    EXPECT_FALSE(neither.keep);
    EXPECT_TRUE(neither.isForced);
}

TEST(PlanPictures, SomeForcedGetAChoiceOfTheirOwn) {
    const MKVTrack track = subtitleTrack(7, pgs, "eng", "English SDH");
    EXPECT_EQ(cutOut(track), (SubChoice{.id = "pgsforced7",
                                        .track = track,
                                        .kind = SubKind::picture,
                                        .language = "eng",
                                        .keep = true,
                                        .isForced = true,
                                        .label = "English · Foreign parts only",
                                        .note = madeFrom,
                                        .splitForced = true,
                                        .touched = false}));
}

TEST(PlanPictures, ForcedLinesAreKeptWhenTheirLanguageIsHeard) {
    EXPECT_TRUE(cutOut(subtitleTrack(2, pgs, "en-GB"), {"fre"}).keep);
    const SubChoice unheard = cutOut(subtitleTrack(2, pgs, "ger"), {"eng", "ger"});
    EXPECT_FALSE(unheard.keep) << "wanted, but no German is heard";
    EXPECT_EQ(unheard.label, "German · Foreign parts only");
}

TEST(PlanPictures, OfWhichSomeAreForcedStayAsTheyAre) {
    const ConvertPlan before = heardInEnglish({subtitleTrack(2, pgs)});
    ConvertPlan plan = before;
    PlanParts::applyForcedCounts(plan, {{2, {.events = 2, .forced = 1}}});
    EXPECT_EQ(plan.subs.at(0), before.subs.at(0));
}

TEST(PlanPictures, ForcedLinesStandBehindAllOtherSubtitlesInFileOrder) {
    PlanInput input = film({soundTrack(1, "A_AAC", 2), subtitleTrack(5, pgs), subtitleTrack(3, pgs),
                            subtitleTrack(4, text)});
    input.sidecars = {"/films/My Movie.srt"};
    ConvertPlan plan = PlanBuilder::make(input);
    PlanParts::applyForcedCounts(
        plan, {{3, {.events = 9, .forced = 1}}, {5, {.events = 9, .forced = 1}}});
    EXPECT_THAT(ids(plan), ElementsAre("mkv5", "mkv3", "mkv4", "side:My Movie.srt", "pgsforced5",
                                       "pgsforced3"));
}

TEST(PlanPictures, AreCountedInTracksOfPicturesThatCanBeReadAlone) {
    PlanInput input =
        film({soundTrack(1, "A_AAC", 2), subtitleTrack(2, text), subtitleTrack(3, "S_VOBSUB"),
              subtitleTrack(4, pgs), subtitleTrack(5, pgs)});
    input.unreadable[4] = "it is encrypted";
    input.sidecars = {"/films/My Movie.srt"};
    ConvertPlan plan = PlanBuilder::make(input);
    EXPECT_THAT(PlanParts::pictureTracks(plan), ElementsAre(5));
    const ConvertPlan before = plan;
    const PGSParser::ForcedStats some{.events = 9, .forced = 1};
    PlanParts::applyForcedCounts(plan, {{2, some}, {3, some}, {4, some}});
    EXPECT_EQ(plan, before);
}

TEST(PlanPictures, ForcedLinesAreNoTrackToCountAgain) {
    ConvertPlan plan = heardInEnglish({subtitleTrack(2, pgs)});
    const PlanParts::ForcedCounts counts{{2, {.events = 9, .forced = 1}}};
    PlanParts::applyForcedCounts(plan, counts);
    EXPECT_THAT(PlanParts::pictureTracks(plan), ElementsAre(2));
    plan.subs.erase(plan.subs.begin());
    EXPECT_THAT(PlanParts::pictureTracks(plan), IsEmpty());
}

TEST(PlanPictures, ForcedLinesAreJudgedByTheSoundThatIsKeptNow) {
    ConvertPlan plan =
        PlanBuilder::make(film({soundTrack(1, "A_AAC", 2, "ger"), soundTrack(2, "A_AAC", 2, "eng"),
                                subtitleTrack(3, pgs, "ger")}));
    plan.audio.at(0).keep = true;
    PlanParts::applyForcedCounts(plan, {{3, {.events = 9, .forced = 1}}});
    EXPECT_TRUE(plan.subs.at(1).keep);
}

TEST(PlanPictures, ATickOnForcedLinesIsCarriedOver) {
    ConvertPlan old = heardInEnglish({subtitleTrack(2, pgs), subtitleTrack(3, pgs)});
    ConvertPlan fresh = old;
    const PlanParts::ForcedCounts counts{{2, {.events = 9, .forced = 1}},
                                         {3, {.events = 9, .forced = 9}}};
    PlanParts::applyForcedCounts(old, counts);
    PlanParts::applyForcedCounts(fresh, counts);
    for (const std::size_t i : {1U, 2U}) {
        ASSERT_TRUE(old.subs.at(i).isForced);
        old.subs[i].keep = false;
        old.subs[i].touched = true;
    }
    PlanBuilder::merge(old, fresh);
    EXPECT_EQ(fresh, old);
}

TEST(PlanPictures, ForcedLinesAreFrozenWithAllThatReadingThemTakes) {
    ConvertPlan plan = heardInEnglish({subtitleTrack(2, pgs, "en-GB")}, {"fre"});
    PlanParts::applyForcedCounts(plan, {{2, {.events = 9, .forced = 1}}});
    using Sub = ConvertPlanSnapshot::Sub;
    EXPECT_EQ(plan.snapshot().value().subs,
              std::vector<Sub>({{.id = "pgsforced2",
                                 .track = 2,
                                 .kind = 1,
                                 .language = "eng",
                                 .name = "English · Foreign parts only",
                                 .forced = true,
                                 .splitForced = true}}));
}

class PicturesOfAFile : public testing::Test {
protected:
    void SetUp() override {
        const auto source = folder_.write("film.mkv", filmWithPictures());
        file_ = MKVFile::open(source);
        ASSERT_NE(file_, nullptr);
        plan_ = PlanBuilder::make(source, *file_, {"eng"}, {}, {});
        ASSERT_EQ(plan_.subs.size(), 3U);
    }

    TempFolder folder_;
    std::unique_ptr<MKVFile> file_;
    ConvertPlan plan_;
};

TEST_F(PicturesOfAFile, TellWhichAreForeignParts) {
    PlanBuilder::applyPGS(plan_, *file_);
    EXPECT_THAT(ids(plan_), ElementsAre("mkv2", "mkv3", "mkv4", "pgsforced4"));
    EXPECT_TRUE(plan_.subs[0].isForced);
    EXPECT_FALSE(plan_.subs[1].isForced);
    EXPECT_FALSE(plan_.subs[2].isForced);
    EXPECT_TRUE(plan_.subs[3].splitForced);
}

TEST_F(PicturesOfAFile, AreAllCountedInOneWalk) {
    std::vector<double> oneWalk;
    file_->forEachBlock(
        std::set{3},
        [&](double share) {
            oneWalk.push_back(share);
            return true;
        },
        [](const MKVBlock&) { return true; });
    ASSERT_THAT(oneWalk, Not(IsEmpty()));
    std::vector<double> shares;
    PlanBuilder::applyPGS(plan_, *file_, [&](double share) {
        shares.push_back(share);
        return true;
    });
    EXPECT_EQ(shares, oneWalk);
}

TEST_F(PicturesOfAFile, OfAStoppedWalkLeaveThePlanAsItWas) {
    const ConvertPlan before = plan_;
    int left = 2;
    PlanBuilder::applyPGS(plan_, *file_, [&](double) { return --left > 0; });
    EXPECT_EQ(plan_, before);
}

TEST_F(PicturesOfAFile, ThatHasNoneAreNotWalked) {
    ConvertPlan plan = heardInEnglish({subtitleTrack(2, text)});
    const ConvertPlan before = plan;
    int asked = 0;
    PlanBuilder::applyPGS(plan, *file_, [&](double) {
        asked++;
        return true;
    });
    EXPECT_EQ(plan, before);
    EXPECT_EQ(asked, 0);
}

}  // namespace
}  // namespace marlet::test
