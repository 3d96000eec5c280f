#include "sources/source.h"

#include "foundation/bytes.h"

namespace marlet {
namespace {

/// TMDB's numbers are positive and below 2^30 for long to come; with every bit from 30 up set,
/// these are all negative and never one of them.
std::int64_t pseudo(const std::string& key) {
    constexpr std::uint64_t above29 = ~((std::uint64_t{1} << 30) - 1);
    const auto low = static_cast<std::uint32_t>(stableHash(key));
    return static_cast<std::int64_t>(static_cast<std::uint32_t>(~low) | above29);
}

}  // namespace

std::uint64_t stableHash(const std::string& key) {
    std::uint64_t hash = 5381;
    for (const std::uint8_t byte : viewOf(key)) hash = hash * 33 + byte;
    return hash;
}

std::int64_t ExtShow::pseudoID() const {
    return pseudo(rawValue(source) + ":" + id);
}

std::int64_t ExtMovie::pseudoID() const {
    return pseudo(rawValue(source) + ":movie:" + id);
}

}  // namespace marlet
