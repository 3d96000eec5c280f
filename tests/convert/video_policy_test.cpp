#include "convert/video_policy.h"

#include <gtest/gtest.h>

#include "support/avc_builder.h"

namespace marlet::test {
namespace {

constexpr std::uint8_t main = 77;
constexpr std::uint8_t high = 100;
constexpr std::uint8_t high10 = 110;

VideoVerdict verdict(const std::string& codec, const Bytes& configuration = {}) {
    return VideoPolicy::check({.type = 1, .codecID = codec, .codecPrivate = configuration});
}

VideoVerdict avc(const Bytes& configuration) {
    return verdict("V_MPEG4/ISO/AVC", configuration);
}

/// An HEVC record of so many bytes with that chroma format.
VideoVerdict hevc(std::uint8_t chroma, std::size_t size = 23) {
    Bytes record(size, 0xFC);
    record[0] = 1;
    if (size > 16) record[16] = static_cast<std::uint8_t>(0xFC | chroma);
    return verdict("V_MPEGH/ISO/HEVC", record);
}

TEST(VideoPolicy, FlagsTenBitH264) {
    const Bytes record = avcRecord({.profile = high10, .lumaDepth = 10, .chromaDepth = 10});
    EXPECT_EQ(VideoPolicy::avcBitDepth(record), 10);
    EXPECT_EQ(avc(record),
              VideoVerdict::unsupported("10-bit H.264 (Hi10P): Apple TV can't play it"));
}

TEST(VideoPolicy, CopiesMainProfileH264) {
    const Bytes record = avcRecord({.profile = main});
    EXPECT_EQ(VideoPolicy::avcBitDepth(record), 8);
    EXPECT_EQ(avc(record), VideoVerdict::copy());
    EXPECT_EQ(avc(avcRecord({.profile = high})), VideoVerdict::copy());
}

TEST(VideoPolicy, CopiesHigh10WithEightBits) {
    const Bytes record = avcRecord({.profile = high10});
    EXPECT_EQ(VideoPolicy::avcBitDepth(record), 8);
    EXPECT_TRUE(avc(record).isCopy());
}

TEST(VideoPolicy, FlagsNineBitH264) {
    EXPECT_FALSE(avc(avcRecord({.profile = high10, .lumaDepth = 9, .chromaDepth = 9})).isCopy());
}

TEST(VideoPolicy, FlagsH264BeyondFourTwoZeroByItsProfileWhateverItsBits) {
    const auto refused = VideoVerdict::unsupported("H.264 4:2:2 or 4:4:4: Apple TV can't play it");
    for (const int profile : {44, 122, 244}) {
        const auto byte = static_cast<std::uint8_t>(profile);
        EXPECT_EQ(avc({1, byte}), refused) << profile;
        EXPECT_EQ(avc(avcRecord({.profile = byte, .chroma = 2})), refused) << profile;
    }
    EXPECT_TRUE(avc({2, 122}).isCopy()) << "no record";
}

TEST(VideoPolicy, CopiesH264WithoutARecord) {
    EXPECT_TRUE(avc({}).isCopy());
    EXPECT_TRUE(avc({1}).isCopy());
    EXPECT_EQ(VideoPolicy::avcBitDepth({}), std::nullopt);
}

TEST(VideoPolicy, CopiesHEVCOfFourTwoZeroAlone) {
    const auto refused = VideoVerdict::unsupported("HEVC 4:2:2 or 4:4:4: Apple TV can't play it");
    EXPECT_EQ(hevc(1), VideoVerdict::copy());
    EXPECT_EQ(hevc(0), refused) << "monochrome";
    EXPECT_EQ(hevc(2), refused);
    EXPECT_EQ(hevc(3), refused);
    EXPECT_EQ(hevc(3, 18), refused);
}

TEST(VideoPolicy, CopiesHEVCWithAShortRecordWithoutALook) {
    EXPECT_TRUE(hevc(3, 17).isCopy());
    EXPECT_TRUE(verdict("V_MPEGH/ISO/HEVC").isCopy());
}

TEST(VideoPolicy, LetsHDRPass) {
    EXPECT_TRUE(VideoPolicy::check({.type = 1,
                                    .codecID = "V_MPEGH/ISO/HEVC",
                                    .bitsPerChannel = 10,
                                    .hasHDRColour = true,
                                    .hasDolbyVisionConfig = true})
                    .isCopy());
}

TEST(VideoPolicy, FlagsOtherFormatsInPlainWords) {
    EXPECT_EQ(verdict("V_VP9").message(),
              "VP9: Apple TV can't play it, and Marlet never re-encodes video");
    EXPECT_EQ(verdict("V_AV1").message(),
              "AV1: Apple TV can't play it, and Marlet never re-encodes video");
    EXPECT_EQ(verdict("V_MPEG2").message(),
              "MPEG-2 video: not an Apple TV format, and Marlet never re-encodes video");
    EXPECT_EQ(verdict("V_VP8").message(),
              "VP8: Apple TV can't play it, and Marlet never re-encodes video");
    EXPECT_EQ(verdict("V_MS/VFW/FOURCC").message(),
              "an old video format (Xvid, DivX or VC-1): Apple TV can't play it, and Marlet never "
              "re-encodes video");
}

TEST(VideoPolicy, NamesAFormatThatItDoesNotKnow) {
    const std::string rest = ": not an Apple TV format, and Marlet never re-encodes video";
    EXPECT_EQ(verdict("V_THEORA").message(), "V_THEORA" + rest);
    EXPECT_EQ(verdict("V_VP9X").message(), "V_VP9X" + rest) << "the whole id counts";
    EXPECT_EQ(verdict("").message(), rest);
}

}  // namespace
}  // namespace marlet::test
