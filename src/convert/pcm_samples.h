#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"

namespace marlet::AudioConvert {

/// Uncompressed sound as Matroska keeps it (A_PCM/INT/LIT, A_PCM/INT/BIG, A_PCM/FLOAT/IEEE).
struct PCMFormat {
    bool isFloat = false;
    bool isBigEndian = false;
    int bytes = 0;  ///< a sample: 1 to 8; floats have 4 or 8. A single byte is unsigned

    bool operator==(const PCMFormat&) const = default;
};

/// Nothing for a codec that isn't one of them, or a bit depth that it can't have.
std::optional<PCMFormat> pcmFormat(const MKVTrack& track);

/// Appends the whole samples of `bytes`, each scaled to 32 bits. Floats beyond 1 are held there;
/// what is no number becomes silence.
void decodePCM(ByteView bytes, const PCMFormat& format, std::vector<std::int32_t>& out);

/// To fewer bits, the nearest that there is.
std::int32_t narrowed(std::int32_t sample, int bits);

}  // namespace marlet::AudioConvert
