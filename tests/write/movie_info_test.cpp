#include <gtest/gtest.h>
#include <plist/plist.h>

#include <memory>

#include "foundation/text.h"
#include "write/tag_builder.h"

namespace marlet::test {
namespace {

const std::string head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n"
    "<dict>\n";
const std::string tail = "</dict>\n</plist>\n";

/// The text of a list of ours as a stranger's parser reads it.
std::string nameIn(const std::string& list, const char* section, std::uint32_t index) {
    plist_t root = nullptr;
    plist_from_xml(list.data(), static_cast<std::uint32_t>(list.size()), &root);
    const std::unique_ptr<void, decltype(&plist_free)> owner(root, &plist_free);
    plist_t people = root == nullptr ? nullptr : plist_dict_get_item(root, section);
    plist_t person = people == nullptr ? nullptr : plist_array_get_item(people, index);
    plist_t name = person == nullptr ? nullptr : plist_dict_get_item(person, "name");
    if (name == nullptr) return "(missing)";
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(name, &length);
    return {text, length};
}

Details people() {
    Details details;
    details.cast = {"Ann", "Bob"};
    details.writers = {"Will"};
    return details;
}

std::string listWith(const std::string& inside) {
    return head + inside + tail;
}

TEST(MovieInfo, IsExactlyThisText) {
    EXPECT_EQ(TagBuilder::movieInfo(people()), head +
                                                   "\t<key>cast</key>\n"
                                                   "\t<array>\n"
                                                   "\t\t<dict>\n"
                                                   "\t\t\t<key>name</key>\n"
                                                   "\t\t\t<string>Ann</string>\n"
                                                   "\t\t</dict>\n"
                                                   "\t\t<dict>\n"
                                                   "\t\t\t<key>name</key>\n"
                                                   "\t\t\t<string>Bob</string>\n"
                                                   "\t\t</dict>\n"
                                                   "\t</array>\n"
                                                   "\t<key>screenwriters</key>\n"
                                                   "\t<array>\n"
                                                   "\t\t<dict>\n"
                                                   "\t\t\t<key>name</key>\n"
                                                   "\t\t\t<string>Will</string>\n"
                                                   "\t\t</dict>\n"
                                                   "\t</array>\n" +
                                                   tail);
}

TEST(MovieInfo, SectionsStandInTheirOrder) {
    Details details = people();
    details.directors = {"Dan"};
    const std::string text = *TagBuilder::movieInfo(details);
    EXPECT_LT(text.find("<key>cast</key>"), text.find("<key>directors</key>"));
    EXPECT_LT(text.find("<key>directors</key>"), text.find("<key>screenwriters</key>"));
}

TEST(MovieInfo, NobodyGivesNothing) {
    EXPECT_EQ(TagBuilder::movieInfo({}), std::nullopt);
}

TEST(MovieInfo, NamesAreEscapedAndParseBack) {
    Details details;
    details.cast = {"A & B <c> &amp; \"d\" é"};
    const std::string text = *TagBuilder::movieInfo(details);
    EXPECT_TRUE(Text::contains(text, "<string>A &amp; B &lt;c&gt; &amp;amp; \"d\" é</string>"));
    EXPECT_EQ(nameIn(text, "cast", 0), details.cast[0]);
}

TEST(MergeMovi, TheThreeListsAreUpdatedAndOtherKeysStay) {
    const std::string old = listWith(
        "<key>cast</key><array><dict><key>name</key><string>Old</string></dict></array>"
        "<key>directors</key><array><dict><key>name</key><string>Old</string></dict></array>"
        "<key>producers</key><array><dict><key>name</key><string>Paul</string></dict></array>"
        "<key>studio</key><string>A &amp; B</string>");
    const std::string merged = *TagBuilder::mergeMovi(old, TagBuilder::movieInfo(people()));
    EXPECT_EQ(nameIn(merged, "cast", 0), "Ann");
    EXPECT_EQ(nameIn(merged, "cast", 1), "Bob");
    EXPECT_EQ(nameIn(merged, "directors", 0), "(missing)");
    EXPECT_EQ(nameIn(merged, "screenwriters", 0), "Will");
    EXPECT_EQ(nameIn(merged, "producers", 0), "Paul");
    EXPECT_TRUE(Text::startsWith(merged, "<?xml"));
    EXPECT_TRUE(Text::contains(merged, "A &amp; B"));
}

TEST(MergeMovi, WithoutNewListsTheOldOnesGo) {
    const std::string old = listWith(
        "<key>cast</key><array><string>x</string></array>"
        "<key>studio</key><string>S</string>");
    for (const auto& fresh : {std::optional<std::string>(), std::optional<std::string>("broken")}) {
        const std::string merged = *TagBuilder::mergeMovi(old, fresh);
        EXPECT_FALSE(Text::contains(merged, "cast"));
        EXPECT_TRUE(Text::contains(merged, "studio"));
    }
}

TEST(MergeMovi, EmptyListsAreRemovedAndNothingLeftIsNothing) {
    const std::string merged =
        *TagBuilder::mergeMovi(listWith("<key>producers</key><array/><key>a</key><true/>"), {});
    EXPECT_FALSE(Text::contains(merged, "producers"));
    EXPECT_EQ(TagBuilder::mergeMovi(listWith("<key>producers</key><array/>"), {}), std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi(listWith("<key>cast</key><array><true/></array>"), {}),
              std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi(listWith(""), {}), std::nullopt);
}

TEST(MergeMovi, WhatIsNoDictionaryIsNotMerged) {
    const auto fresh = TagBuilder::movieInfo(people());
    EXPECT_EQ(TagBuilder::mergeMovi("", fresh), std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi("plain text", fresh), std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi("<plist><array/></plist>", fresh), std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi("<plist><dict><key>cast</key>", fresh), std::nullopt);
}

TEST(MergeMovi, ListsThatAreMadeToExhaustTheReaderAreNotMerged) {
    std::string deep = "<plist version=\"1.0\"><dict><key>a</key>";
    for (int i = 0; i < 100000; i++) deep += "<array>";
    for (int i = 0; i < 100000; i++) deep += "</array>";
    EXPECT_EQ(TagBuilder::mergeMovi(deep + "</dict></plist>", {}), std::nullopt);
    const std::string large(5 * 1024 * 1024, 'x');
    EXPECT_EQ(TagBuilder::mergeMovi(listWith("<key>a</key><string>" + large + "</string>"), {}),
              std::nullopt);
}

TEST(MergeMovi, ListsOfMoreThan32LevelsAreNotMerged) {
    const auto nested = [](int arrays) {
        std::string text = "<key>a</key>";
        for (int i = 0; i < arrays; i++) text += "<array>";
        text += "<true/>";
        for (int i = 0; i < arrays; i++) text += "</array>";
        return listWith(text);
    };
    EXPECT_NE(TagBuilder::mergeMovi(nested(31), {}), std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi(nested(32), {}), std::nullopt);
    EXPECT_EQ(TagBuilder::mergeMovi(nested(8000), {}), std::nullopt);
}

}  // namespace
}  // namespace marlet::test
