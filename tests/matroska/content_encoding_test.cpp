#include "matroska/content_encoding.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"

namespace marlet::test {
namespace {

using namespace mkv;

Bytes compressed(const Bytes& data) {
    uLongf length = compressBound(data.size());
    Bytes result(length);
    compress(result.data(), &length, data.data(), data.size());
    result.resize(length);
    return result;
}

Bytes encodings(std::initializer_list<Bytes> each) {
    return element(0x6D80, each);
}
Bytes encoding(std::initializer_list<Bytes> children) {
    return element(0x6240, children);
}
Bytes zlib(std::initializer_list<Bytes> more = {}) {
    return encoding({element(0x5034, {number(0x4254, 0)}), joined(std::vector<Bytes>(more))});
}
Bytes stripped(std::string_view prefix, std::initializer_list<Bytes> more = {}) {
    return encoding({element(0x5034, {number(0x4254, 3), text(0x4255, prefix)}),
                     joined(std::vector<Bytes>(more))});
}
Bytes order(std::uint64_t value) {
    return number(0x5031, value);
}
Bytes scope(std::uint64_t value) {
    return number(0x5032, value);
}

/// Of a file with one track that is encoded like this, and one block.
OpenMKV fileOf(const Bytes& encoding_, const Bytes& block, const Bytes& more = {}) {
    return OpenMKV(soundFile({cluster(0, {block})}, {encoding_, more}));
}
Bytes frameOf(const Bytes& encoding_, const Bytes& stored) {
    return fileOf(encoding_, simpleBlock(1, 0, stored)).frames().at(0);
}
std::string reasonOf(const Bytes& encoding_) {
    return fileOf(encoding_, simpleBlock(1, 0, bytesOf("x")))->unreadable(1).value_or("readable");
}

TEST(ContentEncodings, FramesThatWereCompressedComeAsTheyWere) {
    const Bytes frame(100'000, 'x');
    EXPECT_EQ(frameOf(encodings({zlib()}), compressed(frame)), frame);
    EXPECT_EQ(frameOf(encodings({encoding({element(0x5034, {})})}), compressed(frame)), frame)
        << "zlib is what a compression is that says nothing";
}

TEST(ContentEncodings, StrippedHeadersComeBack) {
    EXPECT_EQ(frameOf(encodings({stripped("\x0B\x77")}), bytesOf("rest")), bytesOf("\x0B\x77rest"));
}

TEST(ContentEncodings, EachFrameOfALaceIsUndoneAlone) {
    const std::vector<Bytes> frames = {Bytes(50, 'a'), Bytes(3000, 'b'), bytesOf("c")};
    std::vector<Bytes> stored;
    for (const Bytes& frame : frames) stored.push_back(compressed(frame));
    const OpenMKV file = fileOf(encodings({zlib()}), lacedBlock(1, 0, Lace::EBML, stored));
    EXPECT_EQ(file.frames(), frames);
}

TEST(ContentEncodings, TheOneOfTheHighestOrderIsUndoneFirst) {
    const Bytes frame = bytesOf("headed frame");
    const Bytes both = encodings({stripped("headed ", {order(0)}), zlib({order(1)})});
    const Bytes turned = encodings({zlib({order(1)}), stripped("headed ", {order(0)})});
    for (const Bytes& each : {both, turned})
        EXPECT_EQ(frameOf(each, compressed(bytesOf("frame"))), frame);
}

TEST(ContentEncodings, TheScopeTellsWhetherFramesOrTheCodecPrivateAreMeant) {
    const Bytes secret = bytesOf("a private of the codec");
    const Bytes privateElement = element(0x63A2, compressed(secret));
    const Bytes block = simpleBlock(1, 0, bytesOf("plain"));
    const OpenMKV onlyPrivate = fileOf(encodings({zlib({scope(2)})}), block, privateElement);
    EXPECT_EQ(onlyPrivate->tracks()[0].codecPrivate, secret);
    EXPECT_EQ(onlyPrivate.frames().at(0), bytesOf("plain"));
    const OpenMKV onlyFrames = fileOf(encodings({zlib()}), block, element(0x63A2, secret));
    EXPECT_EQ(onlyFrames->tracks()[0].codecPrivate, secret);
    const OpenMKV both = fileOf(encodings({zlib({scope(3)})}),
                                simpleBlock(1, 0, compressed(bytesOf("frame"))), privateElement);
    EXPECT_EQ(both->tracks()[0].codecPrivate, secret);
    EXPECT_EQ(both.frames().at(0), bytesOf("frame"));
}

TEST(ContentEncodings, OtherTracksStayAsTheyAre) {
    const OpenMKV file(joined(
        {header(), segment({tracks({entry(1, 2, "A", {encodings({zlib()})}), entry(2, 2, "B")}),
                            cluster(0, {simpleBlock(2, 0, bytesOf("b"))})})}));
    EXPECT_EQ(file.texts(), std::vector<std::string>{"b"});
    EXPECT_FALSE(file->unreadable(1));
    EXPECT_FALSE(file->unreadable(2));
    EXPECT_FALSE(file->unreadable(77));
}

TEST(ContentEncodings, WhatCannotBeUndoneIsToldInWords) {
    const auto algorithm = [](std::uint64_t number_) {
        return encodings({encoding({element(0x5034, {number(0x4254, number_)})})});
    };
    const auto type = [](std::uint64_t number_) {
        return encodings({encoding({number(0x5033, number_)})});
    };
    EXPECT_EQ(reasonOf(algorithm(1)), "it is compressed with bzip2, which Marlet can't read");
    EXPECT_EQ(reasonOf(algorithm(2)), "it is compressed with LZO, which Marlet can't read");
    EXPECT_EQ(reasonOf(algorithm(4)), "it is compressed in a way that Marlet doesn't know");
    EXPECT_EQ(reasonOf(algorithm(99)), "it is compressed in a way that Marlet doesn't know");
    EXPECT_EQ(reasonOf(type(1)), "it is encrypted");
    EXPECT_EQ(reasonOf(type(7)), "it is stored in a way that Marlet doesn't know");
    EXPECT_EQ(reasonOf(encodings({zlib(), encoding({number(0x5033, 1), scope(2)})})),
              "it is encrypted");
    EXPECT_EQ(reasonOf(encodings({encoding({number(0x5033, 1), scope(4)})})), "readable")
        << "a scope that concerns neither frames nor CodecPrivate";
    EXPECT_EQ(reasonOf(encodings({zlib(), stripped("x")})), "readable");
    EXPECT_TRUE(frameOf(algorithm(1), bytesOf("stored")).empty());
}

TEST(ContentEncodings, DamagedFramesAreEmpty) {
    const Bytes whole = compressed(Bytes(5000, 'x'));
    const Bytes cut(whole.begin(), whole.end() - 5);
    Bytes changed = whole;
    changed.back() ^= 1;
    for (const Bytes& bad : {cut, changed, bytesOf("no zlib at all"), Bytes{}})
        EXPECT_TRUE(frameOf(encodings({zlib()}), bad).empty());
}

TEST(ContentEncodings, AFrameThatWouldFillTheMemoryIsEmpty) {
    const Bytes bomb = compressed(Bytes(std::size_t{4} << 20, 0));
    ContentEncodings once(1);
    EXPECT_TRUE(ContentDecoder::undo(once, ContentEncoding::frames, bomb, std::size_t{4} << 20));
    EXPECT_FALSE(
        ContentDecoder::undo(once, ContentEncoding::frames, bomb, (std::size_t{4} << 20) - 1));
    once[0].compression = ContentEncoding::Compression::HeaderStripping;
    once[0].settings = Bytes(100);
    EXPECT_TRUE(ContentDecoder::undo(once, ContentEncoding::frames, Bytes(50), 150));
    EXPECT_FALSE(ContentDecoder::undo(once, ContentEncoding::frames, Bytes(50), 149));
}

}  // namespace
}  // namespace marlet::test
