#include "helpers/dolby_sound.h"

#include <gtest/gtest.h>

#include <string>

#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

/// Bits written out as text, blanks ignored; what is missing to a frame's size is zero.
Bytes frameOf(const std::string& bits, std::size_t size) {
    Bytes bytes{0x0B, 0x77};
    std::size_t used = 0;
    for (const char bit : bits) {
        if (bit == ' ') continue;
        if (used % 8 == 0) bytes.push_back(0);
        if (bit == '1') bytes.back() |= static_cast<std::uint8_t>(0x80 >> used % 8);
        used++;
    }
    bytes.resize(size);
    return bytes;
}

// kind, substream, words - 1, fscod, numblkscod, acmod, lfeon, bsid, dialnorm, compre
const std::string independent51 = "00 000 00001111111 00 11 111 1 10000 11111 0";
const std::string dependent71 = "01 000 00000111111 00 11 111 0 10000 11111 0";

}  // namespace

TEST(DolbySound, TellsWhatAnAC3FrameHolds) {
    // crc1, fscod, frmsizecod 30 (448 kbit/s), bsid 8, bsmod 0, acmod 7, cmixlev, surmixlev, lfeon
    const auto frame =
        DolbySound::frame(frameOf("0000000000000000 00 011110 01000 000 111 01 01 1", 16));
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->isEnhanced);
    EXPECT_EQ(frame->bytes, 1792U);
    EXPECT_EQ(frame->rate, 48'000U);
    EXPECT_EQ(frame->length, 1536U);
    EXPECT_EQ(frame->mode, 7);
    EXPECT_TRUE(frame->hasLowFrequency);
}

TEST(DolbySound, CountsTheWordThatOddFramesOf44100HaveMore) {
    const std::string more = " 01000 000 010 00 0";
    EXPECT_EQ(DolbySound::frame(frameOf("0000000000000000 01 011110" + more, 16))->bytes, 1950U);
    EXPECT_EQ(DolbySound::frame(frameOf("0000000000000000 01 011111" + more, 16))->bytes, 1952U);
    EXPECT_EQ(DolbySound::frame(frameOf("0000000000000000 10 011110" + more, 16))->bytes, 2688U);
}

TEST(DolbySound, TakesNoOtherBytesForAFrame) {
    EXPECT_FALSE(DolbySound::frame({}));
    EXPECT_FALSE(DolbySound::frame(Bytes{0x0B, 0x77, 0, 0}));
    EXPECT_FALSE(DolbySound::frame(Bytes(64, 0xFF)));
    EXPECT_FALSE(DolbySound::frame(frameOf("0000000000000000 11 011110 01000", 16)));
    EXPECT_FALSE(DolbySound::frame(frameOf("0000000000000000 00 111110 01000", 16)));
    EXPECT_FALSE(DolbySound::describe(Bytes(64, 0xFF)));
}

TEST(DolbySound, DescribesAnEnhancedFrameOfItsOwn) {
    const Bytes sample = frameOf(independent51 + " 0 0 0", 256);
    const auto description = DolbySound::describe(sample);
    ASSERT_TRUE(description);
    EXPECT_EQ(description->frameLength, 1536U);
    // 64 kbit/s, one programme, bsid 16, acmod 7 with LFE, nothing dependent.
    EXPECT_TRUE(textOf(description->entry)
                    .ends_with(std::string("\0\0\0\x0D"
                                           "dec3\x02\x00\x20\x0F\x00",
                                           13)));
}

TEST(DolbySound, TellsThePlacesOfADependentFrame) {
    // A map of the pair Lrs/Rrs: the seventh bit.
    Bytes sample = frameOf(independent51 + " 0 0 0", 256);
    append(sample, frameOf(dependent71 + " 1 0000001000000000 0 0 0", 128));
    const auto description = DolbySound::describe(sample);
    ASSERT_TRUE(description);
    // One dependent frame, whose places have the second bit from below.
    EXPECT_TRUE(textOf(description->entry)
                    .ends_with(std::string("\0\0\0\x0E"
                                           "dec3\x03\x00\x20\x0F\x02\x02",
                                           14)));
}

TEST(DolbySound, TellsOfSoundObjects) {
    // mixmdate 0, infomdate 0, addbsie 1, addbsil 1: two bytes, the flag and a complexity of 16.
    const Bytes sample = frameOf(independent51 + " 0 0 1 000001 00000001 00010000", 256);
    EXPECT_EQ(DolbySound::frame(sample)->objects, 16);
    EXPECT_TRUE(textOf(DolbySound::describe(sample)->entry)
                    .ends_with(std::string("dec3\x02\x00\x20\x0F\x00\x01\x10", 11)));
}

TEST(DolbySound, FindsTheSoundObjectsBehindEverythingThatMayComeFirst) {
    // mixmdate with all its parts, infomdate with all of its.
    const std::string mix = " 1 00 000000 000000 1 00000 1 000000 1 000000 11 00001" +
                            std::string(24, '1') + " 1 1 00000 0 0 0 0 0";
    const std::string information = " 1 010 0 0 00 1 00000000 0";
    const auto frame = DolbySound::frame(
        frameOf(independent51 + mix + information + " 1 000001 00000001 00001100", 256));
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->service, 2);
    EXPECT_EQ(frame->objects, 12);
}

TEST(DolbySound, DescribesWhatFFmpegEncodesAsFFmpegDoes) {
    const TempFolder folder;
    for (const std::string codec : {"ac3", "eac3"})
        for (const std::string channels : {"1", "2", "6"}) {
            const auto film = folder / (codec + channels + ".mp4");
            const auto raw = folder / (codec + channels + ".raw");
            ffmpeg({"-f",   "lavfi", "-i",          "sine=sample_rate=48000:duration=1",
                    "-c:a", codec,   "-ac",         channels,
                    "-map", "0",     film.string(), "-c:a",
                    codec,  "-ac",   channels,      "-map",
                    "0",    "-f",    codec,         raw.string()});
            const Bytes frames = readFile(raw);
            const auto head = DolbySound::frame(frames);
            ASSERT_TRUE(head);
            const auto own = DolbySound::describe(ByteView(frames).first(head->bytes));
            const std::string type = codec == "ac3" ? "dac3" : "dec3";
            const std::string mine = textOf(own->entry);
            const std::string box = mine.substr(mine.find(type) - 4);
            EXPECT_NE(textOf(readFile(film)).find(box), std::string::npos) << codec << channels;
        }
}

}  // namespace marlet::test
