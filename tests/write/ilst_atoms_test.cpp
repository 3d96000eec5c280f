#include <gtest/gtest.h>

#include "write/ilst_editor.h"
#include "write/small_film.h"

namespace marlet::test {
namespace {

using SmallFilm::joined;

Bytes hex(std::initializer_list<int> values) {
    Bytes out;
    for (const int value : values) out.push_back(static_cast<std::uint8_t>(value));
    return out;
}

TEST(IlstAtoms, ABoxIsItsSizeItsTypeInLatin1AndItsPayload) {
    EXPECT_EQ(IlstEditor::be32(0x01020304), hex({1, 2, 3, 4}));
    EXPECT_EQ(IlstEditor::box("©nam", Bytes{7}), hex({0, 0, 0, 9, 0xA9, 'n', 'a', 'm', 7}));
}

TEST(IlstAtoms, ATextItemHasTypeOneAndUtf8) {
    EXPECT_EQ(IlstEditor::text("©nam", "é"),
              (Atom{"©nam", hex({0,   0,   0,   26, 0xA9, 'n', 'a', 'm', 0, 0, 0, 18,   'd',
                                 'a', 't', 'a', 0,  0,    0,   1,   0,   0, 0, 0, 0xC3, 0xA9})}));
}

TEST(IlstAtoms, AnIntegerItemHasType21AndItsBytesBigEndian) {
    EXPECT_EQ(IlstEditor::integer("tvsn", 258, 4),
              (Atom{"tvsn", hex({0,   0,   0, 28, 't', 'v', 's', 'n', 0, 0, 0, 20, 'd', 'a',
                                 't', 'a', 0, 0,  0,   21,  0,   0,   0, 0, 0, 0,  1,   2})}));
    EXPECT_EQ(IlstEditor::integer("stik", 10, 1).bytes.back(), 10);
    EXPECT_EQ(IlstEditor::integer("stik", 10, 1).bytes.size(), 25U);
}

TEST(IlstAtoms, AFreeformItemNamesItsMeaning) {
    const Bytes payload = joined(
        {IlstEditor::box("mean", joined({Bytes(4), bytesOf("com.apple.iTunes")})),
         IlstEditor::box("name", joined({Bytes(4), bytesOf("Key")})),
         IlstEditor::box("data", joined({hex({0, 0, 0, 1, 0, 0, 0, 0}), bytesOf("Value")}))});
    EXPECT_EQ(IlstEditor::freeform("Key", "Value"),
              (Atom{"----", IlstEditor::box("----", payload)}));
}

TEST(IlstAtoms, CoversStandInOneItem) {
    const Bytes jpeg = joined({hex({0, 0, 0, 13, 0, 0, 0, 0}), bytesOf("J")});
    const Bytes png = joined({hex({0, 0, 0, 14, 0, 0, 0, 0}), bytesOf("P")});
    EXPECT_EQ(IlstEditor::covers({{bytesOf("J"), false}, {bytesOf("P"), true}}),
              (Atom{"covr", IlstEditor::box("covr", joined({IlstEditor::box("data", jpeg),
                                                            IlstEditor::box("data", png)}))}));
    EXPECT_EQ(IlstEditor::covers({}), (Atom{"covr", IlstEditor::box("covr", {})}));
}

TEST(IlstAtoms, ABlockParsesBackToItsItemsInOrder) {
    const auto tags = SmallFilm::newTags();
    EXPECT_EQ(IlstEditor::parse(IlstEditor::ilstBox(tags)), tags);
    EXPECT_TRUE(IlstEditor::parse(IlstEditor::ilstBox({})).empty());
    EXPECT_TRUE(IlstEditor::parse({}).empty());
}

TEST(IlstAtoms, AnItemThatClaimsMoreThanTheBlockEndsWithIt) {
    Bytes block = IlstEditor::ilstBox({IlstEditor::text("©nam", "Title")});
    block[8] = 0x7F;
    const auto items = IlstEditor::parse(block);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].bytes.size(), block.size() - 8);
}

TEST(IlstAtoms, TextIsThatOfTheFirstDataBox) {
    EXPECT_EQ(IlstEditor::textValue(IlstEditor::text("©nam", "Größe")), "Größe");
    EXPECT_EQ(IlstEditor::textValue(IlstEditor::text("©nam", "")), "");
    EXPECT_EQ(IlstEditor::textValue(IlstEditor::freeform("Key", "Value")), "Value");
    EXPECT_EQ(IlstEditor::textValue(IlstEditor::text("©nam", "a\xFFz")), "a\uFFFDz");
}

TEST(IlstAtoms, OnlyFlagsOfOneAreText) {
    Atom atom = IlstEditor::text("©nam", "Title");
    constexpr std::size_t typeByte = 19;
    atom.bytes[typeByte] = 2;
    EXPECT_EQ(IlstEditor::textValue(atom), std::nullopt);
    EXPECT_EQ(IlstEditor::textValue(IlstEditor::integer("tvsn", 1, 4)), std::nullopt);
    EXPECT_EQ(IlstEditor::textValue(IlstEditor::covers({{bytesOf("J"), false}})), std::nullopt);
}

TEST(IlstAtoms, TheVersionByteOfADataBoxIsNotPartOfItsFlags) {
    Atom atom = IlstEditor::text("©nam", "Title");
    atom.bytes[16] = 9;
    EXPECT_EQ(IlstEditor::textValue(atom), "Title");
}

TEST(IlstAtoms, ItemsThatAreTooShortHaveNoText) {
    const auto item = [](const Bytes& data) {
        return Atom{"©nam", IlstEditor::box("©nam", joined({IlstEditor::box("data", data),
                                                            Bytes{0, 0, 0, 1, 65, 65, 65, 65}}))};
    };
    EXPECT_EQ(IlstEditor::textValue({"©nam", {}}), std::nullopt);
    EXPECT_EQ(IlstEditor::textValue({"©nam", IlstEditor::box("©nam", {})}), std::nullopt);
    EXPECT_EQ(IlstEditor::textValue(item({})), std::nullopt);
    EXPECT_EQ(IlstEditor::textValue(item({0, 0})), std::nullopt);
    EXPECT_EQ(IlstEditor::textValue(item({0, 0, 0, 1})), "");
    EXPECT_EQ(IlstEditor::textValue(item({0, 0, 0, 1, 0, 0, 0})), "");
}

TEST(IlstAtoms, AFreeformNameStandsBehindAFlagsWord) {
    EXPECT_EQ(IlstEditor::freeformName(IlstEditor::freeform("iTunEXTC", "")), "iTunEXTC");
    EXPECT_EQ(IlstEditor::freeformName(IlstEditor::text("©nam", "x")), std::nullopt);
    EXPECT_EQ(IlstEditor::freeformName({"----", IlstEditor::box("----", {})}), std::nullopt);
    EXPECT_EQ(IlstEditor::freeformName(
                  {"----", IlstEditor::box("----", IlstEditor::box("name", Bytes(2)))}),
              "");
}

}  // namespace
}  // namespace marlet::test
