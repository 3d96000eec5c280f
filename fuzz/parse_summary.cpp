// An index of any bytes ends in a summary or in a sentence, measured or in detail.
#include <cstddef>
#include <cstdint>

#include "foundation/errors.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const ByteView moov(data, size);
    try {
        measure(parseSummary(moov, Detail::No));
    } catch (const MFError&) {
    }
    try {
        parseSummary(moov, Detail::Yes);
    } catch (const MFError&) {
    }
    return 0;
}
