// Sample formats: RFC 9559 and the Matroska codec specification (A_PCM).
#include "convert/pcm_samples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>

namespace marlet::AudioConvert {

namespace {

struct Codec {
    std::string_view id;
    bool isFloat;
    bool isBigEndian;
    int usualBits;
};

constexpr Codec codecs[] = {
    {"A_PCM/INT/LIT", false, false, 16},
    {"A_PCM/INT/BIG", false, true, 16},
    {"A_PCM/FLOAT/IEEE", true, false, 32},
};

/// The sample's bytes as the upper ones of 64 bits.
std::uint64_t highBits(const std::uint8_t* at, const PCMFormat& format) {
    std::uint64_t value = 0;
    for (int i = 0; i < format.bytes; i++)
        value = value << 8 | at[format.isBigEndian ? i : format.bytes - 1 - i];
    return value << (64 - 8 * format.bytes);
}

std::int32_t fromFloat(double sample) {
    constexpr double scale = 2147483648.0;
    if (std::isnan(sample)) return 0;
    return static_cast<std::int32_t>(std::clamp(sample * scale, -scale, scale - 1));
}

std::int32_t decoded(std::uint64_t bits, const PCMFormat& format) {
    const auto high = static_cast<std::uint32_t>(bits >> 32);
    if (format.isFloat)
        return fromFloat(format.bytes == 4 ? std::bit_cast<float>(high)
                                           : std::bit_cast<double>(bits));
    constexpr std::uint32_t middle = 0x80000000;
    return static_cast<std::int32_t>(format.bytes == 1 ? high ^ middle : high);
}

}  // namespace

std::optional<PCMFormat> pcmFormat(const MKVTrack& track) {
    const auto codec = std::ranges::find(codecs, track.codecID, &Codec::id);
    if (codec == std::end(codecs)) return std::nullopt;
    const int bits = track.bitDepth.value_or(0) == 0 ? codec->usualBits : *track.bitDepth;
    if (bits < 1 || bits > 64 || (codec->isFloat && bits != 32 && bits != 64)) return std::nullopt;
    return PCMFormat{codec->isFloat, codec->isBigEndian, (bits + 7) / 8};
}

void decodePCM(ByteView bytes, const PCMFormat& format, std::vector<std::int32_t>& out) {
    const auto width = static_cast<std::size_t>(format.bytes);
    for (std::size_t at = 0; at + width <= bytes.size(); at += width)
        out.push_back(decoded(highBits(bytes.data() + at, format), format));
}

std::int32_t narrowed(std::int32_t sample, int bits) {
    const int dropped = 32 - bits;
    const std::int64_t rounded =
        (std::int64_t{sample} + (std::int64_t{1} << (dropped - 1))) >> dropped;
    return static_cast<std::int32_t>(std::min(rounded, (std::int64_t{1} << (bits - 1)) - 1));
}

}  // namespace marlet::AudioConvert
