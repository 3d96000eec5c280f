#include "app/unfinished_json.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

UnfinishedFile everything() {
    UnfinishedFile file;
    ResolvedFile& resolved = file.resolved;
    resolved.file = {.url = "/films/Charade (1963).mkv",
                     .size = 123456789012,
                     .duration = 6780.25,
                     .tracks = {{.kind = TrackInfo::Kind::audio,
                                 .codec = "ac3",
                                 .language = "eng",
                                 .name = "Änglish"}},
                     .tags = {.title = "", .season = 1, .year = 1963},
                     .interleave = 0.5};
    resolved.guess = Guess{.kind = MediaKind::tv, .title = "C", .source = Guess::Source::ai};
    resolved.match = Match{.tmdbID = -9007199254740993,
                           .kind = MediaKind::tv,
                           .title = "Show",
                           .season = 0,
                           .episode = 2,
                           .episodeEnd = 3,
                           .manual = ManualDetails{.title = "T",
                                                   .cast = {"A", "B"},
                                                   .source = SourceID::itunes,
                                                   .wide = {"https://a/b.jpg"}}};
    resolved.verdict = Verdict::needsLook({"The length is another.", "So is the year."});
    resolved.ambiguous = true;
    file.isAccepted = true;
    Details now;
    now.title = "Mine";
    now.season = 4;
    Details loaded;
    loaded.season = 3;
    loaded.description = "To be emptied";
    loaded.episode = 7;
    file.draft.details = EditedDetails::between(loaded, now);
    file.draft.wide = ArtworkOption{.path = "/w.jpg", .language = "en", .isStill = true};
    file.draft.tall = ArtworkOption{.shape = ArtworkOption::Shape::tall, .path = "/t.jpg"};
    file.draft.style = ArtworkStyle::tall;
    file.draft.isApart = true;
    file.dropped = {1, 3};
    file.ticks.sounds = {{2, true}, {3, false}};
    file.ticks.subtitles = {{"t4", true}};
    return file;
}

const FilmMark mark{.size = ~std::uint64_t{0}, .modified = -7};

std::string documentOf(const UnfinishedFile& file) {
    return UnfinishedJson::document(
        {UnfinishedJson::line(UnfinishedJson::encode(file), mark, file.isQueued)});
}

TEST(UnfinishedJsonTest, EveryFieldComesBackAsItWas) {
    UnfinishedFile file = everything();
    file.isQueued = true;
    const UnfinishedRestore restore{
        "/films/b.mp4", {.kind = MediaKind::tv, .title = "B", .show = "S", .season = 1}, 1999};
    const std::string text = UnfinishedJson::document(
        {UnfinishedJson::line(UnfinishedJson::encode(file), mark, true, 1'800'000'000'000'000),
         UnfinishedJson::line(UnfinishedJson::encode({.resolved = {.file = {.url = "/a"}}}), {},
                              false),
         UnfinishedJson::line(restore)});
    const auto content = UnfinishedJson::decode(viewOf(text));
    ASSERT_TRUE(content);
    ASSERT_EQ(content->files.size(), 2U);
    EXPECT_EQ(content->files[0].file, file);
    EXPECT_EQ(content->files[0].mark, mark);
    EXPECT_EQ(content->files[0].since, 1'800'000'000'000'000);
    EXPECT_EQ(content->files[1].file, (UnfinishedFile{.resolved = {.file = {.url = "/a"}}}));
    ASSERT_EQ(content->restores.size(), 1U);
    EXPECT_EQ(content->restores[0], restore);
}

TEST(UnfinishedJsonTest, AFieldThatWasEmptiedIsEmptyAgain) {
    Details loaded;
    loaded.title = "As loaded";
    loaded.episode = 7;
    loaded.genre = "Noir";
    Details edited = loaded;
    edited.title.clear();
    edited.episode.reset();
    UnfinishedFile file{.resolved = {.file = {.url = "/a"}}};
    file.draft.details = EditedDetails::between(loaded, edited);
    const auto content = UnfinishedJson::decode(viewOf(documentOf(file)));
    ASSERT_TRUE(content && content->files.size() == 1);
    Details later = loaded;
    later.genre = "Comedy";  // the source has thought better of it
    content->files[0].file.draft.details.applyTo(later);
    EXPECT_EQ(later.title, "");
    EXPECT_EQ(later.episode, std::nullopt);
    EXPECT_EQ(later.genre, "Comedy");
}

TEST(UnfinishedJsonTest, ANameThatIsNoTextKeepsItsBytes) {
    const UnfinishedFile file{.resolved = {.file = {.url = "/films/\xff\xfe.mp4"}}};
    const auto content = UnfinishedJson::decode(viewOf(documentOf(file)));
    ASSERT_TRUE(content && content->files.size() == 1);
    EXPECT_EQ(content->files[0].file.resolved.file.url, file.resolved.file.url);
}

TEST(UnfinishedJsonTest, WhatIsNoSuchFileOrAnotherVersionIsIgnored) {
    const std::string good = documentOf(everything());
    ASSERT_TRUE(UnfinishedJson::decode(viewOf(good)));
    for (const std::string& bad :
         {std::string(), std::string("[]"), std::string("null"), std::string(R"({"work":[]})"),
          std::string(R"({"version":0,"work":[]})"), std::string(R"({"version":2,"work":[]})"),
          std::string(R"({"version":"1","work":[]})"), std::string(R"({"version":1,"work":{}})"),
          std::string(R"({"version":1})"), good.substr(0, good.size() / 2),
          std::string(100000, '[')})
        EXPECT_FALSE(UnfinishedJson::decode(viewOf(bad))) << bad.substr(0, 40);
}

TEST(UnfinishedJsonTest, ALineThatIsNotAsExpectedIsLeftOutAndTheOthersStay) {
    const auto with = [](const std::string& file) {
        return R"({"queued":false,"mark":{},"file":)" + file + "}";
    };
    const std::string text = UnfinishedJson::document({
        "7",
        "[]",
        "{}",
        R"({"restore":{}})",
        R"({"restore":{"path":"relative"}})",
        with(R"({"resolved":{}})"),
        with(R"({"resolved":{"file":{"path":"films/a.mp4"}}})"),
        with(R"({"resolved":{"file":{"path":"/a\u0000b"}}})"),
        with(R"({"resolved":{"file":{"path":{"bytes":"2f6"}}}})"),
        with(R"({"resolved":{"file":{"path":{"bytes":"2fzz"}}}})"),
        with(R"({"resolved":{"file":{"path":"/a","size":1e300}}})"),
        with(R"({"resolved":{"file":{"path":"/a"},"match":{"season":3000000000}}})"),
        with(R"({"resolved":{"file":{"path":"/a"},"match":{"kind":"opera"}}})"),
        with(R"({"resolved":{"file":{"path":"/a"}},"ticks":{"sounds":[[1]]}})"),
        R"({"queued":false,"since":"now","mark":{},"file":{"resolved":{"file":{"path":"/a"}}}})",
        with(R"({"resolved":{"file":{"path":"/good"}}})"),
    });
    const auto content = UnfinishedJson::decode(viewOf(text));
    ASSERT_TRUE(content);
    ASSERT_EQ(content->files.size(), 1U);
    EXPECT_EQ(content->files[0].file.resolved.file.url, "/good");
    EXPECT_EQ(content->files[0].since, 0) << "as older versions wrote it";
    EXPECT_TRUE(content->restores.empty());
}

}  // namespace
}  // namespace marlet::test
