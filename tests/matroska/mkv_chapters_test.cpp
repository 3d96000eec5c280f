#include <gtest/gtest.h>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

using namespace mkv;

std::vector<std::string> titlesIn(const Bytes& file) {
    const OpenMKV opened(file);
    std::vector<std::string> titles;
    for (const MKVChapter& chapter : opened->chapters()) titles.push_back(chapter.title);
    return titles;
}
std::vector<std::string> titlesOf(std::initializer_list<Bytes> editions) {
    return titlesIn(soundFile({chapters(editions)}));
}
using Titles = std::vector<std::string>;

TEST(MKVChapters, BehindTheClustersAreFoundLikeThoseBeforeThem) {
    const Bytes all = chapters({edition({atom(0, "One"), atom(1000, "Two")})});
    EXPECT_EQ(titlesIn(soundFile({all, cluster(0, {})})), (Titles{"One", "Two"}));
    EXPECT_EQ(titlesIn(soundFile({cluster(0, {}), cluster(5, {}), all})), (Titles{"One", "Two"}));
}

TEST(MKVChapters, BehindAClusterOfUnknownSizeAreNotFound) {
    EXPECT_EQ(titlesIn(soundFile(
                  {endless(0x1F43B675, number(0xE7, 0)), chapters({edition({atom(0, "One")})})})),
              Titles());
}

TEST(MKVChapters, AreSortedByTheirStartsAndKeepTheirOrderWhereThoseAreEqual) {
    EXPECT_EQ(titlesOf({edition({atom(9, "C"), atom(0, "A"), atom(9, "D"), atom(5, "B")})}),
              (Titles{"A", "B", "C", "D"}));
}

TEST(MKVChapters, AHiddenOneIsDroppedAndThoseInsideItAreKept) {
    const Bytes hidden = number(0x98, 1);
    EXPECT_EQ(titlesOf({edition({atom(0, "Hidden", {hidden, atom(1, "Inside")}), atom(2, "After"),
                                 atom(3, "Shown", {number(0x98, 0)})})}),
              (Titles{"Inside", "After", "Shown"}));
}

TEST(MKVChapters, NestedOnesFollowTheirParentsInOrder) {
    EXPECT_EQ(titlesOf({edition(
                  {atom(0, "A", {atom(0, "A1", {atom(0, "A1a")}), atom(0, "A2")}), atom(0, "B")})}),
              (Titles{"A", "A1", "A1a", "A2", "B"}));
}

TEST(MKVChapters, OnlyTheFirstEditionThatHasSomeCounts) {
    const Bytes hidden = atom(0, "Hidden", {number(0x98, 1)});
    EXPECT_EQ(titlesOf({edition({}), edition({hidden}), edition({atom(1, "First")}),
                        edition({atom(0, "Second")})}),
              Titles{"First"});
}

TEST(MKVChapters, OnlyTheFirstElementThatHasSomeCounts) {
    EXPECT_EQ(titlesIn(soundFile({chapters({}), chapters({edition({atom(1, "First")})}),
                                  chapters({edition({atom(0, "Second")})})})),
              Titles{"First"});
}

TEST(MKVChapters, TheFirstTitleAndTheFirstLanguageCountWhicheverDisplayTheyStandIn) {
    const Bytes two =
        element(0xB6, {number(0x91, 7), element(0x80, {text(0x437C, "ger")}),
                       element(0x80, {text(0x85, "Title"), text(0x437C, "eng"), text(0x85, "No")}),
                       element(0x80, {text(0x85, "Other"), text(0x437C, "fre")})});
    const OpenMKV file(soundFile({chapters({edition({two})})}));
    ASSERT_EQ(file->chapters().size(), 1U);
    EXPECT_EQ(file->chapters()[0], (MKVChapter{7, "Title", "ger"}));
}

TEST(MKVChapters, OneWithoutATitleStillCounts) {
    const OpenMKV file(soundFile({chapters({edition({element(0xB6, {number(0x91, 7)})})})}));
    ASSERT_EQ(file->chapters().size(), 1U);
    EXPECT_EQ(file->chapters()[0], (MKVChapter{7, "", std::nullopt}));
}

TEST(MKVChapters, WhatHasNoSizeIsSteppedOver) {
    EXPECT_EQ(titlesOf({edition({atom(0, "A"), endless(0xB6, number(0x91, 1))}),
                        edition({atom(0, "Second")})}),
              Titles{"A"});
}

TEST(MKVChapters, DeepNestingIsNoBurden) {
    Bytes inner = number(0x91, 1);
    for (int i = 0; i < 3000; i++) inner = element(0xB6, inner);
    const OpenMKV file(soundFile({chapters({edition({inner})})}));
    EXPECT_EQ(file->chapters().size(), 3000U);
}

}  // namespace
}  // namespace marlet::test
