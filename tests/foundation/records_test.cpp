#include "foundation/records.h"

#include <gtest/gtest.h>

#include <set>

namespace marlet {

TEST(Records, ASourceIsStoredByItsRawNameAndShownByItsOwn) {
    EXPECT_EQ(rawValue(SourceID::appleTV), "appleTV");
    EXPECT_EQ(rawValue(SourceID::tmdb), "tmdb");
    EXPECT_EQ(rawValue(SourceID::itunes), "itunes");
    EXPECT_EQ(displayName(SourceID::appleTV), "Apple TV");
    EXPECT_EQ(displayName(SourceID::tmdb), "TMDB");
    EXPECT_EQ(displayName(SourceID::itunes), "iTunes Store");
    for (const SourceID id : {SourceID::appleTV, SourceID::tmdb, SourceID::itunes})
        EXPECT_EQ(sourceFromRaw(rawValue(id)), id);
    EXPECT_EQ(sourceFromRaw("AppleTV"), std::nullopt);
    EXPECT_EQ(sourceFromRaw(""), std::nullopt);
}

TEST(Records, AMatchComesFromTmdbUnlessItsManualDetailsNameASource) {
    Match match;
    EXPECT_EQ(match.sourceID(), SourceID::tmdb);
    EXPECT_FALSE(match.byHand());
    match.manual = ManualDetails{};
    EXPECT_EQ(match.sourceID(), SourceID::tmdb);
    EXPECT_TRUE(match.byHand());
    match.manual->source = SourceID::itunes;
    EXPECT_EQ(match.sourceID(), SourceID::itunes);
    EXPECT_FALSE(match.byHand());
}

TEST(Records, ACertainVerdictHasNoReasons) {
    EXPECT_TRUE(Verdict::certain().isCertain());
    EXPECT_TRUE(Verdict::certain().reasons().empty());
    const Verdict doubtful = Verdict::needsLook({"why"});
    EXPECT_FALSE(doubtful.isCertain());
    EXPECT_EQ(doubtful.reasons(), std::vector<std::string>{"why"});
    EXPECT_FALSE(Verdict().isCertain()) << "what nobody judged is not certain";
}

TEST(Records, AnEpisodeLabelNeedsBothNumbers) {
    Details details;
    EXPECT_EQ(details.episodeLabel(), "");
    details.season = 2;
    EXPECT_EQ(details.episodeLabel(), "");
    details.episode = 5;
    EXPECT_EQ(details.episodeLabel(), "S2E5");
    details.episodeEnd = 6;
    EXPECT_EQ(details.episodeLabel(), "S2E5-6");
    details.season.reset();
    EXPECT_EQ(details.episodeLabel(), "");
}

namespace {

ArtworkOption picture(ArtworkOption::Shape shape, const std::string& path) {
    return {shape, path, std::nullopt, false};
}

using Shape = ArtworkOption::Shape;

}  // namespace

TEST(FileDraft, TheFirstPictureOfTheStylesShapeIsWrittenUnlessOneWasChosen) {
    FileDraft draft;
    draft.wide = {picture(Shape::wide, "w1"), picture(Shape::wide, "w2")};
    draft.tall = {picture(Shape::tall, "t1")};
    EXPECT_EQ(draft.chosen(ArtworkStyle::wide)->path, "w1");
    EXPECT_EQ(draft.chosen(ArtworkStyle::tall)->path, "t1");
    draft.chosenWide = draft.wide[1];
    EXPECT_EQ(draft.chosen(ArtworkStyle::wide)->path, "w2");
    EXPECT_EQ(draft.chosen(ArtworkStyle::tall)->path, "t1");
}

TEST(FileDraft, TheFilesOwnStyleGoesBeforeTheDefault) {
    FileDraft draft;
    draft.wide = {picture(Shape::wide, "w")};
    draft.tall = {picture(Shape::tall, "t")};
    draft.styleOverride = ArtworkStyle::tall;
    EXPECT_EQ(draft.chosen(ArtworkStyle::wide)->path, "t");
}

TEST(FileDraft, TheOtherShapeIsNeverTakenInItsPlace) {
    FileDraft draft;
    draft.wide = {picture(Shape::wide, "w")};
    draft.chosenWide = draft.wide[0];
    EXPECT_EQ(draft.chosen(ArtworkStyle::tall), std::nullopt);
}

TEST(Records, TheRecordsThatServeAsKeysTellTheirValuesApart) {
    const std::set<TrackInfo> tracks = {{TrackInfo::Kind::audio, "aac", {}, {}},
                                        {TrackInfo::Kind::audio, "aac", "", {}},
                                        {TrackInfo::Kind::audio, "aac", {}, {}}};
    EXPECT_EQ(tracks.size(), 2U) << "an absent language is not an empty one";
    const std::set<ArtworkOption> pictures = {picture(Shape::wide, "a"), picture(Shape::tall, "a")};
    EXPECT_EQ(pictures.size(), 2U);
}

}  // namespace marlet
