#pragma once

#include <cstdint>
#include <vector>

#include "foundation/bytes.h"

// H.264 parameter sets and decoder configuration records, made up from what they shall say.
namespace marlet::test {

/// Bits in the order in which they are added, the last byte filled up with zeros.
class BitWriter {
public:
    BitWriter& bit(int value);
    /// An Exp-Golomb number (ISO/IEC 14496-10, 9.1).
    BitWriter& ue(std::uint32_t value);
    const Bytes& bytes() const { return bytes_; }

private:
    Bytes bytes_;
    int used_ = 8;  ///< bits of the last byte
};

struct AVCFormat {
    std::uint8_t profile = 100;
    std::uint32_t chroma = 1;
    std::uint32_t lumaDepth = 8;
    std::uint32_t chromaDepth = 8;
};

/// A sequence parameter set with its NAL unit header, up to the bit depths and a few bits more. No
/// emulation prevention is written: sets of usual formats need none.
Bytes sequenceSet(const AVCFormat& format);

/// An `avcC` payload with these sets.
Bytes avcRecord(std::uint8_t profile, const std::vector<Bytes>& sequenceSets,
                const std::vector<Bytes>& pictureSets, const Bytes& extension = {});
/// With one sequence set of that format and one picture set.
Bytes avcRecord(const AVCFormat& format, const Bytes& extension = {});

}  // namespace marlet::test
