#include "app/model_fixture.h"
#include "app/track_store.h"
#include "support/box_builder.h"
#include "write/in_place_tracks.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// A picture and two sound tracks.
Bytes film() {
    Movie movie;
    movie.tracks = {evenTrack("vide", 10, 60, 100), evenTrack("soun", 10, 20, 100),
                    evenTrack("soun", 10, 20, 100)};
    return buildMovie(movie);
}

class TrackChoices : public ModelTest {
protected:
    fs::path realFile(const std::string& name) { return library.write(name, film()); }
    void load(const fs::path& file) { Async::wait(model->tracks().load(file)); }
};

TEST_F(TrackChoices, AFilesTracksAreReadOnceAndKeepTheirTicks) {
    const fs::path file = realFile("Charade (1963).mp4");
    EXPECT_EQ(model->tracks().find(file), nullptr);
    load(file);
    ASSERT_NE(model->tracks().find(file), nullptr);
    EXPECT_EQ(model->tracks().find(file)->size(), 2U);
    EXPECT_TRUE(model->tracks().setKeep(file, 2, false));
    fs::remove(file);
    load(file);
    EXPECT_THAT(model->tracks().dropped(file), ElementsAre(2));
}

TEST_F(TrackChoices, WhatIsNoTrackOfTheFileCanNotBeLeftOut) {
    const fs::path file = realFile("Charade (1963).mp4");
    EXPECT_FALSE(model->tracks().setKeep(file, 1, false)) << "not read yet";
    load(file);
    EXPECT_FALSE(model->tracks().setKeep(file, 0, false)) << "the picture";
    EXPECT_FALSE(model->tracks().setKeep(file, 9, false));
    EXPECT_THAT(model->tracks().dropped(file), IsEmpty());
}

TEST_F(TrackChoices, AFileThatBecomesANewOneAnywayHasNoSuchChoice) {
    const fs::path file = realFile("Charade (1963).mkv");
    load(file);
    EXPECT_EQ(model->tracks().find(file), nullptr);
}

TEST_F(TrackChoices, AnUntickedTrackLeadsToANewFile) {
    const fs::path file = realFile("Charade (1963).mp4");
    add({file});
    model->confirm(file);
    load(file);
    model->tracks().setKeep(file, 1, false);
    queueAll();
    ASSERT_EQ(model->queue().jobs().size(), 1U);
    const WriteQueue::Job& job = model->queue().jobs().front();
    EXPECT_EQ(job.how, "New .m4v");
    EXPECT_EQ(job.summary, InPlaceTracks::summary(*model->tracks().find(file)));
    EXPECT_THAT(job.request.dropTracks, ElementsAre(1));
    EXPECT_EQ(job.request.outputDir, AppModel::outputFolder());
    EXPECT_TRUE(std::holds_alternative<WriteRequest::WriteDetails>(job.request.mode));
}

TEST_F(TrackChoices, AFileThatIsDoneOrRemovedForgetsItsTracks) {
    const fs::path done = realFile("Charade (1963).mp4");
    const fs::path removed = realFile("Detour (1945).mp4");
    add({done, removed});
    model->confirm(done);
    load(done);
    load(removed);
    model->removeFromReview({removed});
    EXPECT_EQ(model->tracks().find(removed), nullptr);
    queueAll();
    EXPECT_NE(model->tracks().find(done), nullptr) << "it may come back to Review";
    runQueue();
    EXPECT_EQ(model->tracks().find(done), nullptr);
}

TEST_F(TrackChoices, ALockedFileMayLoseTracksIntoAFolderThatIsNotLocked) {
    const fs::path file = realFile("Media Library/Charade (1963).mp4");
    add({file});
    const ResolvedFile* resolved = find("Media Library/Charade (1963).mp4");
    ASSERT_NE(resolved, nullptr);
    EXPECT_TRUE(model->isLocked(*resolved));
    load(file);
    model->tracks().setKeep(file, 1, false);
    EXPECT_FALSE(model->isLocked(*resolved));
}

}  // namespace
}  // namespace marlet::test
