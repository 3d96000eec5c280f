#include "convert/video_policy.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "mp4/avc_config.h"

namespace marlet::VideoPolicy {

namespace {

struct Refusal {
    std::string_view codec;
    bool isPrefix;
    const char* message;
};

constexpr std::array refusals{
    Refusal{"V_VP9", false, "VP9: Apple TV can't play it, and Marlet never re-encodes video"},
    Refusal{"V_AV1", false, "AV1: Apple TV can't play it, and Marlet never re-encodes video"},
    Refusal{"V_MPEG2", false,
            "MPEG-2 video: not an Apple TV format, and Marlet never re-encodes video"},
    Refusal{"V_VP8", false, "VP8: Apple TV can't play it, and Marlet never re-encodes video"},
    Refusal{"V_MS/VFW", true,
            "an old video format (Xvid, DivX or VC-1): Apple TV can't play it, and Marlet never "
            "re-encodes video"},
};

constexpr std::int64_t deepestPlayable = 8;
/// CAVLC 4:4:4 Intra, High 4:2:2, High 4:4:4 Predictive (ISO/IEC 14496-10, annex A).
constexpr std::array<std::uint8_t, 3> profilesBeyond420 = {44, 122, 244};

VideoVerdict checkAVC(ByteView configuration) {
    if (avcBitDepth(configuration).value_or(deepestPlayable) > deepestPlayable)
        return VideoVerdict::unsupported("10-bit H.264 (Hi10P): Apple TV can't play it");
    const bool isRecord = configuration.size() >= 2 && configuration[0] == 1;
    if (isRecord &&
        std::ranges::find(profilesBeyond420, configuration[1]) != profilesBeyond420.end())
        return VideoVerdict::unsupported("H.264 4:2:2 or 4:4:4: Apple TV can't play it");
    return VideoVerdict::copy();
}

/// The chroma format stands in byte 16 of the record (ISO/IEC 14496-15, 8.3.3.1).
VideoVerdict checkHEVC(ByteView configuration) {
    constexpr std::size_t shortest = 18;
    constexpr std::size_t chromaByte = 16;
    constexpr std::uint8_t chroma420 = 1;
    if (configuration.size() < shortest || (configuration[chromaByte] & 3) == chroma420)
        return VideoVerdict::copy();
    return VideoVerdict::unsupported("HEVC 4:2:2 or 4:4:4: Apple TV can't play it");
}

}  // namespace

VideoVerdict check(const MKVTrack& track) {
    if (track.codecID == "V_MPEG4/ISO/AVC") return checkAVC(track.codecPrivate);
    if (track.codecID == "V_MPEGH/ISO/HEVC") return checkHEVC(track.codecPrivate);
    for (const Refusal& refusal : refusals) {
        if (refusal.isPrefix ? track.codecID.starts_with(refusal.codec)
                             : track.codecID == refusal.codec)
            return VideoVerdict::unsupported(refusal.message);
    }
    return VideoVerdict::unsupported(track.codecID +
                                     ": not an Apple TV format, and Marlet never re-encodes video");
}

std::optional<std::int64_t> avcBitDepth(ByteView configuration) {
    return AVCConfig::bitDepth(configuration);
}

}  // namespace marlet::VideoPolicy
