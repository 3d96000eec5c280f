// The first bytes of a frame, without the rest.

#include <gtest/gtest.h>
#include <zlib.h>

#include "matroska/mkv_reading.h"

namespace marlet::test {
namespace {

using namespace mkv;

/// What no compression makes small.
Bytes noise(std::size_t size) {
    Bytes bytes;
    std::uint32_t random = 1;
    while (bytes.size() < size) {
        random = random * 1'664'525 + 1'013'904'223;
        bytes.push_back(static_cast<std::uint8_t>(random >> 24));
    }
    return bytes;
}
Bytes compressed(const Bytes& data) {
    uLongf length = compressBound(data.size());
    Bytes result(length);
    compress(result.data(), &length, data.data(), data.size());
    result.resize(length);
    return result;
}
Bytes zlib(std::uint64_t order = 0) {
    return element(0x6240, {number(0x5031, order), element(0x5034, {number(0x4254, 0)})});
}
Bytes stripped(std::string_view prefix, std::uint64_t order = 0) {
    return element(0x6240, {number(0x5031, order),
                            element(0x5034, {number(0x4254, 3), text(0x4255, prefix)})});
}
OpenMKV fileOf(const Bytes& stored, std::initializer_list<Bytes> encodings = {}) {
    return OpenMKV(soundFile({cluster(0, {simpleBlock(1, 0, stored)})},
                             {encodings.size() > 0 ? element(0x6D80, encodings) : Bytes()}));
}
Bytes headOf(const OpenMKV& file, std::size_t most) {
    const MKVBlock block = file.blocks().at(0);
    return file->head(block, block.frames.at(0), most);
}
Bytes first(const Bytes& bytes, std::size_t count) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST(MKVHead, IsTheBeginningOfAFrame) {
    const Bytes frame = noise(5000);
    const OpenMKV file = fileOf(frame);
    EXPECT_EQ(headOf(file, 40), first(frame, 40));
    EXPECT_EQ(headOf(file, 5000), frame);
    EXPECT_EQ(headOf(file, 6000), frame) << "no more than there is";
    EXPECT_TRUE(headOf(file, 0).empty());
}

TEST(MKVHead, IsTheBeginningBeforeItWasCompressed) {
    for (const Bytes& frame : {noise(100'000), Bytes(3'000'000, 'x'), noise(10), Bytes()}) {
        const OpenMKV file = fileOf(compressed(frame), {zlib()});
        for (const std::size_t most : {std::size_t{1}, std::size_t{40}, std::size_t{4096}})
            EXPECT_EQ(headOf(file, most), first(frame, std::min(most, frame.size())));
    }
}

TEST(MKVHead, BeginsWithTheHeaderThatWasStripped) {
    const OpenMKV file = fileOf(bytesOf("stored"), {stripped("pre")});
    EXPECT_EQ(textOf(headOf(file, 2)), "pr");
    EXPECT_EQ(textOf(headOf(file, 5)), "prest");
    EXPECT_EQ(textOf(headOf(file, 99)), "prestored");
}

TEST(MKVHead, UndoesSeveralEncodings) {
    const Bytes frame = noise(50'000);
    const Bytes packed = compressed(frame);
    const OpenMKV file = fileOf(Bytes(packed.begin() + 2, packed.end()),
                                {zlib(0), stripped(textOf(ByteView(packed).first(2)), 1)});
    EXPECT_EQ(headOf(file, 64), first(frame, 64));
    const OpenMKV other = fileOf(packed, {zlib(1), stripped("pre", 0)});
    EXPECT_EQ(headOf(other, 3 + 61), [&] {
        Bytes expected = bytesOf("pre");
        append(expected, first(frame, 61));
        return expected;
    }());
}

TEST(MKVHead, OfADamagedFrameIsWhatComesBeforeTheDamage) {
    EXPECT_TRUE(headOf(fileOf(bytesOf("no zlib at all"), {zlib()}), 40).empty());
    const Bytes frame = noise(50'000);
    Bytes damaged = compressed(frame);
    damaged.resize(20'000);
    EXPECT_EQ(headOf(fileOf(damaged, {zlib()}), 40), first(frame, 40));
}

TEST(MKVHead, OfAStreamThatNeverBeginsIsNothing) {
    // Stored blocks of no bytes, which may follow each other for ever.
    Bytes endless{0x78, 0x9C};
    for (int i = 0; i < 200'000; i++) append(endless, Bytes{0x00, 0x00, 0x00, 0xFF, 0xFF});
    EXPECT_TRUE(headOf(fileOf(endless, {zlib()}), 40).empty());
}

TEST(MKVHead, OfATrackThatCannotBeReadIsNothing) {
    const Bytes encrypted = element(0x6240, {number(0x5033, 1)});
    EXPECT_TRUE(headOf(fileOf(bytesOf("stored"), {encrypted}), 4).empty());
}

TEST(MKVHead, EndsWithTheFile) {
    const Bytes frame = noise(5000);
    Bytes bytes = soundFile({cluster(0, {simpleBlock(1, 0, frame)})});
    bytes.resize(bytes.size() - 4990);
    const OpenMKV file(bytes);
    EXPECT_EQ(headOf(file, 40), first(frame, 10));
}

}  // namespace
}  // namespace marlet::test
