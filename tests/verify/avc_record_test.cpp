#include <gtest/gtest.h>

#include "support/avc_builder.h"
#include "support/box_builder.h"
#include "verify/sample_descriptions.h"

namespace marlet::test {
namespace {

using Reasons = std::vector<std::string>;

constexpr AVCFormat high{100, 1, 8, 8};
const Bytes chroma1Depth8 = {0xFD, 0xF8, 0xF8, 0x00};

Bytes withExtension(const AVCFormat& format, const Bytes& extension) {
    return avcRecord(format, extension);
}

/// A record as another program wrote it, against the same with that extension.
Reasons extended(const AVCFormat& format, const Bytes& extension) {
    return compareAVCC(avcRecord(format), withExtension(format, extension));
}

TEST(AVCRecord, AnAddedExtensionThatRepeatsTheParameterSetIsAccepted) {
    EXPECT_EQ(extended(high, chroma1Depth8), Reasons{});
    EXPECT_EQ(extended({110, 1, 10, 10}, {0xFD, 0xFA, 0xFA, 0x00}), Reasons{});
    EXPECT_EQ(extended({122, 2, 10, 9}, {0xFE, 0xFA, 0xF9, 0x00}), Reasons{});
    EXPECT_EQ(extended({144, 3, 8, 8}, {0xFF, 0xF8, 0xF8, 0x00}), Reasons{});
}

TEST(AVCRecord, AnExtensionOfAnotherChromaFormatIsRefused) {
    EXPECT_EQ(extended(high, {0xFE, 0xF8, 0xF8, 0x00}),
              Reasons{"avcC: extension (chroma 2, depth 8/8) disagrees with the SPS (chroma 1, "
                      "depth 8/8)"});
}

TEST(AVCRecord, AnExtensionOfOtherDepthsIsRefused) {
    EXPECT_EQ(extended(high, {0xFD, 0xFA, 0xF8, 0x00}),
              Reasons{"avcC: extension (chroma 1, depth 10/8) disagrees with the SPS (chroma 1, "
                      "depth 8/8)"});
    EXPECT_EQ(extended({110, 1, 10, 9}, {0xFD, 0xFA, 0xFA, 0x00}),
              Reasons{"avcC: extension (chroma 1, depth 10/10) disagrees with the SPS (chroma 1, "
                      "depth 10/9)"});
}

TEST(AVCRecord, ADepthThatNoExtensionCanTellDisagrees) {
    EXPECT_EQ(extended({110, 1, 16, 8}, chroma1Depth8),
              Reasons{"avcC: extension (chroma 1, depth 8/8) disagrees with the SPS (chroma 1, "
                      "depth 16/8)"});
    EXPECT_EQ(extended({100, 5, 8, 8}, chroma1Depth8),
              Reasons{"avcC: extension (chroma 1, depth 8/8) disagrees with the SPS (chroma 5, "
                      "depth 8/8)"});
}

TEST(AVCRecord, AnExtensionOfAProfileWithoutOneIsRefused) {
    EXPECT_EQ(extended({77, 1, 8, 8}, chroma1Depth8),
              Reasons{"avcC: extension added to profile 77, which does not carry one"});
    EXPECT_EQ(extended({244, 1, 8, 8}, chroma1Depth8),
              Reasons{"avcC: extension added to profile 244, which does not carry one"});
}

TEST(AVCRecord, AMalformedExtensionIsRefused) {
    EXPECT_EQ(extended(high, {0xFD, 0xF8, 0xF8, 0x01}),
              Reasons{"avcC: extension bytes are malformed (fdf8f801)"});
    EXPECT_EQ(extended(high, {0x7D, 0xF8, 0xF8, 0x00}),
              Reasons{"avcC: extension bytes are malformed (7df8f800)"});
    EXPECT_EQ(extended(high, {0xFD, 0xF0, 0xF8, 0x00}),
              Reasons{"avcC: extension bytes are malformed (fdf0f800)"});
    EXPECT_EQ(extended(high, {0xFD, 0xF8, 0x08, 0x00}),
              Reasons{"avcC: extension bytes are malformed (fdf80800)"});
}

TEST(AVCRecord, OtherThanFourAddedBytesAreRefused) {
    EXPECT_EQ(extended(high, {0xFD, 0xF8, 0xF8}),
              Reasons{"avcC: rebuilt file has 3 extra bytes, expected the 4-byte "
                      "chroma/bit-depth extension"});
    EXPECT_EQ(extended(high, {0xFD, 0xF8, 0xF8, 0x00, 0x00}),
              Reasons{"avcC: rebuilt file has 5 extra bytes, expected the 4-byte "
                      "chroma/bit-depth extension"});
}

TEST(AVCRecord, AnExtensionThatWasThereMayNotChange) {
    const Reasons refused = {"avcC differs: the original already has extension bytes that changed"};
    const Bytes original = withExtension(high, chroma1Depth8);
    EXPECT_EQ(compareAVCC(original, withExtension(high, {0xFE, 0xF8, 0xF8, 0x00})), refused);
    EXPECT_EQ(compareAVCC(original, avcRecord(high)), refused);
}

TEST(AVCRecord, AnotherHeaderOrSetIsRefused) {
    const Reasons refused = {"avcC differs in its header, SPS or PPS (not just the extension)"};
    const Bytes original = avcRecord(high);
    for (std::size_t at = 0; at < original.size(); at++) {
        // Counts and lengths decide where the core ends; their changes are another test's.
        if (at >= 5 && at <= 7) continue;
        const auto flipped = static_cast<std::uint8_t>(original[at] ^ 1);
        const Bytes changed = patched(withExtension(high, chroma1Depth8), at, Bytes{flipped});
        EXPECT_FALSE(compareAVCC(original, changed).empty()) << at;
    }
    EXPECT_EQ(compareAVCC(original, patched(original, 3, Bytes{41})), refused);
    EXPECT_EQ(compareAVCC(original, avcRecord(100, {sequenceSet(high)}, {Bytes{0x68, 1}})),
              refused);
    EXPECT_EQ(compareAVCC(original, avcRecord(100, {sequenceSet(high), sequenceSet(high)}, {})),
              refused);
}

TEST(AVCRecord, ARecordThatRunsOffItsEndCantBeDecoded) {
    const Reasons refused = {"avcC could not be decoded"};
    const Bytes whole = avcRecord(high);
    for (std::size_t length = 0; length < whole.size(); length++) {
        EXPECT_EQ(compareAVCC(ByteView(whole).first(length), whole), refused) << length;
        EXPECT_EQ(compareAVCC(whole, ByteView(whole).first(length)), refused) << length;
    }
    EXPECT_EQ(compareAVCC(whole, patched(whole, 6, be16(0xFFFF))), refused);
}

TEST(AVCRecord, AParameterSetThatCantBeReadProvesNothing) {
    const Reasons refused = {"avcC: could not read the SPS to check the extension"};
    const auto compared = [](const std::vector<Bytes>& sets) {
        return compareAVCC(avcRecord(100, sets, {}), avcRecord(100, sets, {}, chroma1Depth8));
    };
    EXPECT_EQ(compared({}), refused);
    EXPECT_EQ(compared({Bytes{0x67, 100, 0, 40}}), refused);
    EXPECT_EQ(compared({Bytes{0x67, 100, 0, 40, 0xA0}}), refused);
    EXPECT_EQ(compared({sequenceSet({77, 1, 8, 8})}), refused) << "it says nothing of depths";
}

TEST(AVCRecord, TheFirstOfSeveralSetsIsRead) {
    const std::vector<Bytes> sets = {sequenceSet(high), sequenceSet({110, 1, 10, 10})};
    EXPECT_EQ(compareAVCC(avcRecord(100, sets, {}), avcRecord(100, sets, {}, chroma1Depth8)),
              Reasons{});
}

}  // namespace
}  // namespace marlet::test
