#include "mp4/avc_config.h"

#include <algorithm>
#include <array>

namespace marlet {

namespace {

/// Profiles whose sequence parameter sets carry the chroma format and the bit depths
/// (ISO/IEC 14496-10, 7.3.2.1.1).
constexpr std::array<std::uint8_t, 13> profilesWithDepths = {44,  83,  86,  100, 110, 118, 122,
                                                             128, 134, 135, 138, 139, 244};
/// High 4:4:4 of the 2005 edition, withdrawn since. Its sets begin like those above.
constexpr std::uint8_t withdrawnHigh444 = 144;

/// NAL unit header, profile, constraints, level.
constexpr std::int64_t setHeader = 4;

constexpr int mostLeadingZeros = 32;

bool carriesDepths(std::uint8_t profile) {
    return std::ranges::find(profilesWithDepths, profile) != profilesWithDepths.end();
}

Bytes withoutEmulationPrevention(ByteView bytes) {
    constexpr std::uint8_t preventionByte = 3;
    Bytes out;
    out.reserve(bytes.size());
    int zeros = 0;
    for (std::size_t i = 0; i < bytes.size(); i++) {
        if (zeros >= 2 && bytes[i] == preventionByte) {
            if (++i == bytes.size()) break;
            zeros = 0;
        }
        out.push_back(bytes[i]);
        zeros = bytes[i] == 0 ? zeros + 1 : 0;
    }
    return out;
}

}  // namespace

SPSBits::SPSBits(ByteView bytes) : bytes_(withoutEmulationPrevention(bytes)) {}

int SPSBits::bit() {
    if (atEnd()) {
        isBad_ = true;
        return 0;
    }
    const int value = bytes_[position_ / 8] >> (7 - position_ % 8) & 1;
    position_++;
    return value;
}

std::uint64_t SPSBits::ue() {
    int zeros = 0;
    bool isEnded = false;  // by the 1 that the standard wants behind the zeros
    while (!isEnded && zeros < mostLeadingZeros && !atEnd()) {
        isEnded = bit() == 1;
        if (!isEnded) zeros++;
    }
    if (!isEnded) isBad_ = true;
    std::uint64_t suffix = 0;
    for (int i = 0; i < zeros; i++) suffix = suffix << 1 | static_cast<std::uint64_t>(bit());
    return (1ULL << zeros) - 1 + suffix;
}

namespace AVCConfig {

std::optional<std::int64_t> bitDepth(ByteView record) {
    constexpr std::size_t firstSet = 8;
    constexpr std::size_t shortestSet = 5;
    if (record.size() < firstSet + 1 || record[0] != 1 || (record[5] & 0x1F) == 0)
        return std::nullopt;
    const std::size_t length = BigEndian::u16(record, 6);
    if (length < shortestSet || record.size() < firstSet + length) return std::nullopt;

    const ByteView set = record.subspan(firstSet, length);
    if (!carriesDepths(set[1])) return 8;
    SPSBits bits(set.subspan(setHeader));
    bits.ue();                       // the set's id
    if (bits.ue() == 3) bits.bit();  // separate_colour_plane_flag
    return static_cast<std::int64_t>(bits.ue()) + 8;
}

std::optional<SampleFormat> sampleFormat(ByteView parameterSet) {
    const ByteView rest =
        slice(parameterSet, setHeader, static_cast<std::int64_t>(parameterSet.size()));
    if (rest.empty()) return std::nullopt;
    const std::uint8_t profile = parameterSet[1];
    if (!carriesDepths(profile) && profile != withdrawnHigh444) return std::nullopt;

    SPSBits bits(rest);
    SampleFormat format;
    bits.ue();  // the set's id
    format.chromaFormat = bits.ue();
    if (format.chromaFormat == 3) bits.bit();  // separate_colour_plane_flag
    format.lumaDepth = bits.ue() + 8;
    format.chromaDepth = bits.ue() + 8;
    if (bits.isBad()) return std::nullopt;
    return format;
}

}  // namespace AVCConfig
}  // namespace marlet
