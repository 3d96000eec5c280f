#include "mp4/file_info.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "mp4/sound_layout.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Number = std::optional<std::int64_t>;

FileTags tagsOf(const std::vector<Bytes>& items) {
    return parseTags(udtaBox(items));
}

Bytes number(std::string_view type, const Bytes& value) {
    return tagItem(type, 21, value);
}

// --- tags ---

TEST(FileTags, AreTitleShowSeasonAndEpisode) {
    EXPECT_EQ(
        tagsOf({textItem("©nam", "A Title"), textItem("tvsh", "A Show"), number("tvsn", be32(3)),
                number("tves", be32(12)), textItem("©alb", "not asked for")}),
        (FileTags{"A Title", "A Show", 3, 12}));
}

TEST(FileTags, WithoutATagBlockAreEmpty) {
    EXPECT_EQ(parseTags({}), FileTags{});
    EXPECT_EQ(parseTags(mvhdBox(1, 1)), FileTags{});
    EXPECT_EQ(tagsOf({}), FileTags{});
}

TEST(FileTags, NumbersAreOfAnyWidthUpToEightBytes) {
    EXPECT_EQ(tagsOf({number("tvsn", Bytes{7})}).season, 7);
    EXPECT_EQ(tagsOf({number("tvsn", be16(300))}).season, 300);
    EXPECT_EQ(tagsOf({number("tvsn", be64(1ULL << 40))}).season, 1LL << 40);
    EXPECT_EQ(tagsOf({number("tvsn", joined({be64(5), Bytes{9}}))}).season, 5);
    EXPECT_EQ(tagsOf({number("tvsn", be32(0xFFFF'FFFF))}).season, 0xFFFF'FFFFLL);
}

TEST(FileTags, AnEmptyNumberIsZeroAndNotNothing) {
    EXPECT_EQ(tagsOf({number("tvsn", {})}).season, Number(0));
    EXPECT_EQ(tagsOf({number("tves", {})}).episode, Number(0));
    EXPECT_EQ(tagsOf({box("tvsn", {box("data", Bytes())})}).season, Number(0));
}

TEST(FileTags, AnItemWithoutDataSaysNothing) {
    EXPECT_EQ(tagsOf({box("tvsn", Bytes())}).season, Number());
    EXPECT_EQ(tagsOf({textItem("©nam", "x"), box("©nam", Bytes(4))}).title, "x");
}

TEST(FileTags, BadTextIsRepaired) {
    EXPECT_EQ(tagsOf({textItem("©nam", "a\xFF"), textItem("tvsh", "\xC3")}),
              (FileTags{"a\uFFFD", "\uFFFD", {}, {}}));
}

TEST(FileTags, ALaterItemOverwritesAnEarlierOne) {
    EXPECT_EQ(tagsOf({textItem("©nam", "first"), textItem("©nam", "second")}).title, "second");
}

TEST(FileTags, ALaterTagBlockOverwritesAnEarlierOne) {
    const Bytes plain = box("meta", {ilstBox({textItem("©nam", "of the movie")})});
    const Bytes user = udtaBox({textItem("©nam", "of user data"), textItem("tvsh", "A Show")});
    EXPECT_EQ(parseTags(joined({plain, user})), (FileTags{"of the movie", "A Show", {}, {}}));
}

// --- the account ---

TEST(FileInfo, OfAnEpisodeWithoutTagsIsToldByItsNameAndFolders) {
    const FileInfo info =
        describe("/films/My Show/Season 3/01 My Title (1080p HD).mp4", FileTags{});
    EXPECT_EQ(info, (FileInfo{0, "My Show", false, 3, 1, "My Title"}));
    EXPECT_EQ(info.episodeLabel(), "S03E01");
    EXPECT_EQ(info.displayName(), "S03E01 My Title");
}

TEST(FileInfo, SpecialsHaveNoSeasonOfTheirFolder) {
    const FileInfo info = describe("/My Show/Specials/02 - Extra.m4v", {});
    EXPECT_EQ(info, (FileInfo{0, "My Show", false, {}, 2, "Extra"}));
    EXPECT_EQ(info.episodeLabel(), std::nullopt);
    EXPECT_EQ(info.displayName(), "Extra");
}

TEST(FileInfo, ATaggedShowWinsOverTheFolders) {
    EXPECT_EQ(describe("/My Show/Season 3/01 Title.mp4", {"", "Tagged", {}, {}}).show, "Tagged");
    const FileInfo info = describe("/downloads/03. Title.mp4", {"", "Tagged", {}, {}});
    EXPECT_EQ(info, (FileInfo{0, "Tagged", false, {}, 3, "Title"}));
}

TEST(FileInfo, TagsWinOverNameAndFolders) {
    EXPECT_EQ(describe("/My Show/Season 3/01 Name.mp4", {"A Title", "A Show", 0, 0}),
              (FileInfo{0, "A Show", false, 0, 0, "A Title"}));
    EXPECT_EQ(describe("/My Show/Season 3/01 Name.mp4", {"", "", 5, 9}),
              (FileInfo{0, "My Show", false, 5, 9, "Name"}))
        << "the number leaves the title all the same";
}

TEST(FileInfo, AMovieWithoutTagsIsCalledAsItsFolder) {
    const FileInfo info = describe("/films/Alien/alien.1979.mp4", {});
    EXPECT_EQ(info, (FileInfo{0, "Alien", true, {}, {}, "Movie"}));
    EXPECT_EQ(info.displayName(), "Alien");
}

TEST(FileInfo, AMovieIsCalledByItsTitleTag) {
    const FileInfo info = describe("/films/Alien/01 x.mp4", {"Aliens", "", 2, 4});
    EXPECT_EQ(info, (FileInfo{0, "Aliens", true, {}, {}, "Movie"}))
        << "its numbers are not looked at";
}

TEST(FileInfo, FoldersOfSeasonsAreKnownInAnyCase) {
    for (const char* name :
         {"Season 2", "season 2", "SERIES 2", "Season02", "Specials", "special 2"})
        EXPECT_EQ(describe("/My Show/" + std::string(name) + "/x.mp4", {}).isMovie,
                  std::string_view(name) == "Season02")
            << name;
    EXPECT_TRUE(describe("/films/Seasons/x.mp4", {}).isMovie);
    EXPECT_TRUE(describe("/films/The Season 2/x.mp4", {}).isMovie);
}

TEST(FileInfo, TheDigitsOfASeasonsFolderAreItsNumber) {
    EXPECT_EQ(describe("/Show/Season 12/x.mp4", {}).season, 12);
    EXPECT_EQ(describe("/Show/Series 1 part 2/x.mp4", {}).season, 12);
    EXPECT_EQ(describe("/Show/Season 99999999999999999999/x.mp4", {}).season, Number());
}

TEST(FileInfo, AFileBelowTVShowsIsAnEpisode) {
    EXPECT_EQ(describe("/media/TV Shows/My Show/07 Name.mp4", {}),
              (FileInfo{0, "My Show", false, {}, 7, "Name"}));
    EXPECT_TRUE(describe("/media/My TV Shows/My Show/07 Name.mp4", {}).isMovie);
    EXPECT_TRUE(describe("/media/tv shows/My Show/07 Name.mp4", {}).isMovie);
}

TEST(FileInfo, EveryResolutionLeavesTheTitle) {
    const auto titleOf = [](const std::string& name) {
        return describe("/Show/Season 1/" + name, {}).title;
    };
    EXPECT_EQ(titleOf("Name (720p).mp4"), "Name");
    EXPECT_EQ(titleOf("Name (4K HDR) (SD).mp4"), "Name");
    EXPECT_EQ(titleOf("A (HD) B.mp4"), "A B");
    EXPECT_EQ(titleOf("Name (2004).mp4"), "Name (2004)");
    EXPECT_EQ(titleOf("Name (hd).mp4"), "Name (hd)");
}

TEST(FileInfo, TheNumberAheadOfATitleIsTheEpisode) {
    const auto of = [](const std::string& name) { return describe("/S/Season 1/" + name, {}); };
    EXPECT_EQ(of("01.-  Name.mp4"), (FileInfo{0, "S", false, 1, 1, "Name"}));
    EXPECT_EQ(of("24.mp4"), (FileInfo{0, "S", false, 1, {}, "24"})) << "nothing parts it";
    EXPECT_EQ(of("3rd Rock.mp4"), (FileInfo{0, "S", false, 1, {}, "3rd Rock"}));
    EXPECT_EQ(of("99999999999999999999 Name.mp4"), (FileInfo{0, "S", false, 1, {}, "Name"}));
}

TEST(FileInfo, ANameThatIsNoTextIsRepaired) {
    EXPECT_EQ(describe("/Show/Season 1/01 a\xFF.mp4", {}).title, "a\uFFFD");
}

TEST(FileInfo, NumbersOfALabelHaveTwoDigitsAtLeast) {
    EXPECT_EQ((FileInfo{.season = 0, .episode = 123}).episodeLabel(), "S00E123");
    EXPECT_EQ((FileInfo{.season = 1}).episodeLabel(), std::nullopt);
    EXPECT_EQ((FileInfo{.episode = 1}).episodeLabel(), std::nullopt);
}

// --- files ---

/// Sound of 60 s in one stretch.
Bytes film() {
    Movie movie;
    movie.tracks = {evenTrack("soun", 60, 10, 1000, 60)};
    movie.tags = {textItem("©nam", "A Title"), textItem("tvsh", "A Show")};
    return buildMovie(movie);
}

TEST(FileInfo, OfAFileIsReadFromItsTags) {
    const TempFolder folder;
    const auto file = folder.write("05 Name.m4v", film());
    EXPECT_EQ(readInfo(file), (FileInfo{0, "A Show", false, {}, 5, "A Title"}));
}

TEST(FileInfo, OfAFileWithoutAnIndexIsNothing) {
    const TempFolder folder;
    EXPECT_EQ(readInfo(folder / "missing.mp4"), std::nullopt);
    EXPECT_EQ(readInfo(folder.write("empty.mp4", Bytes())), std::nullopt);
    EXPECT_EQ(readInfo(folder.write("text.mp4", "not a film at all")), std::nullopt);
}

TEST(FileInfo, OfAScannedFileHasItsMeasure) {
    const TempFolder folder;
    const auto file = folder.write("05 Name.m4v", film());
    const FileInfo info = scanFile(file);
    EXPECT_EQ(info.measure, 60);
    EXPECT_EQ(info.measure, measureInterleave(file));
    EXPECT_EQ(info.displayName(), "A Title");
}

TEST(FileInfo, AScanFailsWithTheReadersWords) {
    const TempFolder folder;
    const auto file = folder.write("text.mp4", "not a film at all");
    try {
        scanFile(file);
        FAIL() << "scanned";
    } catch (const MFError& failure) {
        EXPECT_EQ(failure.description(), "no-moov");
    }
}

}  // namespace
}  // namespace marlet::test
