#include "convert/round_samples.h"

#include <algorithm>

namespace marlet::AudioConvert {

namespace {

// One plain loop for each stride, so that the compiler makes wide instructions of it.
template <std::size_t Stride>
void round(std::span<const float> samples, float gain, std::int16_t* out) {
    constexpr float scale = 32768.0F;
    constexpr float lowest = -32768.0F;
    constexpr float highest = 32767.0F;
    const float factor = gain * scale;
    for (std::size_t i = 0; i < samples.size(); i++) {
        const float scaled = samples[i] * factor;
        const float number = scaled == scaled ? scaled : 0.0F;
        const float held = std::min(std::max(number, lowest), highest);
        out[i * Stride] = static_cast<std::int16_t>(held + (held < 0 ? -0.5F : 0.5F));
    }
}

}  // namespace

void roundSamples(std::span<const float> samples, float gain, std::int16_t* out,
                  std::size_t stride) {
    if (stride == 1) return round<1>(samples, gain, out);
    round<2>(samples, gain, out);
}

}  // namespace marlet::AudioConvert
