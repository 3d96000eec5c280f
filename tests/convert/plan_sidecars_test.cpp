#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/plan_builder.h"
#include "convert/track_list.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Info = PlanBuilder::SidecarInfo;
using testing::ElementsAre;
using testing::IsEmpty;

Info info(const std::string& name, const std::string& audioLang = "fre") {
    return PlanBuilder::sidecarInfo("/films/" + name, "My Movie", audioLang);
}

std::vector<SubChoice> planned(const std::vector<std::string>& names,
                               const std::vector<MKVTrack>& tracks = {soundTrack(1, "A_AAC", 2)}) {
    PlanInput input = film(tracks);
    for (const std::string& name : names) input.sidecars.push_back("/films/" + name);
    return PlanBuilder::make(input).subs;
}

std::vector<std::string> found(const std::filesystem::path& source) {
    std::vector<std::string> names;
    for (const auto& file : PlanBuilder::findSidecars(source)) {
        EXPECT_EQ(file.parent_path(), source.parent_path());
        names.push_back(file.filename());
    }
    return names;
}

TEST(SidecarInfo, TellsTheLanguageOfItsName) {
    EXPECT_EQ(info("My Movie.de.srt"), (Info{"ger", false}));
    EXPECT_EQ(info("my movie-English.srt"), (Info{"eng", false}));
    EXPECT_EQ(info("My Movie_pt-BR.srt"), (Info{"por", false}));
    EXPECT_EQ(info("My Movie.2.jpn.ger.srt"), (Info{"jpn", false})) << "the first counts";
}

TEST(SidecarInfo, WithoutALanguageIsThatOfTheSound) {
    EXPECT_EQ(info("My Movie.srt"), (Info{"fre", false}));
    EXPECT_EQ(info("My Movie.srt", "en-GB"), (Info{"eng", false}));
    EXPECT_EQ(info("My Movie.und.srt"), (Info{"fre", false}));
    EXPECT_EQ(info("My Movie.srt", "no language"), (Info{"eng", false}));
}

TEST(SidecarInfo, TellsForeignParts) {
    EXPECT_EQ(info("My Movie.forced.srt"), (Info{"fre", true}));
    EXPECT_EQ(info("My Movie.Foreign.de.srt"), (Info{"ger", true}));
    EXPECT_EQ(info("My Movie.de forced.srt"), (Info{"ger", true}));
    EXPECT_EQ(info("My Movie.unforced.srt"), (Info{"fre", false}));
}

TEST(SidecarInfo, ReadsNothingInTheFilmsOwnName) {
    EXPECT_EQ(PlanBuilder::sidecarInfo("/x/It Forced de.srt", "It Forced de", "eng"),
              (Info{"eng", false}));
    EXPECT_EQ(PlanBuilder::sidecarInfo("/x/Ame\u0301lie.de.srt", "Amélie", "fre"),
              (Info{"ger", false}));
    EXPECT_EQ(info("Other.de.srt"), (Info{"ger", false})) << "a name of its own is read whole";
}

TEST(PlanSidecars, StandBehindTheSubtitlesOfTheFile) {
    const auto subs = planned({"My Movie.en.srt", "My Movie.de.srt"},
                              {soundTrack(1, "A_AAC", 2), subtitleTrack(2, "S_TEXT/UTF8")});
    ASSERT_EQ(subs.size(), 3U);
    EXPECT_EQ(subs[0].id, "mkv2");
    EXPECT_EQ(subs[1].id, "side:My Movie.en.srt");
    EXPECT_EQ(subs[1].kind, SubKind::sidecar);
    EXPECT_EQ(subs[1].sidecar, "/films/My Movie.en.srt");
    EXPECT_EQ(subs[1].track, std::nullopt);
    EXPECT_EQ(subs[1].note, "From the file My Movie.en.srt");
    EXPECT_EQ(subs[1].label, "English");
    EXPECT_TRUE(subs[1].keep);
    EXPECT_EQ(subs[2].label, "German");
    EXPECT_FALSE(subs[2].keep);
}

TEST(PlanSidecars, OfForeignPartsAreKeptWhenTheirLanguageIsHeard) {
    const auto subs = planned({"My Movie.forced.srt", "My Movie.srt", "My Movie.de.forced.srt"},
                              {soundTrack(1, "A_AAC", 2, "fre")});
    EXPECT_EQ(subs.at(0).label, "French · Foreign parts only");
    EXPECT_TRUE(subs[0].keep) << "French is heard, though English is wanted";
    EXPECT_FALSE(subs[1].keep);
    EXPECT_EQ(subs[1].language, "fre");
    EXPECT_FALSE(subs[2].keep);
}

TEST(PlanSidecars, AreEnglishWithoutSound) {
    EXPECT_EQ(planned({"My Movie.srt"}, {}).at(0).language, "eng");
}

TEST(FindSidecars, GivesWhatBeginsLikeTheSourceInOrder) {
    const TempFolder folder;
    for (const char* name : {"My Movie.mkv", "my movie.EN.SRT", "My Movie.srt", "My Movie.de.srt",
                             "My Movie 2.srt", "Other.srt", "My Movie.ass", ".My Movie.srt"})
        folder.write(name, "");
    std::filesystem::create_directory(folder / "My Movie.fr.srt");
    EXPECT_THAT(found(folder / "My Movie.mkv"), ElementsAre("My Movie 2.srt", "My Movie.de.srt",
                                                            "My Movie.srt", "my movie.EN.SRT"));
}

TEST(FindSidecars, GivesNoneOfAFolderThatCannotBeRead) {
    EXPECT_THAT(PlanBuilder::findSidecars("/nowhere/at/all/My Movie.mkv"), IsEmpty());
}

TEST(FindSidecars, KnowsLettersWithMarksInOnePieceAndInTwo) {
    const TempFolder folder;
    folder.write("Ame\u0301lie.srt", "");
    EXPECT_EQ(found(folder / "Amélie.mkv").size(), 1U);
}

}  // namespace
}  // namespace marlet::test
