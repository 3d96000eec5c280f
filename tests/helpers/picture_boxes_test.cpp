#include "helpers/picture_boxes.h"

#include <gtest/gtest.h>

#include "helpers/boxes.h"
#include "helpers/sample_entries.h"
#include "matroska/picture_shape.h"
#include "support/avc_builder.h"
#include "support/box_builder.h"
#include "support/box_reader.h"

namespace marlet::test {
namespace {

MKVTrack anamorphic() {
    MKVTrack track;
    track.codecID = "V_MPEG4/ISO/AVC";
    track.codecPrivate = avcRecord(AVCFormat{});
    track.pixelWidth = 720;
    track.pixelHeight = 576;
    track.picture.displayWidth = 1024;
    track.picture.displayHeight = 576;
    return track;
}

MKVTrack plain() {
    MKVTrack track = anamorphic();
    track.picture = {};
    return track;
}

Bytes boxOf(const MKVTrack& track, std::string_view type) {
    const Bytes boxes = PictureBoxes::make(track);
    if (!hasChild(boxes, type)) return {};
    const ByteView payload = payloadOf(boxes, type);
    return {payload.begin(), payload.end()};
}

TEST(PictureBoxes, APictureThatTellsNothingGetsNone) {
    EXPECT_TRUE(PictureBoxes::make(plain()).empty());
    EXPECT_EQ(PictureShape::shown(plain()), (PictureShape::Size{720, 576}));
    EXPECT_EQ(PictureBoxes::quarterTurns(plain()), 0);
}

TEST(PictureBoxes, APixelThatIsNoSquareHasItsShapeToldAndTheTrackItsWidth) {
    EXPECT_EQ(boxOf(anamorphic(), "pasp"), Boxes::u32s({64, 45}));
    EXPECT_EQ(PictureShape::shown(anamorphic()), (PictureShape::Size{1024, 576}));
}

TEST(PictureBoxes, ASquarePixelIsToldWhereTheSourceTellsIt) {
    MKVTrack track = anamorphic();
    track.picture.displayWidth = 720;
    EXPECT_EQ(boxOf(track, "pasp"), Boxes::u32s({1, 1}));
}

TEST(PictureBoxes, ARatioTellsTheShapeAsPixelsDo) {
    MKVTrack track = anamorphic();
    track.picture.displayWidth = 16;
    track.picture.displayHeight = 9;
    for (const auto unit : {MKVPicture::Unit::Ratio, MKVPicture::Unit::Inches,
                            MKVPicture::Unit::Centimetres, MKVPicture::Unit::Pixels}) {
        track.picture.displayUnit = unit;
        EXPECT_EQ(boxOf(track, "pasp"), Boxes::u32s({64, 45}));
    }
    track.picture.displayUnit = MKVPicture::Unit::Unknown;
    EXPECT_TRUE(boxOf(track, "pasp").empty());
}

TEST(PictureBoxes, AWidthAloneIsPixelsOfThePicturesHeight) {
    MKVTrack track = anamorphic();
    track.picture.displayHeight = {};
    EXPECT_EQ(boxOf(track, "pasp"), Boxes::u32s({64, 45}));
    track.picture.displayUnit = MKVPicture::Unit::Ratio;
    EXPECT_TRUE(boxOf(track, "pasp").empty()) << "half of a ratio";
}

TEST(PictureBoxes, SizesThatMakeNoSenseTellNothing) {
    MKVTrack track = anamorphic();
    track.picture.displayWidth = 0;
    EXPECT_TRUE(PictureBoxes::make(track).empty());
    track = anamorphic();
    track.pixelWidth = 0;
    EXPECT_TRUE(PictureBoxes::make(track).empty());
    track = anamorphic();
    track.pixelWidth = 1;
    track.picture.displayWidth = 0x7FFFFFFF;
    track.pixelHeight = 0x7FFFFFFF;
    EXPECT_EQ(boxOf(track, "pasp").size(), 8U);
    EXPECT_LE(PictureShape::shown(track).width, 0x7FFF);
}

TEST(PictureBoxes, ACropIsACleanApertureAndCountsForTheShape) {
    MKVTrack track = plain();
    track.pixelWidth = 1920;
    track.pixelHeight = 1088;
    track.picture.crop = {.left = 0, .top = 0, .right = 0, .bottom = 8};
    track.picture.displayWidth = 1920;
    track.picture.displayHeight = 1080;
    EXPECT_EQ(boxOf(track, "clap"),
              Boxes::u32s({1920, 1, 1080, 1, 0, 2, static_cast<std::uint32_t>(-8), 2}));
    EXPECT_EQ(boxOf(track, "pasp"), Boxes::u32s({1, 1}));
    EXPECT_EQ(PictureShape::shown(track), (PictureShape::Size{1920, 1080}));
    track.picture.displayHeight = 540;
    EXPECT_EQ(boxOf(track, "pasp"), Boxes::u32s({2, 1})) << "of what is left";
    track.picture.displayHeight = 1088;
    EXPECT_EQ(boxOf(track, "pasp"), Boxes::u32s({1, 1})) << "the coded size was left there";
    track.picture.crop.left = 1920;
    EXPECT_TRUE(boxOf(track, "clap").empty()) << "nothing would be left";
}

TEST(PictureBoxes, ColoursAreNumbersAndTheRangeIsABit) {
    MKVTrack track = plain();
    track.picture.colour.primaries = 9;
    track.picture.colour.transfer = 16;
    track.picture.colour.matrix = 9;
    EXPECT_EQ(boxOf(track, "colr"), joined({bytesOf("nclx"), Bytes{0, 9, 0, 16, 0, 9, 0}}));
    track.picture.colour.range = PictureColour::Range::Full;
    EXPECT_EQ(boxOf(track, "colr"), joined({bytesOf("nclx"), Bytes{0, 9, 0, 16, 0, 9, 0x80}}));
}

TEST(PictureBoxes, AFullRangeIsToldWithoutAnyColour) {
    MKVTrack track = plain();
    track.picture.colour.range = PictureColour::Range::Limited;
    EXPECT_TRUE(boxOf(track, "colr").empty()) << "what players take for granted";
    track.picture.colour.range = PictureColour::Range::Full;
    EXPECT_EQ(boxOf(track, "colr"), joined({bytesOf("nclx"), Bytes{0, 2, 0, 2, 0, 2, 0x80}}));
}

TEST(PictureBoxes, PicturesAreNeverToldToBeRGB) {
    MKVTrack track = plain();
    track.picture.colour.matrix = 0;
    EXPECT_TRUE(boxOf(track, "colr").empty());
    track.picture.colour.primaries = 9;
    EXPECT_EQ(boxOf(track, "colr"), joined({bytesOf("nclx"), Bytes{0, 9, 0, 2, 0, 2, 0}}));
}

TEST(PictureBoxes, AMasteringDisplayIsToldInTheOrderOfGreenBlueRed) {
    MKVTrack track = plain();
    MasteringDisplay& display = track.picture.colour.mastering;
    display.chromaticities = {0.708, 0.292, 0.17, 0.797, 0.131, 0.046, 0.3127, 0.329};
    display.highest = 1000;
    display.lowest = 0.005;
    EXPECT_EQ(boxOf(track, "mdcv"),
              joined({Boxes::u16s({8500, 39850, 6550, 2300, 35400, 14600, 15635, 16450}),
                      Boxes::u32s({10'000'000, 50})}));
    display.highest = 1e12;
    display.lowest = -1;
    EXPECT_EQ(payloadOf(PictureBoxes::make(track), "mdcv").size(), 24U);
    display.lowest.reset();
    EXPECT_TRUE(boxOf(track, "mdcv").empty()) << "a part of it";
}

TEST(PictureBoxes, LightLevelsAreToldWhereOneIs) {
    MKVTrack track = plain();
    track.picture.colour.highestLight = 1000;
    EXPECT_EQ(boxOf(track, "clli"), Boxes::u16s({1000, 0}));
    track.picture.colour.highestFrameMean = 100'000;
    EXPECT_EQ(boxOf(track, "clli"), Boxes::u16s({1000, 0xFFFF}));
    track.picture.colour.highestLight = 0;
    track.picture.colour.highestFrameMean = 0;
    EXPECT_TRUE(boxOf(track, "clli").empty());
}

/// Of a profile, for pictures that an ordinary decoder takes for this.
MKVTrack dolby(std::uint32_t type, std::uint8_t profile, std::uint8_t compatibility) {
    MKVTrack track;
    track.codecID = "V_MPEGH/ISO/HEVC";
    track.codecPrivate = Bytes(23);
    track.pixelWidth = track.pixelHeight = 16;
    track.picture.dolbyVision = {type,
                                 {1, 0, static_cast<std::uint8_t>(profile << 1), 0x35,
                                  static_cast<std::uint8_t>(compatibility << 4)}};
    return track;
}

TEST(PictureBoxes, DolbyVisionKeepsItsRecordAndItsLength) {
    Bytes record = {1, 0, 16, 0x35, 0x10};
    record.resize(24);
    EXPECT_EQ(boxOf(dolby(boxCode("dvvC"), 8, 1), "dvvC"), record);
    MKVTrack track = dolby(boxCode("dvcC"), 7, 6);
    EXPECT_EQ(boxOf(track, "dvcC").size(), 24U);
    track.picture.dolbyVision->record.resize(4);
    EXPECT_TRUE(boxOf(track, "dvcC").empty()) << "cut off";
    track.picture.dolbyVision->record.resize(25);
    EXPECT_TRUE(boxOf(track, "dvcC").empty()) << "no such record";
}

TEST(PictureBoxes, OnlyPicturesThatNeedDolbyVisionCallThemselvesSo) {
    const auto typeOf = [](const MKVTrack& track) {
        return textOf(ByteView(SampleEntries::video(track)).subspan(4, 4));
    };
    EXPECT_EQ(typeOf(dolby(boxCode("dvcC"), 5, 0)), "dvh1");
    EXPECT_EQ(typeOf(dolby(boxCode("dvvC"), 8, 1)), "hvc1") << "HDR10 to others";
    EXPECT_EQ(typeOf(dolby(boxCode("dvvC"), 8, 4)), "hvc1") << "HLG to others";
    EXPECT_EQ(typeOf(anamorphic()), "avc1");
}

TEST(PictureBoxes, StandBehindTheDecodersConfiguration) {
    const Bytes entry = SampleEntries::video(anamorphic());
    constexpr std::size_t fixedFields = 8 + 78;
    const ByteView children = ByteView(entry).subspan(fixedFields);
    EXPECT_EQ(countOf(children, "avcC"), 1);
    EXPECT_EQ(countOf(children, "pasp"), 1);
    EXPECT_EQ(textOf(children.subspan(4, 4)), "avcC");
}

TEST(PictureBoxes, ATurnAgainstTheClockIsOneWithIt) {
    MKVTrack track = plain();
    const auto turnsOf = [&](double roll) {
        track.picture.roll = roll;
        return PictureBoxes::quarterTurns(track);
    };
    EXPECT_EQ(turnsOf(-90), 1);
    EXPECT_EQ(turnsOf(90), 3);
    EXPECT_EQ(turnsOf(180), 2);
    EXPECT_EQ(turnsOf(-180), 2);
    EXPECT_EQ(turnsOf(450), 3);
    EXPECT_EQ(turnsOf(45), 0) << "no quarter";
    EXPECT_EQ(turnsOf(1e300), 0);
}

TEST(PictureBoxes, ATurnedPictureStaysAtItsCorner) {
    constexpr std::uint32_t one = 0x10000;
    const auto minus = static_cast<std::uint32_t>(-0x10000);
    EXPECT_EQ(Boxes::turned(0, 20, 10), Boxes::matrix());
    EXPECT_EQ(Boxes::turned(1, 20, 10),
              Boxes::u32s({0, one, 0, minus, 0, 0, 10 << 16, 0, 0x40000000}));
    EXPECT_EQ(Boxes::turned(2, 20, 10),
              Boxes::u32s({minus, 0, 0, 0, minus, 0, 20 << 16, 10 << 16, 0x40000000}));
    EXPECT_EQ(Boxes::turned(3, 20, 10),
              Boxes::u32s({0, minus, 0, one, 0, 0, 0, 20 << 16, 0x40000000}));
}

}  // namespace
}  // namespace marlet::test
