#include "convert/sound_tables.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace marlet::SoundTables {

namespace {

struct Codec {
    std::string_view start;  ///< of the codec id
    const char* name;
    int rank = 1;
    bool canCopy = false;
};

constexpr std::array codecs{
    Codec{"A_TRUEHD", "TrueHD", 6}, Codec{"A_EAC3", "E-AC3", 4, true},
    Codec{"A_AC3", "AC3", 3, true}, Codec{"A_DTS", "DTS", 5},
    Codec{"A_AAC", "AAC", 2, true}, Codec{"A_FLAC", "FLAC", 5},
    Codec{"A_OPUS", "Opus", 2},     Codec{"A_VORBIS", "Vorbis"},
    Codec{"A_PCM", "PCM"},          Codec{"A_MPEG/L3", "MP3"},
};

const Codec* find(const std::string& codecID) {
    const auto* const found = std::ranges::find_if(
        codecs, [&](const Codec& codec) { return codecID.starts_with(codec.start); });
    return found == codecs.end() ? nullptr : found;
}

}  // namespace

std::string codecName(const std::string& codecID) {
    const Codec* const codec = find(codecID);
    return codec == nullptr ? codecID : codec->name;
}

int quality(const MKVTrack& track) {
    constexpr int weight = 100;
    const Codec* const codec = find(track.codecID);
    // A count from a damaged file must not outweigh the codec, nor overflow.
    return (codec == nullptr ? 1 : codec->rank) * weight + std::clamp(channels(track), 0, weight);
}

std::string channelWords(int channels) {
    if (channels >= 8) return "Surround 7.1";
    if (channels >= 6) return "Surround 5.1";
    if (channels == 1) return "Mono";
    if (channels == 0 || channels == 2) return "Stereo";
    return std::to_string(channels) + " channels";
}

int channels(const MKVTrack& track) {
    return track.channels == 0 ? 1 : track.channels;
}

bool canCopy(const std::string& codecID) {
    const Codec* const codec = find(codecID);
    return codec != nullptr && codec->canCopy;
}

}  // namespace marlet::SoundTables
