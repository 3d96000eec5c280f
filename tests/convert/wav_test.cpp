#include "convert/wav.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>

#include "foundation/errors.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using AudioConvert::WAV;
using testing::ElementsAre;

void little(Bytes& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; i++) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

/// A chunk that states that size (its own by default), filled up to an even length.
Bytes chunk(const std::string& name, const Bytes& payload,
            std::optional<std::uint32_t> stated = {}) {
    Bytes out = bytesOf(name);
    little(out, stated.value_or(static_cast<std::uint32_t>(payload.size())), 4);
    append(out, payload);
    if (payload.size() % 2 == 1) out.push_back(0);
    return out;
}

Bytes format(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits) {
    Bytes out;
    little(out, tag, 2);
    little(out, channels, 2);
    little(out, rate, 4);
    little(out, std::uint64_t{rate} * channels * bits / 8, 4);
    little(out, channels * bits / 8U, 2);
    little(out, bits, 2);
    return out;
}

Bytes extensible(std::uint16_t subformat) {
    Bytes out = format(65534, 6, 48000, 24);
    little(out, 22, 2);
    little(out, 24, 2);
    little(out, 0x3F, 4);
    little(out, subformat, 2);
    append(out, Bytes(14, 0));
    return out;
}

class WAVHeader : public testing::Test {
protected:
    WAV read(const std::vector<Bytes>& chunks) {
        Bytes bytes = bytesOf("RIFF....WAVE");
        for (const Bytes& one : chunks) append(bytes, one);
        return AudioConvert::readWAVHeader(folder_.write("sound.wav", bytes));
    }
    std::string refusal(const std::vector<Bytes>& chunks) {
        try {
            read(chunks);
        } catch (const MFError& error) {
            return error.description();
        }
        return "";
    }

    const Bytes fmt_ = chunk("fmt ", format(1, 2, 44100, 16));
    TempFolder folder_;
};

constexpr const char* unreadable = "the decoded sound isn't a readable WAV file";

TEST_F(WAVHeader, TellsFormatAndData) {
    EXPECT_EQ(read({fmt_, chunk("data", Bytes(8, 1))}), (WAV{.channels = 2,
                                                             .sampleRate = 44100,
                                                             .bits = 16,
                                                             .dataOffset = 12 + 24 + 8,
                                                             .dataSize = 8}));
}

TEST_F(WAVHeader, WithoutADataSizeGoesToTheEndOfTheFile) {
    EXPECT_EQ(read({fmt_, chunk("data", Bytes(10, 1), 0)}).dataSize, 10);
    EXPECT_EQ(read({fmt_, chunk("data", Bytes(10, 1), 0xFFFFFFFF)}).dataSize, 10);
    EXPECT_EQ(read({fmt_, chunk("data", Bytes(10, 1), 11)}).dataSize, 10);
    EXPECT_EQ(read({fmt_, chunk("data", Bytes(10, 1), 6)}).dataSize, 6);
    EXPECT_EQ(read({fmt_, chunk("data", {}, 0)}).dataSize, 0);
}

TEST_F(WAVHeader, KnowsFloats) {
    EXPECT_TRUE(read({chunk("fmt ", format(3, 1, 48000, 32)), chunk("data", {})}).isFloat);
    EXPECT_FALSE(read({chunk("fmt ", format(1, 1, 48000, 32)), chunk("data", {})}).isFloat);
}

TEST_F(WAVHeader, OfTheExtensibleFormTellsItsRealFormat) {
    EXPECT_TRUE(read({chunk("fmt ", extensible(3)), chunk("data", {})}).isFloat);
    const WAV pcm = read({chunk("fmt ", extensible(1)), chunk("data", {})});
    EXPECT_FALSE(pcm.isFloat);
    EXPECT_EQ(pcm.channels, 6);
    EXPECT_EQ(pcm.bits, 24);
    Bytes cut = extensible(3);
    cut.resize(25);
    EXPECT_FALSE(read({chunk("fmt ", cut), chunk("data", {})}).isFloat);
}

TEST_F(WAVHeader, StepsOverOtherChunksOfEvenAndOddSizes) {
    EXPECT_EQ(read({chunk("LIST", Bytes(3, 9)), fmt_, chunk("fact", Bytes(4, 9)),
                    chunk("data", Bytes(2, 1))})
                  .dataOffset,
              12 + 12 + 24 + 12 + 8);
}

TEST_F(WAVHeader, CountsDataOnlyBehindTheFormat) {
    EXPECT_EQ(read({chunk("data", Bytes(4, 9)), fmt_, chunk("data", Bytes(2, 1))}).dataOffset,
              12 + 12 + 24 + 8);
    EXPECT_EQ(refusal({chunk("data", Bytes(4, 9)), fmt_}), unreadable);
}

TEST_F(WAVHeader, ThatIsShortIsRefused) {
    EXPECT_EQ(refusal({}), unreadable);
    EXPECT_EQ(refusal({fmt_}), unreadable);
    EXPECT_EQ(refusal({fmt_, bytesOf("data")}), unreadable);
    EXPECT_EQ(refusal({chunk("fmt ", Bytes(15, 1)), chunk("data", Bytes(2, 1))}), unreadable);
    EXPECT_EQ(refusal({chunk("fmt ", Bytes(10, 1), 16)}), unreadable);
}

TEST_F(WAVHeader, OfNothingButChunksIsRefusedSoon) {
    Bytes chunks;
    for (int i = 0; i < 20'000; i++) append(chunks, chunk("junk", {}));
    EXPECT_EQ(refusal({chunks, fmt_, chunk("data", Bytes(2, 1))}), unreadable);
}

TEST_F(WAVHeader, OfAFileThatIsNotThereIsRefusedWithTheSystemsWords) {
    try {
        AudioConvert::readWAVHeader(folder_ / "none.wav");
        FAIL();
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(),
                  "the decoded sound could not be opened: No such file or directory");
    }
}

TEST_F(WAVHeader, OfARealFileIsRead) {
    const auto file = folder_ / "real.wav";
    ffmpeg(
        {"-f", "lavfi", "-i", "anullsrc=r=48000:cl=7.1", "-t", "0.1", "-c:a", "pcm_s16le", file});
    const WAV wav = AudioConvert::readWAVHeader(file);
    EXPECT_EQ(wav.channels, 8);
    EXPECT_EQ(wav.sampleRate, 48000);
    EXPECT_EQ(wav.bits, 16);
    EXPECT_FALSE(wav.isFloat);
    EXPECT_EQ(wav.dataSize, 4800 * 8 * 2);
}

std::vector<float> samples(const Bytes& bytes, int bits, bool isFloat = false,
                           std::size_t room = 16) {
    std::vector<float> out(room);
    out.resize(
        AudioConvert::decodeSamples(bytes, {.channels = 1, .bits = bits, .isFloat = isFloat}, out));
    return out;
}

TEST(WAVSamples, AreScaledToOne) {
    EXPECT_THAT(samples({0, 0x80, 0, 0x40, 0, 0, 0xFF, 0xFF}, 16),
                ElementsAre(-1, 0.5, 0, -1.0F / 32768));
    EXPECT_THAT(samples({0, 0, 0x80, 0, 0, 0x40, 0xFF, 0xFF, 0xFF}, 24),
                ElementsAre(-1, 0.5, -1.0F / 8388608));
    EXPECT_THAT(samples({0, 0, 0, 0x80, 0, 0, 0, 0x40}, 32), ElementsAre(-1, 0.5));
}

TEST(WAVSamples, OfFloatsStayAsTheyAre) {
    Bytes bytes;
    for (const float value : {1.5F, -0.25F}) little(bytes, std::bit_cast<std::uint32_t>(value), 4);
    EXPECT_THAT(samples(bytes, 32, true), ElementsAre(1.5, -0.25));
}

TEST(WAVSamples, AreAsManyAsThereIsRoomForAndBytes) {
    EXPECT_EQ(samples(Bytes(9, 0), 16, false, 16).size(), 4U);
    EXPECT_EQ(samples(Bytes(9, 0), 16, false, 3).size(), 3U);
    EXPECT_EQ(samples({}, 24).size(), 0U);
}

TEST(WAVSamples, OfOtherFormatsCannotBeDecoded) {
    for (const int bits : {16, 24, 32})
        EXPECT_TRUE(AudioConvert::isDecodable({.channels = 2, .bits = bits})) << bits;
    for (const int bits : {0, 8, 12, 20, 64})
        EXPECT_FALSE(AudioConvert::isDecodable({.channels = 2, .bits = bits})) << bits;
    EXPECT_FALSE(AudioConvert::isDecodable({.channels = 0, .bits = 16}));
}

}  // namespace
}  // namespace marlet::test
