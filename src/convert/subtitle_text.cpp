#include "convert/subtitle_text.h"

#include <algorithm>

#include "convert/line_ends.h"
#include "foundation/text.h"

namespace marlet::SubtitleText {

namespace {

constexpr std::int64_t nsPerMs = 1'000'000;
constexpr std::int64_t lengthUnknown = 3000;
constexpr std::int64_t shortest = 100;

/// No line of a subtitle, and no subtitle of a film, is near that size: a file that says so is
/// damaged or made to hurt.
constexpr std::int64_t largestBlock = std::int64_t{4} * 1024 * 1024;
constexpr std::size_t largestTrack = std::size_t{128} * 1024 * 1024;

bool isASS(const MKVTrack& track) {
    return Text::contains(track.codecID, "ASS") || Text::contains(track.codecID, "SSA");
}

bool isTooLarge(const MKVBlock& block) {
    std::int64_t left = largestBlock;
    for (const MKVBlock::Frame& frame : block.frames) {
        if (frame.size > left) return true;
        left -= frame.size;
    }
    return false;
}

std::int64_t lengthMs(const MKVBlock& block) {
    const std::int64_t length =
        block.durationNs ? static_cast<std::int64_t>(*block.durationNs / nsPerMs) : lengthUnknown;
    return std::max(length, shortest);
}

}  // namespace

std::vector<Cue> cues(const MKVFile& mkv, const MKVTrack& track) {
    const bool ass = isASS(track);
    std::vector<Cue> cues;
    std::size_t bytes = 0;
    mkv.forEachBlock(std::set{track.number}, {}, [&](const MKVBlock& block) {
        if (isTooLarge(block)) return true;
        const std::int64_t start = block.timeNs / nsPerMs;
        for (const Bytes& frame : mkv.data(block)) {
            const std::string line = Text::repairUtf8(frame);
            std::string text = Text::trim(LineEnds::even(ass ? assText(line) : line));
            if (text.empty()) continue;
            bytes += text.size() + sizeof(Cue);
            cues.push_back({start, start + lengthMs(block), std::move(text)});
        }
        return bytes < largestTrack;
    });
    std::ranges::stable_sort(cues, {}, &Cue::startMs);
    return cues;
}

std::string decode(ByteView bytes) {
    return Text::decodeFile(bytes);
}

}  // namespace marlet::SubtitleText
