#include "write/sound_channels.h"

#include <gtest/gtest.h>

#include "support/box_builder.h"
#include "write/track_film.h"

namespace marlet::test {

namespace {

TEST(SoundChannels, AreReadFromTheSampleEntry) {
    const auto stsd = [](const Bytes& entry) {
        return joined({Bytes(4), be32(1), box("ac-3", entry)});
    };
    EXPECT_EQ(soundChannels(stsd(soundEntry({}, 0, 6))), 6);
    EXPECT_EQ(soundChannels(stsd(soundEntry({}, 0, 2))), 2);
    EXPECT_EQ(soundChannels({}), 0);
    // One byte short of the field's end.
    const Bytes whole = stsd(soundEntry({}, 0, 2));
    EXPECT_EQ(soundChannels(ByteView(whole).first(34)), 2);
    EXPECT_EQ(soundChannels(ByteView(whole).first(33)), 0);
}

TEST(SoundChannels, TheCodecsOwnConfigurationKnowsBetterThanTheTemplate) {
    struct Case {
        std::string_view codec;
        Bytes box;
        int channels;
    };
    const Case cases[] = {
        {"ac-3", box("dac3", Bytes{0x10, 0x3D, 0xE0}), 6},              // 3/2 and low frequencies
        {"ac-3", box("dac3", Bytes{0x10, 0x11, 0x40}), 2},              // 2/0
        {"ac-3", box("dac3", Bytes{0x10, 0x09, 0x40}), 1},              // 1/0
        {"ec-3", box("dec3", Bytes{0x0E, 0x00, 0x20, 0x0F, 0x00}), 6},  // 5.1
        {"ec-3", box("dec3", Bytes{0x0E, 0x00, 0x20, 0x0F, 0x02, 0x02}), 8},  // and a pair more
        {"mp4a", esdsBox(1, Sizes::Padded, 6), 6},
        {"mp4a", esdsBox(1, Sizes::Short, 7), 8},
        {"mp4a", esdsBox(1, Sizes::Padded, 1), 1},
        {"mp4a", esdsBox(1, Sizes::Padded, 0), 2},  // told by the stream itself
    };
    for (const Case& example : cases) {
        const Bytes stsd = joined({Bytes(4), be32(1), box(example.codec, soundEntry(example.box))});
        EXPECT_EQ(soundChannels(stsd), example.channels)
            << example.codec << " " << toHex(example.box);
    }
}

}  // namespace
}  // namespace marlet::test
