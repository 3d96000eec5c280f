#include "mp4/tag_values.h"

#include <gtest/gtest.h>

#include "mp4/image_info.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

std::string valueOf(const Bytes& item) {
    return describe(item, false);
}

std::string textOf60And(std::string_view more) {
    return std::string(60, 'a') + std::string(more);
}

Bytes dataBox(std::uint32_t kind, const Bytes& value) {
    return box("data", joined({be32(kind), be32(0), value}));
}

TEST(TagValue, OfATextStandsInQuotes) {
    EXPECT_EQ(valueOf(textItem("©nam", "A Title")), "\"A Title\"");
    EXPECT_EQ(valueOf(textItem("©nam", "")), "\"\"");
}

TEST(TagValue, OfSixtyCharactersIsWholeAndOfSixtyOneIsCut) {
    EXPECT_EQ(valueOf(textItem("desc", textOf60And(""))), "\"" + textOf60And("") + "\"");
    EXPECT_EQ(valueOf(textItem("desc", textOf60And("b"))), "\"" + textOf60And("…") + "\"");
}

TEST(TagValue, CountsWhatAReaderCallsACharacter) {
    std::string accents;
    for (int i = 0; i < 60; i++) accents += "e\u0301";  // e and a combining accent
    EXPECT_EQ(valueOf(textItem("desc", accents)), "\"" + accents + "\"");
    EXPECT_EQ(valueOf(textItem("desc", accents + "x")), "\"" + accents + "…\"");
}

TEST(TagValue, OfAVeryLongTextIsCutWithoutBeingReadToItsEnd) {
    EXPECT_EQ(valueOf(textItem("ldes", std::string(1'000'000, 'a'))),
              "\"" + textOf60And("…") + "\"");
}

TEST(TagValue, RepairsBadText) {
    EXPECT_EQ(valueOf(textItem("©nam", "a\xFF")), "\"a\uFFFD\"");
}

TEST(TagValue, OfAnotherTypeIsItsNumberAndItsFirstSixteenBytes) {
    EXPECT_EQ(valueOf(tagItem("tvsn", 21, Bytes{0, 0, 0, 3})), "type 21 0x00000003");
    EXPECT_EQ(valueOf(tagItem("trkn", 0, Bytes(16, 0xAB))),
              "type 0 0xabababababababababababababababab");
    EXPECT_EQ(valueOf(tagItem("trkn", 0, Bytes(17, 0xAB))),
              "type 0 0xabababababababababababababababab…");
    EXPECT_EQ(valueOf(tagItem("pgap", 21, Bytes())), "type 21 0x");
}

TEST(TagValue, SeveralAreJoined) {
    EXPECT_EQ(valueOf(box("©ART", {dataBox(1, bytesOf("One")), dataBox(21, {7})})),
              "\"One\" + type 21 0x07");
}

TEST(TagValue, OfAFreeformItemIsThatOfItsData) {
    EXPECT_EQ(valueOf(freeformItem("com.apple.iTunes", "iTunEXTC", "us-tv|TV-14|500|")),
              "\"us-tv|TV-14|500|\"");
}

TEST(TagValue, OfACoverIsItsImage) {
    const Bytes gif = bytesOf("GIF89a\x02\x01\x03\x01");
    EXPECT_EQ(describe(tagItem("covr", 13, gif), true), "GIF 258x259, 10 bytes");
    EXPECT_EQ(describe(box("covr", {dataBox(13, gif), dataBox(14, {1})}), true),
              "GIF 258x259, 10 bytes + image of unknown kind, 1 bytes");
}

TEST(TagValue, IsEmptyWithoutData) {
    EXPECT_EQ(valueOf(box("©nam", Bytes())), "");
    EXPECT_EQ(valueOf({}), "");
    EXPECT_EQ(valueOf(Bytes(7)), "");
}

TEST(TagValue, OfADataBoxThatIsCutIsEmpty) {
    EXPECT_EQ(valueOf(box("©nam", {box("data", be32(1))})), "\"\"");
    EXPECT_EQ(valueOf(box("©nam", {box("data", Bytes())})), "type 0 0x");
}

TEST(TagValue, OfThousandsOfDataBoxesEndsInTime) {
    Bytes many;
    for (int i = 0; i < 1000; i++) append(many, dataBox(21, {1}));
    const std::string value = valueOf(box("©ART", many));
    EXPECT_TRUE(value.ends_with(" + …"));
    EXPECT_LT(value.size(), 2000U);
}

// --- images ---

Bytes jpeg(const Bytes& segments) {
    return joined({Bytes{0xFF, 0xD8}, segments});
}
Bytes segment(std::uint8_t marker, const Bytes& content) {
    return joined(
        {Bytes{0xFF, marker}, be16(static_cast<std::uint16_t>(content.size() + 2)), content});
}
/// Precision, height, width, components.
const Bytes frame = joined({Bytes{8}, be16(900), be16(600), Bytes{3}});

TEST(ImageInfo, ReadsTheFrameOfAJPEGBehindItsOtherSegments) {
    const Bytes image =
        jpeg(joined({segment(0xE0, Bytes(14)), segment(0xC4, Bytes(20)), segment(0xC0, frame)}));
    EXPECT_EQ(imageInfo(image), "JPEG 600x900, " + std::to_string(image.size()) + " bytes");
    const Bytes progressive = jpeg(joined({Bytes{0xFF}, segment(0xC2, frame)}));
    EXPECT_EQ(imageInfo(progressive).substr(0, 12), "JPEG 600x900") << "behind a fill byte";
}

TEST(ImageInfo, AJPEGWithoutAFrameHasNoSize) {
    EXPECT_EQ(imageInfo(jpeg(segment(0xDA, frame))), "JPEG, 12 bytes");
    EXPECT_EQ(imageInfo(jpeg(Bytes{0xFF, 0xC0, 0, 11, 8})), "JPEG, 7 bytes");
    EXPECT_EQ(imageInfo(jpeg(Bytes{0xFF, 0xE0, 0, 0, 1, 2, 3, 4})), "JPEG, 10 bytes");
}

TEST(ImageInfo, ReadsOtherKinds) {
    const Bytes png =
        joined({bytesOf("\x89PNG\r\n\x1A\n"), be32(13), bytesOf("IHDR"), be32(640), be32(480)});
    EXPECT_EQ(imageInfo(png), "PNG 640x480, 24 bytes");
    EXPECT_EQ(imageInfo(ByteView(png).first(20)), "PNG, 20 bytes");
    const Bytes bmp =
        joined({bytesOf("BM"), Bytes(16), Bytes{0x10, 1, 0, 0}, Bytes{0xF0, 0xFF, 0xFF, 0xFF}});
    EXPECT_EQ(imageInfo(bmp), "BMP 272x16, 26 bytes") << "stored from the top down";
    EXPECT_EQ(imageInfo(bytesOf("BM")), "BMP, 2 bytes");
    EXPECT_EQ(imageInfo(bytesOf("GIF87a")), "GIF, 6 bytes");
}

TEST(ImageInfo, OfOtherBytesTellsTheirNumber) {
    EXPECT_EQ(imageInfo({}), "image of unknown kind, 0 bytes");
    EXPECT_EQ(imageInfo(Bytes(5)), "image of unknown kind, 5 bytes");
}

}  // namespace
}  // namespace marlet::test
