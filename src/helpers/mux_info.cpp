#include "helpers/mux_info.h"

#include <array>
#include <cstdio>

#include "matroska/mkv_file.h"
#include "mp4/box.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"

namespace marlet::MuxInfo {

namespace {

template <typename... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 256> line{};
    std::snprintf(line.data(), line.size(), format, values...);
    return line.data();
}

std::string describe(const Track& track) {
    const std::string codec = track.codec.empty() ? "----" : track.codec;
    return formatted("Track %u: %s, %s, %s, %zu samples in %zu chunks", track.id,
                     track.handler.c_str(), codec.c_str(), track.language.c_str(),
                     track.sizes.size(), track.chunks.size()) +
           ((track.tkhdFlags & 1) != 0 ? "" : ", disabled") + "\n";
}

const char* kindOf(const MKVTrack& track) {
    switch (track.type) {
        case 1:
            return "Video";
        case 2:
            return "Audio";
        case 17:
            return "Text";
        default:
            return "Other";
    }
}

std::string describe(const MKVFile& file) {
    std::string text = formatted("File has %zu tracks\nDuration: %.3f s\n", file.tracks().size(),
                                 file.durationSeconds().value_or(0));
    for (const MKVTrack& track : file.tracks()) {
        // The text comes from the file; one that holds a line feed could pose as another track.
        std::string codec = track.codecID;
        std::erase_if(codec, [](char c) { return static_cast<unsigned char>(c) < ' '; });
        text +=
            formatted("- Track %d type: %s - Codec ", track.number, kindOf(track)) + codec + "\n";
    }
    return text;
}

}  // namespace

std::string text(const std::filesystem::path& file) {
    if (const auto matroska = MKVFile::open(file)) return describe(*matroska);
    const Bytes moov = loadMoov(file);
    const double layout = measure(parseSummary(moov, file, Detail::No));
    const MP4Summary summary = parseSummary(moov, file, Detail::Yes);
    std::string text = formatted("Duration: %.3f s\nSound layout: %.2f s (%s)\n", summary.duration,
                                 layout, layout > soundLayoutLimit ? "too long" : "fine");
    for (const Track& track : summary.tracks) text += describe(track);
    return text;
}

}  // namespace marlet::MuxInfo
