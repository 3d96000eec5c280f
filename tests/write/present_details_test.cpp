#include "write/present_details.h"

#include <gtest/gtest.h>

#include "support/media.h"
#include "support/temp_folder.h"
#include "write/tag_builder.h"

namespace marlet::test {
namespace {

Details episode() {
    Details details;
    details.kind = MediaKind::tv;
    details.title = "The Ampersand & the Bracket";
    details.description = "Short.";
    details.longDescription = "Long and true.";
    details.cast = {"Ada <Lovelace>", "Tom & Jerry"};
    details.directors = {"Jane Doe", "John Roe"};
    details.writers = {"W. Riter"};
    details.genre = "Drama";
    details.rating = "TV-PG";
    details.releaseDate = "2020-03-04";
    details.show = "A Show";
    details.season = 3;
    details.episode = 300;
    return details;
}

TEST(PresentDetails, TellsWhatTheTagsWereMadeOf) {
    const CoverImage cover{bytesOf("picture"), false};
    const PresentDetails present = PresentDetails::of(TagBuilder::atoms(episode(), cover));
    EXPECT_EQ(present.details, episode());
    EXPECT_EQ(present.album, "A Show, Season 3");
    EXPECT_EQ(present.albumArtist, "A Show");
    EXPECT_EQ(present.track, 300);
    EXPECT_EQ(present.cover, bytesOf("picture"));
    EXPECT_EQ(present.others, 0);
}

TEST(PresentDetails, AFilmHasNoEpisode) {
    Details film;
    film.title = "Charade";
    film.releaseDate = "1963";
    const PresentDetails present = PresentDetails::of(TagBuilder::atoms(film, {}));
    EXPECT_EQ(present.details, film);
    EXPECT_FALSE(present.cover);
}

TEST(PresentDetails, CountsWhatNoWriteTouches) {
    const std::vector<Atom> atoms = {
        IlstEditor::text("©too", "tool"), IlstEditor::text("©cmt", "c"),
        IlstEditor::freeform("Mine", "x"), IlstEditor::text("©nam", "t")};
    EXPECT_EQ(PresentDetails::of(atoms).others, 3);
}

TEST(PresentDetails, OddItemsAreEmptyFields) {
    const auto item = [](const std::string& name, const Bytes& data) {
        return Atom{name, IlstEditor::box(name, data)};
    };
    const std::vector<Atom> atoms = {item("©nam", {}),
                                     item("tvsn", {1, 2, 3}),
                                     item("trkn", {}),
                                     item("covr", IlstEditor::box("data", Bytes(4))),
                                     IlstEditor::freeform("iTunMOVI", "<plist>no"),
                                     IlstEditor::freeform("iTunEXTC", "no bars")};
    EXPECT_EQ(PresentDetails::of(atoms), PresentDetails{});
}

TEST(PresentDetails, NamesInAListOfAnotherFormAreNobody) {
    const std::string odd =
        "<plist version=\"1.0\"><dict><key>cast</key><array><string>A</string><dict>"
        "<key>name</key><integer>3</integer></dict><dict><key>name</key><string>Real</string>"
        "</dict></array><key>directors</key><string>B</string></dict></plist>";
    const TagBuilder::People people = TagBuilder::people(odd);
    EXPECT_EQ(people.cast, std::vector<std::string>{"Real"});
    EXPECT_TRUE(people.directors.empty());
}

TEST(PresentDetails, ReadsAFilmAndNothingOfWhatIsNone) {
    const TempFolder folder;
    makeMovie(folder / "film.mp4", {.tags = {{"title", "Old Title"}, {"genre", "Noir"}}});
    const PresentDetails present = PresentDetails::read(folder / "film.mp4");
    EXPECT_EQ(present.details.title, "Old Title");
    EXPECT_EQ(present.details.genre, "Noir");
    EXPECT_EQ(PresentDetails::read(folder.write("no.mp4", std::string_view("no film"))),
              PresentDetails{});
    EXPECT_EQ(PresentDetails::read(folder / "missing.mp4"), PresentDetails{});
}

}  // namespace
}  // namespace marlet::test
