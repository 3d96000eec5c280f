#pragma once

#include <cstdint>

#include "foundation/bytes.h"

namespace marlet {

/// Takes bits off the front, the high ones first; past the end they are 0.
class BitReader {
public:
    explicit BitReader(ByteView bytes) : bytes_(bytes) {}

    std::uint32_t bits(unsigned count) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; i++) value = value << 1 | bit();
        return value;
    }
    bool flag() { return bit() != 0; }
    void skip(std::size_t count) { at_ += count; }
    /// Exp-Golomb (ISO/IEC 14496-10, 9.1).
    std::uint32_t golomb() {
        unsigned zeros = 0;
        while (zeros < 31 && !isAtEnd() && !flag()) zeros++;
        return (std::uint32_t{1} << zeros) - 1 + bits(zeros);
    }
    bool isAtEnd() const { return at_ >= bytes_.size() * 8; }

private:
    std::uint32_t bit() {
        if (isAtEnd()) return 0;
        const std::uint32_t value = bytes_[at_ / 8] >> (7 - at_ % 8) & 1U;
        at_++;
        return value;
    }

    ByteView bytes_;
    std::size_t at_ = 0;
};

}  // namespace marlet
