#include "convert/chapter_list.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "mp4/summary.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

Movie filmWith(const std::vector<Bytes>& userData) {
    Movie movie;
    movie.tracks = {evenTrack("vide", 25, 10, 40)};
    movie.tags = {textItem("©nam", "Film")};
    movie.userData = userData;
    return movie;
}

class ChapterListTest : public testing::Test {
protected:
    Bytes withoutList(const Movie& movie) {
        file_ = folder_.write("built.mp4", buildMovie(movie));
        BuiltIndex index(file_);
        ChapterList::remove(index);
        return readFile(file_);
    }
    TempFolder folder_;
    std::filesystem::path file_;
    const Bytes list_ = chplBox({{0, "Secret"}, {500, "Other"}});
};

TEST_F(ChapterListTest, BecomesFreeSpaceAndNothingElseChanges) {
    EXPECT_EQ(withoutList(filmWith({list_})),
              buildMovie(filmWith({patched(list_, 4, viewOf("free"))})));
    EXPECT_TRUE(parseSummary(loadMoov(file_), file_, Detail::Yes).chpl.empty());
}

TEST_F(ChapterListTest, AFilmWithoutOneStays) {
    EXPECT_EQ(withoutList(filmWith({})), buildMovie(filmWith({})));
}

TEST_F(ChapterListTest, AFileThatCannotBeWrittenIsTold) {
    file_ = folder_.write("built.mp4", buildMovie(filmWith({list_})));
    const Sys::Fault readOnly(Sys::Call::Open, EROFS, 3, false, file_);
    try {
        BuiltIndex index(file_);
        ChapterList::remove(index);
        FAIL() << "no failure";
    } catch (const MFError& failure) {
        EXPECT_EQ(failure.description(),
                  "cannot open the new file to remove its chapters: Read-only file system");
    }
}

}  // namespace
}  // namespace marlet::test
