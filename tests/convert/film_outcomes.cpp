#include "convert/film_outcomes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

namespace marlet::test {

namespace fs = std::filesystem;
using testing::IsEmpty;
using Status = WriteOutcome::Status;

void expectFailure(FilmConversion& film, const std::string& message) {
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_EQ(outcome.message, message);
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
    EXPECT_FALSE(outcome.output);
}

void expectCancelled(const FilmConversion& film, const WriteOutcome& outcome) {
    EXPECT_EQ(outcome.status, Status::cancelled);
    EXPECT_EQ(outcome.message, "cancelled; the original was not touched");
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

void touchSourceAt(FilmConversion& film, const std::string& stage) {
    film.at(stage, [&film] {
        const fs::path& source = film.request.source;
        fs::last_write_time(source, fs::last_write_time(source) + std::chrono::seconds(5));
    });
}

void expectChangedMeanwhile(FilmConversion& film) {
    EXPECT_EQ(film.run().message,
              "the original changed while it was being converted; nothing was saved");
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_FALSE(film.hasWorkFolders());
}

}  // namespace marlet::test
