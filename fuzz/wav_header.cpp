// A WAV file of any bytes is read or refused, and what it says lies in the file.
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "convert/mix_matrix.h"
#include "convert/wav.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace {

using namespace marlet;

void decodeAndMix(ByteView data, const AudioConvert::WAV& wav) {
    std::array<float, 4096> decoded{};
    const auto count = AudioConvert::decodeSamples(data, wav, decoded);
    const AudioConvert::Mix mix(wav.channels);
    std::array<float, 1024> mixed{};
    for (std::size_t row = 0; row < mix.outputs(); row++) {
        mix.run(std::span<const float>(decoded).first(count), row, mixed);
        AudioConvert::peak(mixed);
    }
}

void read(ByteView bytes, int fd) {
    const auto wav = AudioConvert::readWAVHeader("/proc/self/fd/" + std::to_string(fd));
    const auto size = static_cast<std::int64_t>(bytes.size());
    if (wav.dataSize < 0 || wav.dataOffset > size || wav.dataSize > size - wav.dataOffset)
        std::abort();
    if (AudioConvert::isDecodable(wav))
        decodeAndMix(slice(bytes, wav.dataOffset, wav.dataOffset + wav.dataSize), wav);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    const FileHandle file(memfd_create("wav", MFD_CLOEXEC));
    FileOps::writeAll(file.get(), bytes, 0);
    try {
        read(bytes, file.get());
    } catch (const MFError&) {
    }
    return 0;
}
