// The front of a Matroska file of any bytes is read or refused.
#include <cstddef>
#include <cstdint>

#include "identify/probe.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    marlet::EBML::parse(marlet::ByteView(data, size));
    return 0;
}
