#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace marlet::AudioConvert {

/// Multiplies samples of -1 to 1 by a gain and rounds them to 16 bits, the nearest that there is;
/// each goes `stride`
/// (1 or 2) behind the one before. What is no number becomes silence.
void roundSamples(std::span<const float> samples, float gain, std::int16_t* out,
                  std::size_t stride);

}  // namespace marlet::AudioConvert
