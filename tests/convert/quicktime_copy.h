#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/film_outcomes.h"
#include "convert/mov_films.h"

namespace marlet::test {

/// A conversion of a QuickTime film by Marlet's own tool.
class Copy : public FilmConversion {
public:
    explicit Copy(const Bytes& film = plainMOV()) : FilmConversion("Movie.mov", film) {
        useOwnTools();
    }
};

/// Converts: the new file is delivered with all samples proved, and the original is what it was.
inline void expectDone(FilmConversion& film) {
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, WriteOutcome::Status::done) << outcome.message;
    EXPECT_EQ(outcome.message, "New file Movie.m4v · every sample checked against the .mov");
    EXPECT_THAT(film.delivered(), testing::ElementsAre("Movie.m4v"));
    EXPECT_TRUE(film.isUntouched());
}

/// H.264 with such a sound track.
inline Bytes withSound(const std::vector<std::string>& sound) {
    std::vector<std::string> all = {"-map", "0", "-map", "1"};
    all.insert(all.end(), sound.begin(), sound.end());
    return movFilm(avc(all));
}

}  // namespace marlet::test
