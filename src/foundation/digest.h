#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// SHA-256 (FIPS 180-4) over bytes given piece by piece.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(Sha256&&) noexcept;
    Sha256& operator=(Sha256&&) noexcept;

    void update(ByteView bytes);
    /// Ends the digest: 64 lower-case hexadecimal characters.
    std::string hex();
    /// The same as 32 bytes. Begins the next digest: many short ones are made with one object.
    std::array<std::uint8_t, 32> restart();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

std::string sha256Hex(ByteView bytes);

}  // namespace marlet
