// A decoder configuration record of any bytes, and a parameter set of any bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "mp4/avc_config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const ByteView bytes(data, size);
    if (AVCConfig::bitDepth(bytes).value_or(8) < 8) std::abort();
    AVCConfig::sampleFormat(bytes);
    SPSBits bits(bytes);
    for (std::size_t i = 0; i <= size && !bits.isBad(); i++) bits.ue();
    return 0;
}
