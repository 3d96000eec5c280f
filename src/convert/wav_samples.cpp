#include <algorithm>
#include <bit>
#include <cstring>

#include "convert/wav.h"

namespace marlet::AudioConvert {

namespace {

// Plain loops over whole arrays: compilers make wide instructions of them, and a film has a billion
// samples.

template <class Stored>
Stored load(const std::uint8_t* at) {
    static_assert(std::endian::native == std::endian::little);
    Stored value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

void decode16(const std::uint8_t* in, std::size_t count, float* out) {
    constexpr float scale = 1.0F / 32768.0F;
    for (std::size_t i = 0; i < count; i++)
        out[i] = static_cast<float>(load<std::int16_t>(in + i * 2)) * scale;
}

void decode24(const std::uint8_t* in, std::size_t count, float* out) {
    constexpr float scale = 1.0F / 8388608.0F;
    for (std::size_t i = 0; i < count; i++) {
        const std::uint8_t* const at = in + i * 3;
        // Into the upper three bytes, so that the shift back brings the sign along.
        const auto high = static_cast<std::int32_t>(
            std::uint32_t{at[0]} << 8 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 24);
        out[i] = static_cast<float>(high >> 8) * scale;
    }
}

void decode32(const std::uint8_t* in, std::size_t count, float* out) {
    constexpr float scale = 1.0F / 2147483648.0F;
    for (std::size_t i = 0; i < count; i++)
        out[i] = static_cast<float>(load<std::int32_t>(in + i * 4)) * scale;
}

void decodeFloat(const std::uint8_t* in, std::size_t count, float* out) {
    if (count > 0) std::memcpy(out, in, count * sizeof(float));
}

}  // namespace

bool isDecodable(const WAV& wav) {
    return wav.channels > 0 && (wav.bits == 16 || wav.bits == 24 || wav.bits == 32);
}

std::size_t decodeSamples(ByteView bytes, const WAV& wav, std::span<float> out) {
    const std::size_t width = static_cast<std::size_t>(wav.bits) / 8;
    const std::size_t count = std::min(bytes.size() / width, out.size());
    const auto decode = wav.bits == 16   ? &decode16
                        : wav.bits == 24 ? &decode24
                        : wav.isFloat    ? &decodeFloat
                                         : &decode32;
    decode(bytes.data(), count, out.data());
    return count;
}

}  // namespace marlet::AudioConvert
