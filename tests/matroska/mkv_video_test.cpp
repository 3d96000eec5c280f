// What the Video element and the mappings of block additions tell of how pictures are to be shown.

#include <gtest/gtest.h>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

using namespace mkv;
using Range = PictureColour::Range;
using Unit = MKVPicture::Unit;

MKVPicture pictureOf(std::initializer_list<Bytes> entryChildren) {
    const OpenMKV file(joined({header(), segment({tracks({element(0xAE, entryChildren)})})}));
    return file->tracks().at(0).picture;
}
MKVPicture pictureOfVideo(std::initializer_list<Bytes> children) {
    return pictureOf({element(0xE0, children)});
}
PictureColour colourOf(std::initializer_list<Bytes> children) {
    return pictureOfVideo({element(0x55B0, children)}).colour;
}

TEST(MKVPicture, TellsNothingUntilItsElementsDo) {
    const MKVPicture picture = pictureOf({});
    EXPECT_EQ(picture, MKVPicture());
    EXPECT_FALSE(picture.displayWidth);
    EXPECT_EQ(picture.displayUnit, Unit::Pixels);
    EXPECT_EQ(picture.colour.matrix, PictureColour::notTold);
    EXPECT_EQ(picture.colour.range, Range::NotTold);
    EXPECT_FALSE(picture.colour.mastering.isComplete());
}

TEST(MKVPicture, HasTheSizeThatIsShownAndWhatIsCropped) {
    const MKVPicture picture =
        pictureOfVideo({number(0x54B0, 16), number(0x54BA, 9), number(0x54B2, 3), number(0x54CC, 1),
                        number(0x54BB, 2), number(0x54DD, 3), number(0x54AA, 4)});
    EXPECT_EQ(picture.displayWidth, 16);
    EXPECT_EQ(picture.displayHeight, 9);
    EXPECT_EQ(picture.displayUnit, Unit::Ratio);
    EXPECT_EQ(picture.crop, (MKVPicture::Crop{.left = 1, .top = 2, .right = 3, .bottom = 4}));
    EXPECT_EQ(pictureOfVideo({number(0x54B2, 77)}).displayUnit, Unit::Unknown);
}

TEST(MKVPicture, HasTheColoursOfH273AndTheRange) {
    const PictureColour colour =
        colourOf({number(0x55B1, 9), number(0x55B9, 1), number(0x55BA, 16), number(0x55BB, 9),
                  number(0x55BC, 1000), number(0x55BD, 400)});
    EXPECT_EQ(colour.matrix, 9);
    EXPECT_EQ(colour.transfer, 16);
    EXPECT_EQ(colour.primaries, 9);
    EXPECT_EQ(colour.range, Range::Limited);
    EXPECT_EQ(colour.highestLight, 1000);
    EXPECT_EQ(colour.highestFrameMean, 400);
    EXPECT_EQ(colourOf({number(0x55B9, 2)}).range, Range::Full);
    EXPECT_EQ(colourOf({number(0x55B9, 9)}).range, Range::NotTold);
}

TEST(MKVPicture, HasAMasteringDisplayThatIsCompleteWithAllOfItsNumbers) {
    std::vector<Bytes> all;
    for (std::uint32_t i = 0; i < 8; i++) all.push_back(real(0x55D1 + i, 0.1 * (i + 1)));
    all.push_back(real(0x55D9, 1000));
    all.push_back(real(0x55DA, 0));
    const auto displayOf = [](const std::vector<Bytes>& parts) {
        return colourOf({element(0x55D0, joined(parts))}).mastering;
    };
    const MasteringDisplay display = displayOf(all);
    ASSERT_TRUE(display.isComplete());
    EXPECT_DOUBLE_EQ(display.red().x, 0.1);
    EXPECT_DOUBLE_EQ(display.green().y, 0.4);
    EXPECT_DOUBLE_EQ(display.blue().x, 0.5);
    EXPECT_DOUBLE_EQ(display.white().y, 0.8);
    EXPECT_EQ(display.highest, 1000);
    EXPECT_EQ(display.lowest, 0) << "black is told, too";
    for (std::size_t i = 0; i < all.size(); i++) {
        std::vector<Bytes> part = all;
        part.erase(part.begin() + static_cast<std::ptrdiff_t>(i));
        EXPECT_FALSE(displayOf(part).isComplete()) << "without number " << i;
    }
}

TEST(MKVPicture, IsTurnedOnlyWhenItIsFlat) {
    EXPECT_EQ(pictureOfVideo({element(0x7670, {real(0x7675, 90)})}).roll, 90);
    EXPECT_EQ(pictureOfVideo({element(0x7670, {number(0x7671, 0), real(0x7675, -90)})}).roll, -90);
    EXPECT_EQ(pictureOfVideo({element(0x7670, {real(0x7675, 90), number(0x7671, 1)})}).roll, 0)
        << "around the viewer";
}

TEST(MKVPicture, HasTheRecordOfDolbyVision) {
    const Bytes record = {1, 0, 16, 0x35, 0x10};
    const MKVPicture picture =
        pictureOf({element(0x41E4, {element(0x41ED, record), number(0x41E7, 0x64767643)})});
    ASSERT_TRUE(picture.dolbyVision);
    EXPECT_EQ(picture.dolbyVision->type, 0x64767643U);
    EXPECT_EQ(picture.dolbyVision->record, record);
    EXPECT_FALSE(pictureOf({element(0x41E4, {number(0x41E7, 0x64767643)})}).dolbyVision);
    EXPECT_FALSE(
        pictureOf({element(0x41E4, {number(0x41E7, 4), element(0x41ED, record)})}).dolbyVision)
        << "an addition of another kind";
}

}  // namespace
}  // namespace marlet::test
