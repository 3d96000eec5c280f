#include "write/track_removal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/file_ops.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/box_builder.h"
#include "write/film_job.h"
#include "write/restore_points.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Status = WriteOutcome::Status;

/// Picture, English and French sound, German subtitles; the French sound is switched off.
Movie fourTracks(unsigned tenthsOfSeconds = 1) {
    Movie movie = smallMovie();
    movie.padding = 8000;
    movie.tracks[1].language = "eng";
    MovieTrack french = evenTrack("soun", 40, 20, 100);
    french.language = "fre";
    french.flags = 2;
    MovieTrack german = evenTrack("sbtl", 40, 8, 100);
    german.codec = "tx3g";
    german.language = "ger";
    movie.tracks.push_back(french);
    movie.tracks.push_back(german);
    for (MovieTrack& track : movie.tracks) track.samplesPerChunk = tenthsOfSeconds;
    return movie;
}

class TrackRemovalTest : public testing::Test {
protected:
    TrackRemovalTest() {
        job_.setFilm(buildMovie(fourTracks()));
        job_.request.outputDir = output_.path();
        job_.request.dropTracks = {1};
        job_.useOwnTool();
        date_ = *FileOps::mtime(job_.file());
    }
    void expectUntouched() {
        EXPECT_EQ(job_.now(), job_.original());
        EXPECT_EQ(FileOps::mtime(job_.file()), date_);
        EXPECT_TRUE(job_.isTidy());
    }
    void expectRefused(const WriteOutcome& outcome, Status status, const std::string& message) {
        EXPECT_EQ(name(outcome.status), name(status));
        EXPECT_EQ(outcome.message, message);
        expectUntouched();
        EXPECT_TRUE(fs::is_empty(output_.path()));
    }
    static std::vector<Track> tracksOf(const fs::path& file) {
        return parseSummary(loadMoov(file), file, Detail::Yes).tracks;
    }

    TempFolder output_;
    FilmJob job_;
    FileTime date_;
};

TEST_F(TrackRemovalTest, ATrackThatIsLeftOutMakesANewFileAndTheOriginalStays) {
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "done");
    EXPECT_EQ(outcome.message, "New file Film.m4v · 1 track left out, the original is untouched");
    EXPECT_EQ(outcome.output, output_ / "Film.m4v");
    EXPECT_EQ(outcome.size, FileOps::size(output_ / "Film.m4v"));
    EXPECT_THAT(outcome.changes, Contains("New file Film.m4v"));
    EXPECT_THAT(outcome.changes, Contains("left out 1 track (sound English)"));
    expectUntouched();

    const auto tracks = tracksOf(*outcome.output);
    ASSERT_EQ(tracks.size(), 3U);
    EXPECT_EQ(tracks[0].handler, "vide");
    EXPECT_EQ(tracks[1].language, "fre");
    EXPECT_EQ(tracks[2].language, "ger");
    EXPECT_LE(measureInterleave(*outcome.output), 1.0);
}

TEST_F(TrackRemovalTest, SeveralTracksAreNamedInTheFilesOrder) {
    job_.request.dropTracks = {3, 2};
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message, "New file Film.m4v · 2 tracks left out, the original is untouched");
    EXPECT_THAT(outcome.changes, Contains("left out 2 tracks (sound French, subtitles German)"));
    EXPECT_EQ(tracksOf(*outcome.output).size(), 2U);
}

TEST_F(TrackRemovalTest, TheFirstSoundThatStaysPlaysWhenTheOneThatPlayedGoes) {
    const auto tracks = tracksOf(*job_.write().output);
    EXPECT_EQ(tracks[1].tkhdFlags & 1U, 1U);
    EXPECT_EQ(tracks[2].tkhdFlags & 1U, 1U);
}

TEST_F(TrackRemovalTest, SoundThatPlaysAndStaysLeavesTheOthersOff) {
    job_.request.dropTracks = {3};
    const auto tracks = tracksOf(*job_.write().output);
    EXPECT_EQ(tracks[1].tkhdFlags & 1U, 1U);
    EXPECT_EQ(tracks[2].tkhdFlags & 1U, 0U);
}

TEST_F(TrackRemovalTest, TheNewDetailsAreInTheNewFileAlone) {
    const WriteOutcome outcome = job_.write();
    const auto atoms = IlstEditor::currentIlst(*outcome.output);
    EXPECT_THAT(atoms, Contains(newDetails().front()));
    EXPECT_THAT(atoms, Contains(testing::Field(&Atom::name, "apID")));
}

TEST_F(TrackRemovalTest, NoRestorePointIsNeededForAFileThatStaysAsItIs) {
    job_.write();
    EXPECT_FALSE(RestorePoints::exists(job_.file()));
}

TEST_F(TrackRemovalTest, ATakenNameGetsANumber) {
    writeFile(output_ / "Film.m4v", viewOf("somebody's"));
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.output, output_ / "Film 2.m4v");
    EXPECT_EQ(textOf(readFile(output_ / "Film.m4v")), "somebody's");
}

TEST_F(TrackRemovalTest, AnOutputFolderThatIsNotThereYetIsMade) {
    job_.request.outputDir = output_ / "new" / "folder";
    EXPECT_EQ(job_.write().output, output_ / "new" / "folder" / "Film.m4v");
}

TEST_F(TrackRemovalTest, SoundInLongStretchesIsFixedInTheNewFile) {
    job_.setFilm(buildMovie(fourTracks(15)));
    date_ = *FileOps::mtime(job_.file());
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_EQ(outcome.before, 1.5);
    EXPECT_LE(*outcome.after, 1.0);
    expectUntouched();
}

TEST_F(TrackRemovalTest, AFolderThatIsMadeIsAsOpenToOthersAsThePersonsOwn) {
    const fs::path byHand = output_ / "by hand";
    fs::create_directory(byHand);
    job_.request.outputDir = output_ / "new";
    job_.write();
    EXPECT_EQ(fs::status(output_ / "new").permissions(), fs::status(byHand).permissions());
}

TEST_F(TrackRemovalTest, AnOutputFolderThatCanNotBeMadeIsTold) {
    job_.request.outputDir = output_.write("file", viewOf("a file")) / "folder";
    EXPECT_EQ(job_.write().message, "cannot create the output folder: Not a directory");
    expectUntouched();
}

TEST_F(TrackRemovalTest, ATrackThatCanNotBeReadDoesNotShiftTheNumbersOfTheOthers) {
    Movie movie = fourTracks();
    movie.tracks.insert(movie.tracks.begin(), evenTrack("meta", 40, 4, 100));
    Bytes film = buildMovie(movie);
    const std::size_t handler = textOf(film).find("hdlr");
    film = patched(std::move(film), handler, viewOf("xxxx"));
    job_.setFilm(film);
    date_ = *FileOps::mtime(job_.file());
    ASSERT_EQ(tracksOf(job_.file()).front().index, 1);

    job_.request.dropTracks = {2};
    const WriteOutcome outcome = job_.write();
    ASSERT_EQ(name(outcome.status), "done") << outcome.message;
    const auto tracks = tracksOf(*outcome.output);
    ASSERT_EQ(tracks.size(), 3U);
    EXPECT_EQ(tracks[0].index, 1);
    EXPECT_EQ(tracks[1].language, "fre");
    EXPECT_EQ(tracks[1].tkhdFlags & 1U, 1U);
    expectUntouched();
}

TEST_F(TrackRemovalTest, OfTwoTracksWithOneNumberTheOtherIsNeverLeftOut) {
    // The tool knows tracks by that number alone.
    Bytes film = buildMovie(fourTracks());
    std::size_t header = 0;
    for (int i = 0; i < 3; i++) header = textOf(film).find("tkhd", header + 1);
    film = patched(std::move(film), header + 4 + 12, be32(2));
    job_.setFilm(film);
    date_ = *FileOps::mtime(job_.file());
    ASSERT_EQ(tracksOf(job_.file())[1].id, tracksOf(job_.file())[2].id);
    for (const int index : {1, 2}) {
        job_.request.dropTracks = {index};
        const WriteOutcome outcome = job_.write();
        EXPECT_EQ(name(outcome.status), "failed");
        expectUntouched();
        EXPECT_TRUE(fs::is_empty(output_.path())) << outcome.message;
    }
}

TEST_F(TrackRemovalTest, ACopyIsMadeWithoutTheTracksToo) {
    job_.request.copyTo = output_ / "copies";
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message, "Saved a copy next to the original");
    EXPECT_EQ(outcome.output, output_ / "copies" / "Film (Marlet).mp4");
    EXPECT_EQ(tracksOf(*outcome.output).size(), 3U);
    expectUntouched();
}

// --- refusals ------------------------------------------------------------------------------------

TEST_F(TrackRemovalTest, ATrackThatIsGoneIsRefused) {
    job_.request.dropTracks = {9};
    expectRefused(job_.write(), Status::failed,
                  "a track to remove isn't in this file any more; nothing was changed");
}

TEST_F(TrackRemovalTest, ThePictureIsNeitherSoundNorSubtitles) {
    job_.request.dropTracks = {0};
    expectRefused(job_.write(), Status::failed,
                  "track 0 is not a sound or subtitle track; nothing was changed");
}

TEST_F(TrackRemovalTest, AFileWithoutPictureCanNotLoseATrack) {
    Movie movie = fourTracks();
    movie.tracks.erase(movie.tracks.begin());
    job_.setFilm(buildMovie(movie));
    date_ = *FileOps::mtime(job_.file());
    expectRefused(job_.write(), Status::failed, "the picture can't be removed");
}

TEST_F(TrackRemovalTest, AFullOutputFolderStopsTheRun) {
    // The space of the output folder is asked for second; the work folder's comes first.
    const Sys::Fault noSpace(Sys::Call::Space, ENOSPC, 1, true, output_.path());
    expectRefused(job_.write(), Status::stopped, "Not enough free space in the output folder.");
}

TEST_F(TrackRemovalTest, AToolThatKeepsTheTrackIsRefused) {
    job_.toolMakes({{0, buildMovie(fourTracks())}});
    expectRefused(
        job_.write(), Status::failed,
        "the rebuilt file doesn't have the tracks that were meant to stay; left untouched");
}

TEST_F(TrackRemovalTest, AToolThatLeavesOutAnotherTrackIsRefused) {
    Movie movie = fourTracks();
    movie.tracks.erase(movie.tracks.begin() + 2);
    job_.toolMakes({{0, buildMovie(movie)}});
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "failed");
    EXPECT_THAT(outcome.message, testing::StartsWith("verification failed: track 2 (soun mp4a)"));
    expectUntouched();
}

TEST_F(TrackRemovalTest, AnOriginalThatChangesMeanwhileGivesNoNewFile) {
    job_.at("Checked", [&] { flipByte(job_.file(), FileOps::size(job_.file()) - 1); });
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message,
              "the original changed while it was being converted; nothing was saved");
    EXPECT_TRUE(fs::is_empty(output_.path()));
}

TEST_F(TrackRemovalTest, ANewFileOverTheLimitIsTold) {
    // The measure of what was delivered is the last word, whatever stood there before it.
    job_.at("Saving the new file", [&] {
        Movie movie = fourTracks(15);
        movie.tracks.erase(movie.tracks.begin() + 1);
        writeFile(job_.workFolder() / "candidate.mp4", buildMovie(movie));
    });
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "failed");
    EXPECT_EQ(outcome.message,
              "the new file measures 1.50 s (limit 1.0 s); the original was not touched");
    expectUntouched();
}

// --- the choice alone ----------------------------------------------------------------------------

TEST(TrackChoice, AFileWhoseSoundIsAllSwitchedOffIsLeftSo) {
    Track picture;
    picture.handler = "vide";
    Track first;
    first.index = 1;
    first.handler = "soun";
    Track second = first;
    second.index = 2;
    EXPECT_THAT(TrackChoice::choose({picture, first, second}, {1}).enable, IsEmpty());
    first.tkhdFlags = 1;
    EXPECT_THAT(TrackChoice::choose({picture, first, second}, {1}).enable, ElementsAre(1));
    EXPECT_THAT(TrackChoice::choose({picture, first}, {1}).enable, IsEmpty());
}

TEST(TrackChoice, WhatStaysIsNamedByItsPlaceInTheOriginal) {
    Track picture;
    picture.handler = "vide";
    picture.index = 3;
    Track text;
    text.handler = "clcp";
    text.id = 77;
    text.index = 5;
    const TrackRemoval removal = TrackChoice::choose({text, picture}, {5});
    EXPECT_THAT(*removal.keep, ElementsAre(3));
    EXPECT_THAT(removal.ids, ElementsAre(77U));
    EXPECT_THAT(removal.words, ElementsAre("subtitles Unknown"));
}

}  // namespace
}  // namespace marlet::test
