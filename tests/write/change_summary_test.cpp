#include "write/change_summary.h"

#include <gtest/gtest.h>

#include "foundation/format_bytes.h"
#include "write/ilst_editor.h"

namespace marlet::test {
namespace {

using Texts = std::vector<std::string>;
using IlstEditor::covers;
using IlstEditor::freeform;
using IlstEditor::integer;
using IlstEditor::text;

Atom coverOf(std::size_t bytes) {
    return covers({{Bytes(bytes), false}});
}

TEST(ChangeSummary, ATextChangeIsToldWithBothValues) {
    EXPECT_EQ(ChangeSummary::describe({text("©nam", "Old")}, {text("©nam", "New")}),
              Texts{"title: Old → New"});
    EXPECT_EQ(ChangeSummary::describe({}, {text("©nam", "New")}), Texts{"title: none → New"});
    EXPECT_EQ(ChangeSummary::describe({text("©nam", "Old")}, {}), Texts{"title: Old → none"});
}

TEST(ChangeSummary, WhatIsEqualIsNotTold) {
    const std::vector<Atom> tags = {text("©nam", "Same"), coverOf(10), freeform("iTunMOVI", "x")};
    EXPECT_TRUE(ChangeSummary::describe(tags, tags).empty());
    EXPECT_TRUE(ChangeSummary::describe({}, {}).empty());
}

TEST(ChangeSummary, ACoverIsToldByItsSizes) {
    EXPECT_EQ(ChangeSummary::describe({}, {coverOf(3000)}), Texts{"cover art: none → 3 KB"});
    EXPECT_EQ(ChangeSummary::describe({coverOf(3000)}, {}), Texts{"cover art: 3 KB → none"});
    EXPECT_EQ(ChangeSummary::describe({coverOf(70)}, {coverOf(2'000'000)}),
              Texts{"cover art: " + formatBytes(94) + " → " + formatBytes(2'000'024)});
}

TEST(ChangeSummary, NumbersAreNotDecoded) {
    EXPECT_EQ(ChangeSummary::describe({integer("tvsn", 1, 4)}, {integer("tvsn", 2, 4)}),
              Texts{"season: (set) → (set)"});
}

TEST(ChangeSummary, EveryLabelStandsInTheOrderOfTheItemTypes) {
    const std::vector<Atom> fresh = {
        text("©nam", "v"), text("©ART", "v"), text("©wrt", "v"),         text("©gen", "v"),
        text("©day", "v"), text("desc", "v"), text("ldes", "v"),         text("stik", "v"),
        text("tvsh", "v"), text("tvsn", "v"), text("tves", "v"),         text("©alb", "v"),
        text("aART", "v"), text("trkn", "v"), freeform("iTunEXTC", "v"), freeform("iTunMOVI", "v")};
    EXPECT_EQ(
        ChangeSummary::describe({}, fresh),
        (Texts{"album artist: none → v", "description changed", "content rating: none → v",
               "cast and crew updated", "long description changed", "media kind: none → v",
               "track number: none → v", "episode: none → v", "show: none → v", "season: none → v",
               "director: none → v", "album: none → v", "release date: none → v", "genre: none → v",
               "title: none → v", "writer: none → v"}));
}

TEST(ChangeSummary, ItemsWithoutALabelAreNotTold) {
    EXPECT_TRUE(ChangeSummary::describe({text("hdvd", "1"), freeform("Key", "a")},
                                        {text("apID", "x"), freeform("Key", "b")})
                    .empty());
}

TEST(ChangeSummary, AnEmptyTextIsSetExceptForTheRating) {
    EXPECT_EQ(ChangeSummary::describe({text("©gen", "")}, {text("©gen", "Drama")}),
              Texts{"genre: (set) → Drama"});
    EXPECT_EQ(
        ChangeSummary::describe({freeform("iTunEXTC", "")}, {freeform("iTunEXTC", "mpaa|R|400|")}),
        Texts{"content rating:  → mpaa|R|400|"});
}

TEST(ChangeSummary, ALongValueIsCutTo57Characters) {
    std::string sixty;
    for (int i = 0; i < 60; i++) sixty += "é";
    const std::string cut = sixty.substr(0, 57 * 2) + "…";
    EXPECT_EQ(ChangeSummary::describe({text("©nam", sixty)}, {text("©nam", sixty + "é")}),
              Texts{"title: " + sixty + " → " + cut});
    const std::string rating(80, 'r');
    EXPECT_EQ(ChangeSummary::describe({}, {freeform("iTunEXTC", rating)}),
              Texts{"content rating: none → " + rating});
}

TEST(ChangeSummary, TheFirstItemOfATypeCounts) {
    EXPECT_EQ(ChangeSummary::describe({text("©nam", "A"), text("©nam", "B")},
                                      {text("©nam", "C"), text("©nam", "B")}),
              Texts{"title: A → C"});
}

}  // namespace
}  // namespace marlet::test
