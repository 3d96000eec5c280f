// A media tool that doesn't let go of the new file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "convert/film_conversion.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

/// A process that has the file open for writing; it makes `mark` when it has, and ends with this.
class Holder {
public:
    void hold(const fs::path& file, const fs::path& mark) {
        const std::string command =
            "exec 3>>'" + file.string() + "'; : > '" + mark.string() + "'; read end";
        process_.reset(popen(command.c_str(), "w"));
    }

private:
    struct Close {
        void operator()(FILE* process) const { pclose(process); }
    };
    std::unique_ptr<FILE, Close> process_;
};

TEST(Converter, AFilmThatAnotherProcessStillHoldsOpenIsNotSaved) {
    FilmConversion film;
    film.plan().subs.clear();
    film.plan().audio.resize(1);
    film.plan().hasChapters = false;
    film.toolMakes({{0, builtFilm(500)}},
                   "echo '(50/100)'\n"
                   "while [ ! -e \"${out%/*}/held\" ]; do sleep 0.05; done");
    Holder holder;
    film.at(
        "Building the new file",
        [&] {
            const fs::path folder = film.workFolder() / "tool";
            holder.hold(folder / "built.mp4", folder / "held");
        },
        0.41);
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, WriteOutcome::Status::failed);
    EXPECT_EQ(outcome.message, "MP4Box still has the new file open for writing; nothing was saved");
    EXPECT_THAT(film.delivered(), testing::IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

}  // namespace
}  // namespace marlet::test
