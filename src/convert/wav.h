#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "foundation/bytes.h"

namespace marlet::AudioConvert {

/// What the header of a WAV file says.
struct WAV {
    int channels = 0;
    double sampleRate = 0;  ///< Hz
    int bits = 0;           ///< a sample
    bool isFloat = false;
    std::int64_t dataOffset = 0;
    std::int64_t dataSize = 0;  ///< bytes, never beyond the file's end
    bool operator==(const WAV&) const = default;
};

/// Throws MFError "the decoded sound isn't a readable WAV file".
WAV readWAVHeader(const std::filesystem::path& file);

/// Whether samples of that format can be decoded: 16, 24 or 32 bits, at least one channel.
bool isDecodable(const WAV& wav);
/// Little-endian samples as -1 to 1 (32-bit floats as they stand), as many as `out` has room for
/// and `bytes` hold. Gives their number. The format must be decodable.
std::size_t decodeSamples(ByteView bytes, const WAV& wav, std::span<float> out);

}  // namespace marlet::AudioConvert
