#include <gtest/gtest.h>

#include "app/draft_store.h"
#include "app/review_list.h"

namespace marlet::test {
namespace {

ArtworkOption wide(const std::string& path) {
    return {ArtworkOption::Shape::wide, path, {}, false};
}

FileDraft draft(const std::optional<std::string>& season) {
    FileDraft draft;
    draft.wide = {wide("/first"), wide("/second")};
    draft.chosenWide = draft.wide[0];
    draft.seasonKey = season;
    return draft;
}

TEST(Drafts, APickSharedByTheSeasonShowsOnAnEpisodeWhoseDraftLoadsLater) {
    DraftStore drafts;
    drafts.put("/1.mp4", draft("S"));
    drafts.pickArtwork(wide("/second"), "/1.mp4");
    drafts.put("/2.mp4", draft("S"));
    drafts.put("/other.mp4", draft("T"));
    EXPECT_EQ(drafts.find("/2.mp4")->chosenWide->path, "/second");
    EXPECT_EQ(drafts.find("/other.mp4")->chosenWide->path, "/first");
}

TEST(Drafts, WithSharingOffAPickChangesOnlyThatDraft) {
    DraftStore drafts;
    drafts.put("/1.mp4", draft("S"));
    drafts.put("/2.mp4", draft("S"));
    drafts.setShareSeason(false, "S", "/1.mp4");
    drafts.pickArtwork(wide("/second"), "/1.mp4");
    EXPECT_EQ(drafts.find("/1.mp4")->chosenWide->path, "/second");
    EXPECT_EQ(drafts.find("/2.mp4")->chosenWide->path, "/first");
}

TEST(Drafts, TurningSharingOnAppliesThatFilesChoiceToTheSeason) {
    DraftStore drafts;
    drafts.put("/1.mp4", draft("S"));
    drafts.put("/2.mp4", draft("S"));
    drafts.setShareSeason(false, "S", "/1.mp4");
    drafts.pickArtwork(wide("/second"), "/1.mp4");
    drafts.setShareSeason(true, "S", "/1.mp4");
    EXPECT_EQ(drafts.find("/2.mp4")->chosenWide->path, "/second");
}

TEST(Drafts, PickingArtworkForAFileWithoutADraftIsIgnored) {
    DraftStore drafts;
    drafts.pickArtwork(wide("/x"), "/none.mp4");
    EXPECT_EQ(drafts.find("/none.mp4"), nullptr);
}

ResolvedFile film(const std::string& path, bool certain, bool matched) {
    ResolvedFile file;
    file.file.url = path;
    file.guess = Guess{.title = path};
    if (matched) file.match = Match{.tmdbID = 1, .title = path};
    file.verdict = certain ? Verdict::certain() : Verdict::needsLook({"reason"});
    return file;
}

TEST(Review, AFileIsConfirmedByItsVerdictOrByThePerson) {
    ReviewList list;
    list.add({film("/a.mp4", true, true), film("/b.mp4", false, true)});
    EXPECT_TRUE(list.isConfirmed(*list.find("/a.mp4")));
    EXPECT_FALSE(list.isConfirmed(*list.find("/b.mp4")));
    list.confirm("/b.mp4");
    EXPECT_TRUE(list.isReady(*list.find("/b.mp4")));
}

TEST(Review, AConfirmedFileWithoutAMatchIsNotReady) {
    ReviewList list;
    list.add({film("/a.mp4", false, false)});
    list.confirm("/a.mp4");
    EXPECT_FALSE(list.isReady(*list.find("/a.mp4")));
}

TEST(Review, GroupingIsAlwaysOfTheWholeList) {
    ReviewList list;
    list.add({film("/b.mp4", true, true)});
    list.add({film("/a.mp4", true, true)});
    ASSERT_EQ(list.items().size(), 2u);
    EXPECT_EQ(list.items()[0].files[0].file.url, "/a.mp4");
    list.remove({"/a.mp4"});
    EXPECT_EQ(list.items().size(), 1u);
    list.replace({film("/a.mp4", true, true)});
    EXPECT_EQ(list.find("/a.mp4"), nullptr) << "a file that is not in Review is passed over";
}

TEST(Review, AFileThatIsThereAlreadyKeepsItsRecord) {
    ReviewList list;
    list.add({film("/a.mp4", true, true)});
    list.add(
        {film("/a.mp4", false, false), film("/b.mp4", true, true), film("/b.mp4", true, true)});
    EXPECT_EQ(list.fileCount(), 2u);
    EXPECT_TRUE(list.find("/a.mp4")->match);
}

TEST(Review, FilesAndRowsAreFoundByTheirNamesAfterEveryChange) {
    ReviewList list;
    std::vector<ResolvedFile> many;
    for (int i = 0; i < 50; i++) many.push_back(film("/" + std::to_string(i) + ".mp4", true, true));
    list.add(many);
    list.remove({"/7.mp4", "/49.mp4"});
    int seen = 0;
    list.forEach([&](const ResolvedFile& file) {
        seen++;
        EXPECT_EQ(list.find(file.file.url), &file);
        EXPECT_EQ(list.item(list.itemOf(file.file.url)->id), list.itemOf(file.file.url));
    });
    EXPECT_EQ(seen, 48);
    EXPECT_EQ(list.find("/7.mp4"), nullptr);
    EXPECT_EQ(list.itemOf("/49.mp4"), nullptr);
    EXPECT_EQ(list.item("none"), nullptr);
}

TEST(Drafts, ALoadingThatWasForgottenEndsNoLaterOneOfTheSameFile) {
    DraftStore drafts;
    const int first = drafts.beginLoading("/1.mp4");
    drafts.forget("/1.mp4");
    const int second = drafts.beginLoading("/1.mp4");
    drafts.endLoading("/1.mp4", first);
    EXPECT_TRUE(drafts.isCurrent("/1.mp4", second));
    drafts.endLoading("/1.mp4", second);
    EXPECT_FALSE(drafts.anyLoading());
}

}  // namespace
}  // namespace marlet::test
