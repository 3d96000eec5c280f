#include "verify/index_shape.h"

#include <gtest/gtest.h>

#include "support/box_builder.h"

namespace marlet::test {
namespace {

Bytes trackWith(const Bytes& table) {
    return box("trak", {box("mdia", {box("minf", {box("stbl", {table})})})});
}

TEST(IndexShape, BoxesThatFillTheirFoldersAreWellFormed) {
    EXPECT_TRUE(isWellFormed({}));
    EXPECT_TRUE(isWellFormed(joined({mvhdBox(1000, 1), trackWith(stszBox(7, 5))})));
    EXPECT_TRUE(isWellFormed(trackWith(stsdBox("mp4a"))));
    EXPECT_TRUE(isWellFormed(largeBox("udta", box("meta", ilstBox({textItem("©nam", "x")})))));
    EXPECT_TRUE(isWellFormed(udtaBox({textItem("©nam", "x")}, 100)));
}

TEST(IndexShape, AWordOfZerosMayEndAList) {
    EXPECT_TRUE(isWellFormed(box("udta", joined({box("name", viewOf("x")), be32(0)}))));
    EXPECT_FALSE(isWellFormed(box("udta", joined({box("name", viewOf("x")), be32(1)}))));
}

TEST(IndexShape, ABoxThatDoesNotFitIsNot) {
    EXPECT_FALSE(isWellFormed(boxHeader("trak", 9)));
    EXPECT_FALSE(isWellFormed(boxHeader("trak", 7)));
    EXPECT_FALSE(isWellFormed(boxHeader("trak", 0)));
    EXPECT_FALSE(isWellFormed(joined({boxHeader("trak", 1), be64(15)})));
    EXPECT_FALSE(isWellFormed(joined({boxHeader("trak", 1), be64(~0ULL)})));
    EXPECT_FALSE(isWellFormed(box("trak", boxHeader("mdia", 16))));
    EXPECT_FALSE(isWellFormed(box("udta", box("meta", boxHeader("ilst", 99)))));
}

TEST(IndexShape, ATableHasToFitIntoItsBox) {
    EXPECT_TRUE(isWellFormed(trackWith(sttsBox({{1, 1}, {2, 2}}))));
    for (const char* table : {"stts", "ctts", "stsc", "stco", "co64", "stss", "elst"})
        EXPECT_FALSE(isWellFormed(fullBox(table, 0, 0, joined({be32(3), Bytes(11)})))) << table;
    EXPECT_FALSE(isWellFormed(fullBox("stsz", 0, 0, joined({be32(0), be32(3), Bytes(11)}))));
    EXPECT_FALSE(isWellFormed(fullBox("stts", 0, 0, be32(0xFFFFFFFF))));
    EXPECT_FALSE(isWellFormed(fullBox("stts", 2, 0, be32(0))));
}

TEST(IndexShape, AChapterListHasToHoldTheChaptersItCounts) {
    const Bytes list = chplBox({{0, "One"}, {1000, "Two"}});
    EXPECT_TRUE(isWellFormed(list));
    EXPECT_FALSE(isWellFormed(patched(list, 16, Bytes{3})));
    EXPECT_FALSE(isWellFormed(patched(list, 25, Bytes{200})));
}

TEST(IndexShape, SampleEntriesHaveToFit) {
    const auto entry = [](const Bytes& more) {
        return fullBox("stsd", 0, 0, joined({be32(1), box("mp4a", joined({Bytes(28), more}))}));
    };
    EXPECT_TRUE(isWellFormed(entry(box("esds", be32(0)))));
    EXPECT_TRUE(isWellFormed(entry(be32(0))));
    EXPECT_FALSE(isWellFormed(entry(boxHeader("esds", 9))));
    EXPECT_FALSE(isWellFormed(fullBox("stsd", 0, 0, joined({be32(1), boxHeader("mp4a", 9)}))));
}

TEST(IndexShape, FoldersWithoutEndAreNot) {
    Bytes deep = box("trak", {Bytes(8)});
    for (int i = 0; i < 100'000 && deep.size() < 1'000; i++) deep = box("trak", deep);
    EXPECT_FALSE(isWellFormed(deep));
}

}  // namespace
}  // namespace marlet::test
