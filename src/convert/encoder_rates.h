#pragma once

#include <algorithm>
#include <iterator>

namespace marlet::AudioConvert {

/// In Hz, at most what is ever encoded: ISO/IEC 14496-3, 1.6.3.4.
inline constexpr double aacRates[] = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
/// ETSI TS 102 366, 4.4.1.3.
inline constexpr double ac3Rates[] = {32000, 44100, 48000};

inline bool isAACRate(double rate) {
    return std::ranges::find(aacRates, rate) != std::end(aacRates);
}

inline bool isAC3Rate(double rate) {
    return std::ranges::find(ac3Rates, rate) != std::end(ac3Rates);
}

}  // namespace marlet::AudioConvert
