#include "convert/picture_start.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "mp4/summary.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

/// A picture of 25 frames with B-frames, whose first is shown 80 units after it is decoded.
Movie filmWith(const std::vector<EditRow>& edits, const std::string& handler = "vide") {
    Movie movie;
    movie.tracks = {evenTrack(handler, 25, 10, 40)};
    movie.tracks[0].edits = edits;
    movie.tracks[0].tables = {cttsBox({{1, 80}, {1, 160}, {1, 80}, {1, 0}, {1, 40}, {20, 80}})};
    return movie;
}

double startOf(const std::filesystem::path& file) {
    return parseSummary(loadMoov(file), file, Detail::Yes).tracks.at(0).presOffset;
}

class PictureStartTest : public testing::Test {
protected:
    /// What the film's bytes are afterwards.
    Bytes restored(const Movie& movie, const std::vector<MuxTrack>& tracks = {}) {
        before_ = buildMovie(movie);
        file_ = folder_.write("built.mp4", before_);
        BuiltIndex index(file_);
        PictureStart::restore(index, tracks);
        return readFile(file_);
    }

    TempFolder folder_;
    std::filesystem::path file_;
    Bytes before_;
};

TEST_F(PictureStartTest, ADelayedPictureIsShownByItsDelayAndNoMore) {
    const Bytes now = restored(filmWith({{500, -1}, {1080, 0}}));
    // Decoded from -0.08 s on, so that the first frame is shown at half a second.
    EXPECT_NEAR(startOf(file_), 0.42, 1e-9);
    EXPECT_EQ(now, buildMovie(filmWith({{500, -1}, {1000, 80}})));
}

TEST_F(PictureStartTest, AnEditListThatHidesTheOffsetAlreadyStays) {
    EXPECT_EQ(restored(filmWith({{500, -1}, {1000, 80}})), before_);
}

TEST_F(PictureStartTest, APictureWithoutDelayStays) {
    EXPECT_EQ(restored(filmWith({{1000, 80}})), before_);
    EXPECT_EQ(restored(filmWith({{1000, 0}})), before_);
    EXPECT_EQ(restored(filmWith({})), before_);
}

TEST_F(PictureStartTest, OtherEditsAreNobodysBusiness) {
    EXPECT_EQ(restored(filmWith({{500, -1}, {400, 0}, {600, 400}})), before_);
}

TEST_F(PictureStartTest, SoundHasNoSuchOffset) {
    EXPECT_EQ(restored(filmWith({{500, -1}, {1080, 0}}, "soun")), before_);
}

/// Sound of 1000 units a second, as the film's.
MuxTrack soundFile(const std::filesystem::path& file, const std::vector<EditRow>& edits) {
    Movie sound;
    sound.tracks = {evenTrack("soun", 25, 10, 40)};
    sound.tracks[0].edits = edits;
    writeFile(file, buildMovie(sound));
    return {.file = file};
}

TEST_F(PictureStartTest, DelayedSoundLosesTheSilenceThatItsOwnFileHides) {
    Movie film;
    film.tracks = {evenTrack("soun", 25, 10, 40)};
    film.tracks[0].edits = {{500, -1}, {1000, 0}};
    const MuxTrack sound = soundFile(folder_ / "t.m4a", {{979, 21}});
    Movie wanted = film;
    wanted.tracks[0].edits = {{500, -1}, {979, 21}};
    EXPECT_EQ(restored(film, {sound}), buildMovie(wanted));
    EXPECT_NEAR(startOf(file_), 0.479, 1e-9);
}

TEST_F(PictureStartTest, SoundWhoseFileHidesNothingStays) {
    Movie film;
    film.tracks = {evenTrack("soun", 25, 10, 40)};
    film.tracks[0].edits = {{500, -1}, {1000, 0}};
    EXPECT_EQ(restored(film, {soundFile(folder_ / "t.m4a", {})}), before_);
    EXPECT_EQ(restored(film, {soundFile(folder_ / "t.mkv", {{979, 21}})}), before_)
        << "it is copied";
    EXPECT_EQ(restored(film, {{.file = folder_ / "missing.m4a"}}), before_);
    film.tracks[0].edits = {{500, -1}, {979, 21}};
    EXPECT_EQ(restored(film, {soundFile(folder_ / "t.m4a", {{979, 21}})}), before_);
}

TEST_F(PictureStartTest, APictureShownInTheOrderOfDecodingStays) {
    Movie movie = filmWith({{500, -1}, {1000, 0}});
    movie.tracks[0].tables = {};
    EXPECT_EQ(restored(movie), before_);
}

TEST_F(PictureStartTest, AFileThatCannotBeWrittenIsTold) {
    file_ = folder_.write("built.mp4", buildMovie(filmWith({{500, -1}, {1080, 0}})));
    const Sys::Fault readOnly(Sys::Call::Open, EROFS, 3, false, file_);
    try {
        BuiltIndex index(file_);
        PictureStart::restore(index);
        FAIL() << "no failure";
    } catch (const MFError& failure) {
        EXPECT_EQ(failure.description(),
                  "cannot open the new file to set its start: Read-only file system");
    }
}

TEST_F(PictureStartTest, AFileThatIsNoFilmStays) {
    const auto file = folder_.write("built.mp4", std::string_view("no film"));
    BuiltIndex index(file);
    EXPECT_NO_THROW(PictureStart::restore(index));
    EXPECT_EQ(textOf(readFile(file)), "no film");
}

}  // namespace
}  // namespace marlet::test
