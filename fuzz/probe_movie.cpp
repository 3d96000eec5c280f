// What the probe says about an index of any bytes.
#include <cstddef>
#include <cstdint>

#include "identify/probe_movie.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    marlet::ScannedFile file;
    marlet::Probe::readMovie(marlet::ByteView(data, size), file);
    return 0;
}
