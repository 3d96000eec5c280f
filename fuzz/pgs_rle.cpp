// Run lengths of any bytes give a picture of just the size that was asked for, and nothing beyond
// what they say that they reach. The first four bytes are the size.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "convert/pgs_parser.h"
#include "convert/pgs_runs.h"

namespace {

void check(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const ByteView input(data, size);
    if (size < 4) return 0;
    const int width = BigEndian::u16(input, 0);
    const int height = BigEndian::u16(input, 2);
    const ByteView runs = input.subspan(4);

    const auto extent = PGSRuns::extent(runs, width, height);
    check(extent.columns <= width && extent.rows <= height);
    check((extent.columns == 0) == (extent.rows == 0));
    // Larger ones take the same way, only longer.
    constexpr std::size_t most = std::size_t{1} << 14;
    const std::size_t area = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (area > most && area <= PGSParser::mostPixels) return 0;

    const Bytes pixels = PGSParser::decodeRLE(runs, width, height);
    check(pixels.size() == (area > PGSParser::mostPixels ? 0 : area));
    const auto wide = static_cast<std::size_t>(width);
    for (std::size_t at = 0; at < pixels.size(); at++) {
        const bool isReached = at % wide < static_cast<std::size_t>(extent.columns) &&
                               at / wide < static_cast<std::size_t>(extent.rows);
        check(pixels[at] == 0 || isReached);
    }
    return 0;
}
