#include "helpers/mux_info.h"

#include <array>
#include <cstdio>

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

}  // namespace

std::string text(const std::filesystem::path& file) {
    const Bytes moov = loadMoov(file);
    const double layout = measure(parseSummary(moov, file, Detail::No));
    const MP4Summary summary = parseSummary(moov, file, Detail::Yes);
    std::string text = formatted("Duration: %.3f s\nSound layout: %.2f s (%s)\n", summary.duration,
                                 layout, layout > soundLayoutLimit ? "too long" : "fine");
    for (const Track& track : summary.tracks) text += describe(track);
    return text;
}

}  // namespace marlet::MuxInfo
