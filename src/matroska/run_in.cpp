#include "matroska/run_in.h"

#include <algorithm>
#include <string_view>

namespace marlet::RunIn {

namespace {

/// Some thousand samples are usual; more than a second is a lie.
std::int64_t lengthNs(const MKVTrack& track) {
    constexpr int sound = 2;
    constexpr std::uint64_t longest = 1'000'000'000;
    const bool isTold = track.type == sound && track.codecDelayNs <= longest;
    return isTold ? static_cast<std::int64_t>(track.codecDelayNs) : 0;
}

/// Opus tells it in its own header, too, and its decoders leave all of it out by themselves
/// (RFC 7845, 4.2).
bool isLeftOutByDecoders(const MKVTrack& track) {
    return std::string_view(track.codecID).starts_with("A_OPUS");
}

}  // namespace

Start of(const MKVTrack& track, std::int64_t firstNs) {
    const std::int64_t length = lengthNs(track);
    if (isLeftOutByDecoders(track)) return {firstNs, length};
    // A track that itself begins before 0 keeps that distance.
    const std::int64_t earliest = std::min<std::int64_t>(firstNs, 0);
    const std::int64_t heard = std::max(firstNs - length, earliest);
    return {heard, length - (firstNs - heard)};
}

}  // namespace marlet::RunIn
