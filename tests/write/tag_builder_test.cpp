#include "write/tag_builder.h"

#include <gtest/gtest.h>

#include "foundation/text.h"
#include "write/small_film.h"

namespace marlet::test {
namespace {

Details episode() {
    Details details;
    details.kind = MediaKind::tv;
    details.title = "The Pilot";
    details.description = "Short.";
    details.longDescription = "A long text.";
    details.cast = {"Ann One", "Bob Two"};
    details.directors = {"Dora Three", "Dan Four"};
    details.writers = {"Will Five", "Wanda Six"};
    details.genre = "Drama";
    details.rating = "TV-PG";
    details.releaseDate = "2020-03-04";
    details.show = "Some Show";
    details.season = 2;
    details.episode = 259;
    return details;
}

/// The item's type, or the name of a freeform item.
std::string keyOf(const Atom& atom) {
    return IlstEditor::freeformName(atom).value_or(atom.name);
}

std::vector<std::string> keysOf(const std::vector<Atom>& atoms) {
    std::vector<std::string> keys;
    for (const Atom& atom : atoms) keys.push_back(keyOf(atom));
    return keys;
}

const Atom* atomOf(const std::vector<Atom>& atoms, const std::string& key) {
    for (const Atom& atom : atoms)
        if (keyOf(atom) == key) return &atom;
    return nullptr;
}

std::optional<std::string> textOf(const std::vector<Atom>& atoms, const std::string& key) {
    const Atom* atom = atomOf(atoms, key);
    return atom == nullptr ? std::nullopt : IlstEditor::textValue(*atom);
}

using Keys = std::vector<std::string>;

TEST(TagBuilder, AnEpisodeWithAllDetailsHasEveryItemInOrder) {
    const auto atoms = TagBuilder::atoms(episode(), CoverImage{bytesOf("JPEG"), false});
    EXPECT_EQ(keysOf(atoms),
              (Keys{"©nam", "©ART", "©wrt", "©gen", "©day", "desc", "ldes", "stik", "tvsh", "aART",
                    "tvsn", "©alb", "tves", "trkn", "iTunEXTC", "iTunMOVI", "covr"}));
    EXPECT_EQ(textOf(atoms, "©nam"), "The Pilot");
    EXPECT_EQ(textOf(atoms, "©ART"), "Dora Three, Dan Four");
    EXPECT_EQ(textOf(atoms, "©wrt"), "Will Five, Wanda Six");
    EXPECT_EQ(textOf(atoms, "©gen"), "Drama");
    EXPECT_EQ(textOf(atoms, "tvsh"), "Some Show");
    EXPECT_EQ(textOf(atoms, "aART"), "Some Show");
    EXPECT_EQ(textOf(atoms, "©alb"), "Some Show, Season 2");
    EXPECT_EQ(textOf(atoms, "iTunEXTC"), "us-tv|TV-PG|400|");
    EXPECT_EQ(textOf(atoms, "iTunMOVI"), TagBuilder::movieInfo(episode()));
    EXPECT_EQ(*atomOf(atoms, "stik"), IlstEditor::integer("stik", 10, 1));
    EXPECT_EQ(*atomOf(atoms, "tvsn"), IlstEditor::integer("tvsn", 2, 4));
    EXPECT_EQ(*atomOf(atoms, "tves"), IlstEditor::integer("tves", 259, 4));
    EXPECT_EQ(*atomOf(atoms, "covr"), IlstEditor::covers({{bytesOf("JPEG"), false}}));
}

TEST(TagBuilder, TheTrackNumberIsTheEpisodeInTwoBytes) {
    const auto atoms = TagBuilder::atoms(episode(), {});
    const Bytes data = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 3, 0, 0, 0, 0};
    EXPECT_EQ(*atomOf(atoms, "trkn"),
              (Atom{"trkn", IlstEditor::box("trkn", IlstEditor::box("data", data))}));
}

TEST(TagBuilder, AMovieHasNoItemOfAnEpisode) {
    Details details = episode();
    details.kind = MediaKind::movie;
    details.rating = "R";
    const auto atoms = TagBuilder::atoms(details, CoverImage{bytesOf("PNG"), true});
    EXPECT_EQ(keysOf(atoms), (Keys{"©nam", "©ART", "©wrt", "©gen", "©day", "desc", "ldes", "stik",
                                   "iTunEXTC", "iTunMOVI", "covr"}));
    EXPECT_EQ(*atomOf(atoms, "stik"), IlstEditor::integer("stik", 9, 1));
    EXPECT_EQ(*atomOf(atoms, "covr"), IlstEditor::covers({{bytesOf("PNG"), true}}));
    EXPECT_EQ(textOf(atoms, "iTunEXTC"), "mpaa|R|400|");
}

TEST(TagBuilder, EmptyDetailsWriteTheMediaKindOnly) {
    EXPECT_EQ(keysOf(TagBuilder::atoms({}, {})), Keys{"stik"});
    Details show;
    show.kind = MediaKind::tv;
    EXPECT_EQ(keysOf(TagBuilder::atoms(show, {})), Keys{"stik"});
    show.episode = 1;
    EXPECT_EQ(keysOf(TagBuilder::atoms(show, {})), (Keys{"stik", "tves", "trkn"}));
}

TEST(TagBuilder, ALongDescriptionIsShortenedOnceAndKeptWhole) {
    Details details;
    for (int i = 0; i < 100; i++) details.description += "Ten chars ";
    const auto atoms = TagBuilder::atoms(details, {});
    EXPECT_LE(Text::characterCount(*textOf(atoms, "desc")), 255U);
    EXPECT_EQ(textOf(atoms, "desc"), Text::shorten(details.description, 255));
    EXPECT_EQ(textOf(atoms, "ldes"), details.description);
}

TEST(TagBuilder, ADescriptionOf255CharactersStands) {
    Details details;
    for (int i = 0; i < 255; i++) details.description += "é";
    EXPECT_EQ(textOf(TagBuilder::atoms(details, {}), "desc"), details.description);
    details.description += "é";
    EXPECT_NE(textOf(TagBuilder::atoms(details, {}), "desc"), details.description);
}

TEST(TagBuilder, AnOwnLongDescriptionWins) {
    EXPECT_EQ(textOf(TagBuilder::atoms(episode(), {}), "ldes"), "A long text.");
    Details details = episode();
    details.longDescription.clear();
    EXPECT_EQ(textOf(TagBuilder::atoms(details, {}), "ldes"), "Short.");
}

TEST(TagBuilder, ARatingThatIsNotInTheTableIsZero) {
    Details details = episode();
    details.rating = "FSK 12";
    EXPECT_EQ(TagBuilder::extc(details), "us-tv|FSK 12|0|");
    details.kind = MediaKind::movie;
    details.rating = "TV-PG";
    EXPECT_EQ(TagBuilder::extc(details), "mpaa|TV-PG|0|");
    details.rating.clear();
    EXPECT_EQ(atomOf(TagBuilder::atoms(details, {}), "iTunEXTC"), nullptr);
}

TEST(TagBuilder, EveryRatingOfTheTableHasItsNumber) {
    const std::vector<std::pair<std::string, int>> tv = {{"TV-Y", 100},  {"TV-Y7", 200},
                                                         {"TV-G", 300},  {"TV-PG", 400},
                                                         {"TV-14", 500}, {"TV-MA", 600}};
    const std::vector<std::pair<std::string, int>> movie = {
        {"G", 100}, {"PG", 200}, {"PG-13", 300}, {"R", 400}, {"NC-17", 500}};
    Details details;
    details.kind = MediaKind::tv;
    for (const auto& [rating, number] : tv) {
        details.rating = rating;
        EXPECT_EQ(TagBuilder::extc(details),
                  "us-tv|" + rating + "|" + std::to_string(number) + "|");
    }
    details.kind = MediaKind::movie;
    for (const auto& [rating, number] : movie) {
        details.rating = rating;
        EXPECT_EQ(TagBuilder::extc(details), "mpaa|" + rating + "|" + std::to_string(number) + "|");
    }
}

TEST(TagBuilder, APlainDateGetsATimeOfDay) {
    Details details;
    details.releaseDate = "2020-03-04";
    EXPECT_EQ(textOf(TagBuilder::atoms(details, {}), "©day"), "2020-03-04T12:00:00Z");
    details.releaseDate = "2020";
    EXPECT_EQ(textOf(TagBuilder::atoms(details, {}), "©day"), "2020");
}

TEST(TagBuilder, NoItemIsAnAccountTag) {
    for (const Atom& atom : TagBuilder::atoms(episode(), CoverImage{bytesOf("J"), false}))
        EXPECT_FALSE(IlstEditor::personal.contains(atom.name)) << atom.name;
    for (const std::string& name : IlstEditor::personal) {
        EXPECT_FALSE(TagBuilder::managed.contains(name));
        EXPECT_FALSE(TagBuilder::managedFreeform.contains(name));
    }
}

TEST(TagBuilder, EveryItemThatIsBuiltIsOwned) {
    for (const Atom& atom : TagBuilder::atoms(episode(), CoverImage{bytesOf("J"), false})) {
        const auto name = IlstEditor::freeformName(atom);
        EXPECT_TRUE(name ? TagBuilder::managedFreeform.contains(*name)
                         : TagBuilder::managed.contains(atom.name))
            << atom.name;
    }
    EXPECT_EQ(TagBuilder::managed.size(), 15U);
}

// Merging.

TEST(TagMerge, WhatIsNotOwnedStaysInOrderAheadOfTheNewItems) {
    const std::vector<Atom> existing = {IlstEditor::text("apID", "someone@example.com"),
                                        IlstEditor::text("©nam", "Old"),
                                        IlstEditor::integer("hdvd", 2, 1),
                                        IlstEditor::freeform("iTunEXTC", "old"),
                                        IlstEditor::freeform("Foreign", "kept"),
                                        IlstEditor::integer("tvsn", 9, 4)};
    const std::vector<Atom> fresh = {IlstEditor::text("©nam", "New"),
                                     IlstEditor::integer("stik", 9, 1)};
    EXPECT_EQ(TagBuilder::merge(existing, fresh),
              (std::vector<Atom>{existing[0], existing[2], existing[4], fresh[0], fresh[1]}));
}

TEST(TagMerge, AnOldCoverStaysUnlessThereIsANewOne) {
    const Atom old = IlstEditor::covers({{bytesOf("OLD"), false}});
    const Atom fresh = IlstEditor::covers({{bytesOf("NEW"), true}});
    const Atom title = IlstEditor::text("©nam", "T");
    EXPECT_EQ(TagBuilder::merge({old}, {title}), (std::vector<Atom>{old, title}));
    EXPECT_EQ(TagBuilder::merge({old}, {title, fresh}), (std::vector<Atom>{title, fresh}));
}

TEST(TagMerge, AFreeformItemWithoutANameStays) {
    const Atom nameless = {"----", IlstEditor::box("----", IlstEditor::box("data", Bytes(8)))};
    EXPECT_EQ(TagBuilder::merge({nameless}, {}), std::vector<Atom>{nameless});
}

TEST(TagMerge, EveryAccountTagStaysAsItIs) {
    std::vector<Atom> existing;
    for (const std::string& name : IlstEditor::personal)
        existing.push_back(IlstEditor::text(name, "value of " + name));
    const auto merged = TagBuilder::merge(existing, TagBuilder::atoms(episode(), {}));
    EXPECT_EQ(std::vector<Atom>(merged.begin(), merged.begin() + 4), existing);
}

constexpr const char* oldInfo =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
    "<key>cast</key><array><dict><key>name</key><string>Old Name</string></dict></array>"
    "<key>studio</key><string>Some Studio</string></dict></plist>";

TEST(TagMerge, OtherKeysOfTheCastListAreCarriedIntoTheNewItemAtItsPlace) {
    const std::vector<Atom> existing = {IlstEditor::freeform("iTunMOVI", oldInfo)};
    const std::vector<Atom> fresh = {
        IlstEditor::text("©nam", "T"),
        IlstEditor::freeform("iTunMOVI", *TagBuilder::movieInfo(episode())),
        IlstEditor::integer("stik", 10, 1)};
    const auto merged = TagBuilder::merge(existing, fresh);
    EXPECT_EQ(keysOf(merged), (Keys{"©nam", "iTunMOVI", "stik"}));
    const std::string text = *textOf(merged, "iTunMOVI");
    EXPECT_TRUE(Text::contains(text, "Some Studio"));
    EXPECT_TRUE(Text::contains(text, "Ann One"));
    EXPECT_FALSE(Text::contains(text, "Old Name"));
}

TEST(TagMerge, WithoutNewNamesOnlyTheOtherKeysAreAppended) {
    const std::vector<Atom> existing = {IlstEditor::freeform("iTunMOVI", oldInfo)};
    const std::vector<Atom> fresh = {IlstEditor::text("©nam", "T")};
    const auto merged = TagBuilder::merge(existing, fresh);
    EXPECT_EQ(keysOf(merged), (Keys{"©nam", "iTunMOVI"}));
    const std::string text = *textOf(merged, "iTunMOVI");
    EXPECT_TRUE(Text::contains(text, "Some Studio"));
    EXPECT_FALSE(Text::contains(text, "cast"));
}

TEST(TagMerge, ACastListThatIsNoPropertyListIsReplaced) {
    const std::vector<Atom> existing = {IlstEditor::freeform("iTunMOVI", "not a list")};
    const std::vector<Atom> fresh = {
        IlstEditor::freeform("iTunMOVI", *TagBuilder::movieInfo(episode()))};
    EXPECT_EQ(TagBuilder::merge(existing, fresh), fresh);
    EXPECT_TRUE(TagBuilder::merge(existing, {}).empty());
}

TEST(TagMerge, TheFirstCastListWithATextIsTheOneThatCounts) {
    Atom binary = IlstEditor::freeform("iTunMOVI", oldInfo);
    const auto data = marlet::textOf(binary.bytes).find("data");
    binary.bytes[data + 7] = 0;
    const auto merged = TagBuilder::merge({binary, IlstEditor::freeform("iTunMOVI", oldInfo),
                                           IlstEditor::freeform("iTunMOVI", "another")},
                                          {});
    ASSERT_EQ(merged.size(), 1U);
    EXPECT_TRUE(Text::contains(*IlstEditor::textValue(merged[0]), "Some Studio"));
}

}  // namespace
}  // namespace marlet::test
