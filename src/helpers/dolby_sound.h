#pragma once

#include <cstdint>
#include <optional>

#include "foundation/bytes.h"

// Frames of AC-3 and E-AC-3 (ETSI TS 102 366) as far as an MP4 must tell what is in them.
namespace marlet::DolbySound {

/// The head of one syncframe.
struct Frame {
    bool isEnhanced = false;  ///< E-AC-3
    bool isDependent = false;
    std::uint32_t bytes = 0;
    std::uint32_t rate = 0;        ///< Hz
    std::uint32_t length = 0;      ///< samples a channel
    std::uint8_t rateCode = 0;     // fscod
    std::uint8_t version = 0;      // bsid
    std::uint8_t service = 0;      // bsmod
    std::uint8_t mode = 0;         // acmod
    bool hasLowFrequency = false;  // lfeon
    std::uint8_t bitRateCode = 0;  // of AC-3: frmsizecod without its lowest bit, halved
    std::uint16_t channelMap = 0;  // of a dependent frame
    std::uint8_t objects = 0;      // complexity of its sound objects (ETSI TS 103 420), 0 without
    bool operator==(const Frame&) const = default;
};

/// More than a head ever has.
inline constexpr std::size_t longestHead = 192;

/// Nothing where no syncframe starts.
std::optional<Frame> frame(ByteView bytes);

/// The sample entry (annex F), from all of a sample's bytes or its start; nothing when it doesn't
/// begin with a frame.
struct Description {
    Bytes entry;
    std::uint32_t rate = 0;
    std::uint32_t frameLength = 0;
};
std::optional<Description> describe(ByteView sample);

}  // namespace marlet::DolbySound
