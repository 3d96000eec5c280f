#include "mp4/tags.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/digest.h"
#include "mp4/summary.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

std::vector<TagItem> itemsOf(const std::vector<Bytes>& items) {
    const Bytes ilst = ilstBox(items);
    return tagItems(ilst, Box{"ilst", 0, 8, static_cast<std::int64_t>(ilst.size())});
}

MP4Summary summaryOf(const Bytes& moov) {
    return parseSummary(moov, Detail::Yes);
}

TEST(TagItems, HaveTheirTypeAsKeyAWordAndTheirBytes) {
    const Bytes title = textItem("©nam", "Old");
    EXPECT_EQ(itemsOf({title}), (std::vector<TagItem>{{"©nam", "title", title}}));
}

TEST(TagItems, KnowTheWordsOfCommonTypes) {
    const std::vector<std::pair<std::string, std::string>> words = {{"©nam", "title"},
                                                                    {"©ART", "artist"},
                                                                    {"©alb", "album"},
                                                                    {"©gen", "genre"},
                                                                    {"©day", "release date"},
                                                                    {"desc", "description"},
                                                                    {"ldes", "long description"},
                                                                    {"stik", "media kind"},
                                                                    {"hdvd", "HD video flag"},
                                                                    {"tvsh", "TV show"},
                                                                    {"tven", "TV episode ID"},
                                                                    {"tvnn", "TV network"},
                                                                    {"covr", "cover art"},
                                                                    {"©cmt", "comment"},
                                                                    {"cprt", "copyright"},
                                                                    {"©wrt", "writer"},
                                                                    {"©too", "encoding tool"},
                                                                    {"trkn", "track number"},
                                                                    {"disk", "disc number"},
                                                                    {"tvsn", "TV season"},
                                                                    {"aART", "album artist"},
                                                                    {"pgap", "gapless"},
                                                                    {"cpil", "compilation"},
                                                                    {"rtng", "content rating"},
                                                                    {"©grp", "grouping"},
                                                                    {"sosn", "sort show"},
                                                                    {"sonm", "sort name"},
                                                                    {"purd", "purchase date"},
                                                                    {"tves", "TV episode"}};
    for (const auto& [type, label] : words)
        EXPECT_EQ(itemsOf({textItem(type, "")}).at(0).label, label) << type;
}

TEST(TagItems, NameATypeThatHasNoWord) {
    EXPECT_EQ(itemsOf({textItem("akID", "")}).at(0).label, "item 'akID'");
}

TEST(TagItems, NameAFreeformItemByItsOwnerAndName) {
    const TagItem apple = itemsOf({freeformItem("com.apple.iTunes", "iTunEXTC", "x")}).at(0);
    EXPECT_EQ(apple.key, "----:com.apple.iTunes:iTunEXTC");
    EXPECT_EQ(apple.label, "custom item 'iTunEXTC'");
    const TagItem other = itemsOf({freeformItem("org.example", "note", "x")}).at(0);
    EXPECT_EQ(other.key, "----:org.example:note");
    EXPECT_EQ(other.label, "custom item 'note' (org.example)");
}

TEST(TagItems, AFreeformItemWithoutOwnerAndNameHasEmptyOnes) {
    const TagItem item = itemsOf({box("----", Bytes())}).at(0);
    EXPECT_EQ(item.key, "----::");
    EXPECT_EQ(item.label, "custom item '' ()");
}

TEST(TagItems, RepairBadTextInFreeformNames) {
    EXPECT_EQ(itemsOf({freeformItem("m", "a\xFF", "x")}).at(0).key, "----:m:a\uFFFD");
}

TEST(TagItems, AnItemThatPassesTheBlockIsClampedToIt) {
    const Bytes data = joined({boxHeader("ilst", 20), boxHeader("©nam", 500), Bytes(4)});
    const auto items = tagItems(data, Box{"ilst", 0, 8, 20});
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].raw.size(), 12U);
}

TEST(TagBlocks, AreFoundInAFullBoxAndInAPlainOne) {
    const Bytes items = ilstBox({textItem("©nam", "x")});
    const Bytes full = box("udta", {fullBox("meta", 0, 0, items)});
    const Bytes plain = box("udta", {box("meta", items)});
    EXPECT_EQ(tagBlocks(full).size(), 1U);
    EXPECT_EQ(tagBlocks(plain).size(), 1U);
}

TEST(TagBlocks, TheOneOfUserDataComesBeforeTheOneOfTheMovie) {
    const Bytes moov = joined({box("meta", {Bytes(4), ilstBox({textItem("desc", "later")})}),
                               udtaBox({textItem("©nam", "first")})});
    const MP4Summary summary = summaryOf(moov);
    ASSERT_EQ(summary.tags.size(), 2U);
    EXPECT_EQ(summary.tags[0].key, "©nam");
    EXPECT_EQ(summary.tags[1].key, "desc");
}

TEST(TagBlocks, AnIndexWithoutTagsHasNone) {
    EXPECT_TRUE(tagBlocks(mvhdBox(1, 1)).empty());
    EXPECT_TRUE(tagBlocks(box("udta", Bytes())).empty());
}

TEST(TagDigests, AreTheSameWhicheverOrderTheItemsStandIn) {
    const Bytes title = textItem("©nam", "Title");
    const Bytes show = textItem("tvsh", "Show");
    const MP4Summary first = summaryOf(udtaBox({title, show}));
    EXPECT_EQ(first.ilst, summaryOf(udtaBox({title, show})).ilst);
    EXPECT_EQ(first.ilst, summaryOf(udtaBox({show, title})).ilst);
    EXPECT_TRUE(std::is_sorted(first.ilst.begin(), first.ilst.end()));
    EXPECT_NE(std::find(first.ilst.begin(), first.ilst.end(), sha256Hex(title)), first.ilst.end());
}

TEST(TagDigests, AreLeftOutWithoutDetail) {
    const MP4Summary summary = parseSummary(udtaBox({textItem("©nam", "x")}), Detail::No);
    EXPECT_TRUE(summary.ilst.empty() && summary.tags.empty() && summary.chpl.empty());
}

Bytes chapter(std::uint64_t ticks, std::string_view title) {
    return joined({be64(ticks), Bytes{static_cast<std::uint8_t>(title.size())}, bytesOf(title)});
}

/// `leading` is what stands between version and flags and the count: nothing in version 0.
std::vector<Chapter> chaptersOf(std::uint8_t version, std::size_t leading, std::uint8_t count,
                                const Bytes& entries) {
    return chapterList(box(
        "udta", {fullBox("chpl", version, 0, joined({Bytes(leading), Bytes{count}, entries}))}));
}

TEST(ChapterList, IsReadInBothVersions) {
    const Bytes entries = joined({chapter(0, "Start"), chapter(15'000'000, "Später")});
    const std::vector<Chapter> wanted = {{0, "Start"}, {1500, "Später"}};
    EXPECT_EQ(chaptersOf(0, 0, 2, entries), wanted);
    EXPECT_EQ(chaptersOf(1, 4, 2, entries), wanted);
}

TEST(ChapterList, AnEntryThatPassesTheBoxEndsTheReading) {
    const Bytes cut = joined({chapter(0, "Start"), be64(0), Bytes{200}, bytesOf("cut")});
    EXPECT_EQ(chaptersOf(1, 4, 3, cut), (std::vector<Chapter>{{0, "Start"}}));
    EXPECT_EQ(chaptersOf(1, 4, 255, chapter(0, "Start")), (std::vector<Chapter>{{0, "Start"}}));
}

TEST(ChapterList, RepairsBadTextInTitles) {
    EXPECT_EQ(chaptersOf(1, 4, 1, chapter(0, "a\xC3")), (std::vector<Chapter>{{0, "a\uFFFD"}}));
}

TEST(ChapterList, IsEmptyWithoutItsBox) {
    EXPECT_TRUE(chapterList(Bytes()).empty());
    EXPECT_TRUE(chapterList(box("udta", {box("chpl", Bytes())})).empty());
}

TEST(ChapterList, IsPartOfADetailedSummary) {
    const Bytes chpl = fullBox("chpl", 1, 0, joined({Bytes(4), Bytes{1}, chapter(10'000, "One")}));
    EXPECT_EQ(summaryOf(box("udta", {chpl})).chpl, (std::vector<Chapter>{{1, "One"}}));
}

}  // namespace
}  // namespace marlet::test
