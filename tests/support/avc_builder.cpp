#include "support/avc_builder.h"

#include <bit>

#include "support/box_builder.h"

namespace marlet::test {

namespace {

constexpr std::uint8_t level4 = 40;

Bytes withLength(const Bytes& set) {
    return joined({be16(static_cast<std::uint16_t>(set.size())), set});
}

}  // namespace

BitWriter& BitWriter::bit(int value) {
    if (used_ == 8) {
        bytes_.push_back(0);
        used_ = 0;
    }
    bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | value << (7 - used_));
    used_++;
    return *this;
}

BitWriter& BitWriter::ue(std::uint32_t value) {
    const std::uint64_t code = std::uint64_t{value} + 1;
    const int width = static_cast<int>(std::bit_width(code));
    for (int i = 1; i < width; i++) bit(0);
    for (int i = width - 1; i >= 0; i--) bit(static_cast<int>(code >> i & 1));
    return *this;
}

Bytes sequenceSet(const AVCFormat& format) {
    BitWriter bits;
    bits.ue(0).ue(format.chroma);
    if (format.chroma == 3) bits.bit(0);
    bits.ue(format.lumaDepth - 8).ue(format.chromaDepth - 8);
    bits.bit(0).bit(0).ue(4).ue(2).bit(1);
    return joined({Bytes{0x67, format.profile, 0, level4}, bits.bytes()});
}

Bytes avcRecord(std::uint8_t profile, const std::vector<Bytes>& sequenceSets,
                const std::vector<Bytes>& pictureSets, const Bytes& extension) {
    Bytes record = {1,      profile, 0,
                    level4, 0xFF,    static_cast<std::uint8_t>(0xE0 | sequenceSets.size())};
    for (const Bytes& set : sequenceSets) append(record, withLength(set));
    record.push_back(static_cast<std::uint8_t>(pictureSets.size()));
    for (const Bytes& set : pictureSets) append(record, withLength(set));
    append(record, extension);
    return record;
}

Bytes avcRecord(const AVCFormat& format, const Bytes& extension) {
    return avcRecord(format.profile, {sequenceSet(format)}, {Bytes{0x68, 0xEB, 0xE3, 0xCB}},
                     extension);
}

}  // namespace marlet::test
