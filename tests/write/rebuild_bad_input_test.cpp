// Films that nobody should trust, on the whole road of a rebuild with the program's own tool: a
// right result, or a sentence and the film as it was.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/bytes.h"
#include "mp4/sound_layout.h"
#include "support/box_builder.h"
#include "write/film_job.h"

namespace marlet::test {

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Status = WriteOutcome::Status;

class BadFilmTest : public testing::Test {
protected:
    BadFilmTest() { job_.useOwnTool(); }

    void use(const Bytes& film) { job_.setFilm(film); }
    void use(const Movie& movie) { use(buildMovie(movie)); }
    void expectRefused(const std::string& words) {
        const WriteOutcome outcome = job_.write();
        EXPECT_EQ(name(outcome.status), "failed");
        EXPECT_THAT(outcome.message, HasSubstr(words));
        EXPECT_EQ(job_.now(), job_.original());
        EXPECT_TRUE(job_.isTidy());
    }
    void expectFixed() {
        const WriteOutcome outcome = job_.write();
        EXPECT_EQ(name(outcome.status), "done") << outcome.message;
        EXPECT_LE(measureInterleave(job_.file()), soundLayoutLimit);
    }
    /// Where the nth box of that type stands, counted through all bytes.
    static std::size_t placeOf(const Bytes& film, std::string_view type, int nth) {
        std::size_t at = 0;
        for (int i = 0; i < nth; i++) at = textOf(film).find(type, at + 1);
        return at;
    }
    /// The offset of a chunk of the sound track, as the table holds it.
    static Bytes withSoundChunk(Bytes film, std::size_t chunk, std::uint32_t offset) {
        const std::size_t table = placeOf(film, "stco", 2);
        return patched(std::move(film), table + 12 + 4 * chunk, be32(offset));
    }
    static std::uint32_t soundChunk(const Bytes& film, std::size_t chunk) {
        return static_cast<std::uint32_t>(BigEndian::u32(
            film, static_cast<std::int64_t>(placeOf(film, "stco", 2) + 12 + 4 * chunk)));
    }

    FilmJob job_;
};

TEST_F(BadFilmTest, ChunksThatOverlapAreRefused) {
    const Bytes film = buildMovie(laidOut(15));
    use(withSoundChunk(film, 1, soundChunk(film, 0) + 1));
    expectRefused("MP4Box failed (exit 1): marlet-mux: ");
}

TEST_F(BadFilmTest, ChunksThatPointOutsideAreRefused) {
    use(withSoundChunk(buildMovie(laidOut(15)), 0, 0x7FFFFFFF));
    expectRefused("lies outside the media data of the file");
}

TEST_F(BadFilmTest, AChunkTableThatRunsBackwardsIsRefused) {
    // Two rows, of which the first begins behind the second.
    Bytes film = buildMovie(laidOut(25));
    film = patched(std::move(film), placeOf(film, "stsc", 2) + 12, be32(9));
    use(film);
    expectRefused("doesn't run forward from the first chunk");
}

TEST_F(BadFilmTest, ChunksOutOfOrderAreLaidOutInTheOrderOfTheirSamples) {
    // One behind the other in the file, the later one first: odd, and whole.
    Movie movie = laidOut(20);
    const Bytes film = buildMovie(movie);
    const std::uint32_t first = soundChunk(film, 0);
    const std::uint32_t second = soundChunk(film, 1);
    use(withSoundChunk(withSoundChunk(film, 0, second), 1, first));
    expectFixed();
}

TEST_F(BadFilmTest, SamplesOfNoBytesAreKept) {
    Movie movie = laidOut(15);
    movie.tracks[1].sizes[3] = 0;
    movie.tracks[0].sizes[39] = 0;
    use(movie);
    expectFixed();
}

TEST_F(BadFilmTest, ATrackWithoutSamplesIsKept) {
    Movie movie = laidOut(15);
    movie.tracks.push_back(evenTrack("text", 0, 0, 0));
    use(movie);
    expectFixed();
}

TEST_F(BadFilmTest, AFragmentedFilmIsRefused) {
    Bytes film = buildMovie(laidOut(15));
    const Bytes fragment = box("moof", {fullBox("mfhd", 0, 0, be32(1))});
    film.insert(film.end(), fragment.begin(), fragment.end());
    use(film);
    expectRefused("marlet-mux: ");
}

TEST_F(BadFilmTest, EncryptedSamplesAreRefused) {
    Movie movie = laidOut(15);
    movie.tracks[1].codec = "enca";
    use(movie);
    expectRefused("marlet-mux: ");
}

TEST_F(BadFilmTest, AThousandTracksAreLaidOutOrRefusedInBoundedTime) {
    Movie movie = laidOut(15);
    for (int i = 0; i < 1000; i++) movie.tracks.push_back(evenTrack("text", 1, 2, 1000));
    use(movie);
    const WriteOutcome outcome = job_.write();
    if (outcome.status != Status::done) {
        EXPECT_EQ(job_.now(), job_.original());
    }
    EXPECT_TRUE(job_.isTidy());
}

}  // namespace
}  // namespace marlet::test
