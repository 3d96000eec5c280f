#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// An `esds` box decoded (ISO/IEC 14496-1, 7.2.6; ISO/IEC 14496-14, 5.6).
struct ESDS {
    int esID = 0;
    int objectType = 0;
    int streamType = 0;
    std::uint32_t bufferSize = 0;  ///< bytes
    std::uint32_t maxBitrate = 0;  ///< bits a second
    std::uint32_t avgBitrate = 0;  ///< bits a second
    Bytes decoderSpecific;
    Bytes slConfig;
    bool operator==(const ESDS&) const = default;
    /// For a message; ends with the AAC object type where the decoder-specific bytes tell one.
    std::string text() const;
};

/// Whether two `stsd` payloads mean the same to a decoder. The media tool adds fields and fills
/// reserved bits its own way; what is accepted is named here with its proof, and everything else is
/// a reason. Empty means equivalent.
std::vector<std::string> compareSampleDescriptions(ByteView original, ByteView rebuilt);

/// Payloads of the boxes of that name.
std::vector<std::string> compareAVCC(ByteView original, ByteView rebuilt);
std::vector<std::string> compareHVCC(ByteView original, ByteView rebuilt);
std::vector<std::string> compareESDS(ByteView original, ByteView rebuilt);

/// `payload` begins with the four version bytes. Nothing without an ES descriptor and a decoder
/// configuration in it.
std::optional<ESDS> parseESDS(ByteView payload);

}  // namespace marlet
