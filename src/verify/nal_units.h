#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string_view>

#include "foundation/bytes.h"
#include "verify/conversion_parts.h"

// NAL units as MP4 and Matroska store them: each behind its length (ISO/IEC 14496-15).
namespace marlet::ConvertVerify {

/// How the frames of one track are read.
struct NALFormat {
    enum class Codec { none, avc, hevc };
    Codec codec = Codec::none;
    std::size_t lengthSize = 0;  ///< 0: frames are compared as they stand

    bool isParameterSet(std::uint8_t first) const;
    /// A frame from which decoding can begin, whatever came before (ISO/IEC 14496-10, 7.4.1.2.4;
    /// ISO/IEC 23008-2, 7.4.2.2).
    bool isRefresh(std::uint8_t first) const;
};

NALFormat::Codec nalCodec(std::string_view codecID);

/// Takes units off the front of a frame.
class NALWalk {
public:
    NALWalk(ByteView frame, std::size_t lengthSize) : rest_(frame), lengthSize_(lengthSize) {}
    /// Nothing at the end, and at a length that is 0 or runs off it: the rest then begins there.
    std::optional<ByteView> next();
    ByteView rest() const { return rest_; }

private:
    ByteView rest_;
    std::size_t lengthSize_;
};

/// Half of a SHA-256: far more than enough to tell frames apart, and half the memory.
using FrameKey = std::array<std::uint8_t, 16>;
FrameKey keyOf(const FrameDigest& digest);

using ParameterSets = std::set<FrameKey>;
/// Zeros behind a set mean nothing, and some programs drop them.
FrameKey parameterSetKey(ByteView unit);
/// The sets of an `avcC` or `hvcC` record. Nothing for what is no such record.
std::optional<ParameterSets> parameterSetsOf(NALFormat::Codec codec, ByteView record);

/// As lengthSize of a track, from such a record.
std::size_t recordLengthSize(NALFormat::Codec codec, ByteView record);

}  // namespace marlet::ConvertVerify
