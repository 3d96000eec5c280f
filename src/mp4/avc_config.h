#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/bytes.h"

namespace marlet {

/// Reads the bits of an H.264 parameter set (ISO/IEC 14496-10, 7.2 and 9.1). Its emulation
/// prevention bytes (7.4.1.1) are taken out first.
class SPSBits {
public:
    explicit SPSBits(ByteView bytes);

    /// One bit; past the end 0, and the position stays.
    int bit();
    /// One Exp-Golomb number. Bits past the end read as 0, and at most 32 leading zeros are
    /// counted, so that any bytes give a number.
    std::uint64_t ue();
    /// Whether anything was read that isn't there, or that no encoder writes.
    bool isBad() const { return isBad_; }

private:
    bool atEnd() const { return position_ >= bytes_.size() * 8; }

    Bytes bytes_;
    std::size_t position_ = 0;  ///< in bits
    bool isBad_ = false;
};

/// The AVC decoder configuration record, payload of `avcC` (ISO/IEC 14496-15, 5.3.3.1).
namespace AVCConfig {

/// Bits a luma sample of the record's first sequence parameter set. Nothing for what is no such
/// record or holds no whole set.
std::optional<std::int64_t> bitDepth(ByteView record);

/// What a sequence parameter set says of its pictures' samples (ISO/IEC 14496-10, 7.3.2.1.1).
struct SampleFormat {
    std::uint64_t chromaFormat = 1;  ///< 0 monochrome, 1 4:2:0, 2 4:2:2, 3 4:4:4
    std::uint64_t lumaDepth = 8;     ///< bits
    std::uint64_t chromaDepth = 8;   ///< bits
    bool operator==(const SampleFormat&) const = default;
};

/// From a set with its NAL unit header. Nothing when the set is cut, or is of a profile whose sets
/// don't say it.
std::optional<SampleFormat> sampleFormat(ByteView parameterSet);

}  // namespace AVCConfig
}  // namespace marlet
