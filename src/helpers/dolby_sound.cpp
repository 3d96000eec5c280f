#include "helpers/dolby_sound.h"

#include <algorithm>
#include <array>
#include <vector>

#include "helpers/boxes.h"
#include "helpers/sample_entries.h"
#include "mp4/bit_reader.h"

namespace marlet::DolbySound {

namespace {

constexpr std::array<std::uint32_t, 3> rates = {48'000, 44'100, 32'000};
/// Table 5.18: kbit/s by half of frmsizecod.
constexpr std::array<std::uint16_t, 19> bitRates = {
    32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 448, 512, 576, 640};
constexpr std::uint32_t blockLength = 256;
constexpr std::uint8_t newestPlain = 10;  // bsid: AC-3 up to here, E-AC-3 from 11 to 16
constexpr std::uint8_t newestEnhanced = 16;

/// Of 16-bit words; frames of 44.1 kHz are a word longer when the code is odd.
std::uint32_t plainBytes(std::uint32_t rateCode, std::uint32_t sizeCode) {
    const std::uint32_t kilobits = bitRates[sizeCode / 2];
    const std::uint32_t words = rateCode == 0   ? kilobits * 2
                                : rateCode == 1 ? kilobits * 320 / 147 + (sizeCode & 1)
                                                : kilobits * 3;
    return words * 2;
}

bool hasCentre(std::uint32_t mode) {
    return (mode & 1) != 0 && mode > 2;
}
bool hasSurround(std::uint32_t mode) {
    return (mode & 4) != 0;
}

std::optional<Frame> plainFrame(BitReader bits) {
    Frame frame;
    bits.skip(16);  // crc1
    frame.rateCode = static_cast<std::uint8_t>(bits.bits(2));
    const std::uint32_t sizeCode = bits.bits(6);
    if (frame.rateCode >= rates.size() || sizeCode / 2 >= bitRates.size()) return std::nullopt;
    frame.bitRateCode = static_cast<std::uint8_t>(sizeCode / 2);
    frame.version = static_cast<std::uint8_t>(bits.bits(5));
    frame.service = static_cast<std::uint8_t>(bits.bits(3));
    frame.mode = static_cast<std::uint8_t>(bits.bits(3));
    if (hasCentre(frame.mode)) bits.skip(2);
    if (hasSurround(frame.mode)) bits.skip(2);
    if (frame.mode == 2) bits.skip(2);
    frame.hasLowFrequency = bits.flag();
    frame.bytes = plainBytes(frame.rateCode, sizeCode);
    // Versions 9 and 10 are the same at a half and a quarter of the rate.
    frame.rate = rates[frame.rateCode] >> (frame.version > 8 ? frame.version - 8 : 0);
    frame.length = 6 * blockLength;
    return frame;
}

/// What only stands in the frame of a programme of its own (E.1.2.2, "mixmdate").
void skipProgrammeMix(BitReader& bits, std::uint32_t mode, std::uint32_t blocks) {
    if (bits.flag()) bits.skip(6);
    if (mode == 0 && bits.flag()) bits.skip(6);
    if (bits.flag()) bits.skip(6);
    switch (bits.bits(2)) {
        case 1:
            bits.skip(5);
            break;
        case 2:
            bits.skip(12);
            break;
        case 3:
            bits.skip(8 * (std::size_t{bits.bits(5)} + 2));
            break;
        default:
            break;
    }
    if (mode < 2) {
        if (bits.flag()) bits.skip(14);
        if (mode == 0 && bits.flag()) bits.skip(14);
    }
    if (!bits.flag()) return;
    if (blocks == 1) return bits.skip(5);
    for (std::uint32_t i = 0; i < blocks; i++)
        if (bits.flag()) bits.skip(5);
}

void skipMix(BitReader& bits, const Frame& frame, bool ownProgramme, std::uint32_t blocks) {
    if (!bits.flag()) return;
    if (frame.mode > 2) bits.skip(2);
    if (hasCentre(frame.mode)) bits.skip(6);
    if (hasSurround(frame.mode)) bits.skip(6);
    if (frame.hasLowFrequency && bits.flag()) bits.skip(5);
    if (ownProgramme) skipProgrammeMix(bits, frame.mode, blocks);
}

void readInformation(BitReader& bits, Frame& frame) {
    if (!bits.flag()) return;
    frame.service = static_cast<std::uint8_t>(bits.bits(3));
    bits.skip(2);
    if (frame.mode == 2) bits.skip(4);
    if (frame.mode >= 6) bits.skip(2);
    if (bits.flag()) bits.skip(8);
    if (frame.mode == 0 && bits.flag()) bits.skip(8);
    if (frame.rateCode < 3) bits.skip(1);
}

/// The first byte of the additional information tells of sound objects, the next how many
/// (ETSI TS 103 420, 8.3).
void readAddition(BitReader& bits, Frame& frame) {
    if (!bits.flag()) return;
    const std::uint32_t bytes = bits.bits(6) + 1;
    if (bytes < 2) return;
    const bool hasObjects = (bits.bits(8) & 1) != 0;
    const std::uint32_t complexity = bits.bits(8);
    if (hasObjects) frame.objects = static_cast<std::uint8_t>(complexity);
}

std::optional<Frame> enhancedFrame(BitReader bits) {
    constexpr std::array<std::uint32_t, 4> blockCounts = {1, 2, 3, 6};
    Frame frame;
    frame.isEnhanced = true;
    const std::uint32_t kind = bits.bits(2);
    frame.isDependent = kind == 1;
    bits.skip(3);
    frame.bytes = (bits.bits(11) + 1) * 2;
    frame.rateCode = static_cast<std::uint8_t>(bits.bits(2));
    const std::uint32_t second = bits.bits(2);
    const bool isHalf = frame.rateCode == 3;
    if (isHalf && second >= rates.size()) return std::nullopt;
    const std::uint32_t blocks = isHalf ? 6 : blockCounts[second];
    frame.rate = isHalf ? rates[second] / 2 : rates[frame.rateCode];
    frame.length = blocks * blockLength;
    frame.mode = static_cast<std::uint8_t>(bits.bits(3));
    frame.hasLowFrequency = bits.flag();
    frame.version = static_cast<std::uint8_t>(bits.bits(5));
    for (int programme = 0; programme < (frame.mode == 0 ? 2 : 1); programme++) {
        bits.skip(5);
        if (bits.flag()) bits.skip(8);
    }
    if (frame.isDependent && bits.flag())
        frame.channelMap = static_cast<std::uint16_t>(bits.bits(16));
    skipMix(bits, frame, kind == 0, blocks);
    readInformation(bits, frame);
    if (kind == 0 && blocks != 6) bits.skip(1);
    if (kind == 2 && (blocks == 6 || bits.flag())) bits.skip(6);
    readAddition(bits, frame);
    return frame;
}

/// From the 16 places of a dependent frame's map to the 9 that `dec3` has (table F.6.1).
std::uint32_t placesOf(std::uint16_t map) {
    // Counted from the lowest bit, beginning with the pair Lc/Rc; the last is the second LFE.
    constexpr std::array<std::uint16_t, 9> bits = {10, 9, 8, 7, 6, 5, 4, 3, 1};
    std::uint32_t places = 0;
    for (std::size_t i = 0; i < bits.size(); i++)
        if ((map >> bits[i] & 1) != 0) places |= std::uint32_t{1} << i;
    return places;
}

class BitWriter {
public:
    void put(std::uint32_t value, unsigned bits) {
        for (unsigned i = bits; i-- > 0;) {
            if (used_ % 8 == 0) bytes_.push_back(0);
            bytes_.back() |= static_cast<std::uint8_t>((value >> i & 1) << (7 - used_ % 8));
            used_++;
        }
    }
    const Bytes& bytes() const { return bytes_; }

private:
    Bytes bytes_;
    std::size_t used_ = 0;
};

Bytes plainBox(const Frame& frame) {
    BitWriter bits;
    bits.put(frame.rateCode, 2);
    bits.put(frame.version, 5);
    bits.put(frame.service, 3);
    bits.put(frame.mode, 3);
    bits.put(frame.hasLowFrequency ? 1 : 0, 1);
    bits.put(frame.bitRateCode, 5);
    bits.put(0, 5);
    return Boxes::box(boxCode("dac3"), {bits.bytes()});
}

/// F.6: one programme with the frames that depend on it.
Bytes enhancedBox(const Frame& main, std::uint32_t dependents, std::uint32_t places,
                  std::uint32_t sampleBytes) {
    constexpr std::uint32_t mostKilobits = 0x1FFF;
    const std::uint64_t kilobits = std::uint64_t{sampleBytes} * 8 * main.rate / main.length / 1000;
    BitWriter bits;
    bits.put(static_cast<std::uint32_t>(std::min<std::uint64_t>(kilobits, mostKilobits)), 13);
    bits.put(0, 3);
    bits.put(main.rateCode, 2);
    bits.put(main.version, 5);
    bits.put(0, 2);
    bits.put(main.service, 3);
    bits.put(main.mode, 3);
    bits.put(main.hasLowFrequency ? 1 : 0, 1);
    bits.put(0, 3);
    bits.put(dependents, 4);
    bits.put(dependents > 0 ? places : 0, dependents > 0 ? 9 : 1);
    if (main.objects > 0) {
        bits.put(1, 8);
        bits.put(main.objects, 8);
    }
    return Boxes::box(boxCode("dec3"), {bits.bytes()});
}

}  // namespace

std::optional<Frame> frame(ByteView bytes) {
    constexpr std::size_t shortest = 8;
    if (bytes.size() < shortest || BigEndian::u16(bytes, 0) != 0x0B77) return std::nullopt;
    BitReader bits(bytes.subspan(2));
    const std::uint8_t version = bytes[5] >> 3;
    if (version <= newestPlain) return plainFrame(bits);
    if (version <= newestEnhanced) return enhancedFrame(bits);
    return std::nullopt;
}

std::optional<Description> describe(ByteView sample) {
    const auto main = frame(sample);
    if (!main || main->length == 0) return std::nullopt;
    // The entry's own count is 2 whatever is in it (F.3, F.5).
    constexpr std::uint32_t statedChannels = 2;
    Description description{{}, main->rate, main->length};
    if (!main->isEnhanced) {
        description.entry =
            SampleEntries::sound(boxCode("ac-3"), statedChannels, main->rate, plainBox(*main));
        return description;
    }
    std::uint32_t dependents = 0;
    std::uint32_t places = 0;
    std::uint32_t at = main->bytes;
    while (at < sample.size()) {
        const auto more = frame(sample.subspan(at));
        if (!more || !more->isDependent || dependents == 15) break;
        dependents++;
        places |= placesOf(more->channelMap);
        at += more->bytes;
    }
    description.entry = SampleEntries::sound(
        boxCode("ec-3"), statedChannels, main->rate,
        enhancedBox(*main, dependents, places, static_cast<std::uint32_t>(sample.size())));
    return description;
}

}  // namespace marlet::DolbySound
