#pragma once

#include <optional>
#include <string>
#include <utility>

#include "convert/plan_builder.h"
#include "convert/track_types.h"

// Track lists made by hand.
namespace marlet::test {

inline MKVTrack videoTrack(int number, const std::string& codec = "V_MPEG4/ISO/AVC") {
    return {.number = number, .type = TrackType::video, .codecID = codec};
}

inline MKVTrack soundTrack(int number, const std::string& codec, int channels,
                           const std::string& language = "eng", bool isDefault = false,
                           const std::optional<std::string>& name = {}) {
    return {.number = number,
            .type = TrackType::audio,
            .codecID = codec,
            .language = language,
            .name = name,
            .isDefault = isDefault,
            .channels = channels,
            .sampleRate = 48000};
}

inline MKVTrack subtitleTrack(int number, const std::string& codec,
                              const std::string& language = "eng",
                              const std::optional<std::string>& name = {}, bool isForced = false) {
    return {.number = number,
            .type = TrackType::subtitle,
            .codecID = codec,
            .language = language,
            .name = name,
            .isDefault = false,
            .isForced = isForced};
}

/// A film with a video track ahead of the given ones.
inline PlanInput film(std::vector<MKVTrack> tracks,
                      std::vector<std::string> keepLanguages = {"eng"}) {
    tracks.insert(tracks.begin(), videoTrack(100));
    return {.source = "/films/My Movie.mkv",
            .tracks = std::move(tracks),
            .keepLanguages = std::move(keepLanguages)};
}

}  // namespace marlet::test
