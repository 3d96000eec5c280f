// Subtitle files of any bytes and any encoding: what is read from them can be written, and what was
// written reads the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "convert/subtitle_text.h"

namespace {

/// A time that the written form can hold.
bool isWritable(std::int64_t time) {
    return time >= 0 && time < std::int64_t{1'000'000} * 3'600'000;
}

bool isWritable(const marlet::Cue& cue) {
    return isWritable(cue.startMs) && isWritable(cue.endMs);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const std::string text = SubtitleText::decode(ByteView(data, size));
    SubtitleText::ms(text);
    const auto cues = SubtitleText::parseSRT(text);
    const auto again = SubtitleText::parseSRT(SubtitleText::writeSRT(cues));
    if (std::ranges::all_of(cues, [](const Cue& cue) { return isWritable(cue); }) && again != cues)
        std::abort();
    return 0;
}
