#pragma once

#include <cstdint>
#include <filesystem>

#include "convert/wav.h"
#include "foundation/bytes.h"
#include "foundation/syscalls.h"

namespace marlet::AudioConvert {

/// Reads a WAV file's sound from its beginning, a piece at a time, whatever its length.
class WAVPieces {
public:
    /// `frames` is what a piece holds. The format must have channels and whole bytes.
    WAVPieces(const std::filesystem::path& file, const WAV& wav, std::size_t frames);

    /// The next whole frames, fewer than asked at the end; empty behind it. Lives until the next
    /// call. Throws MFError "read failed: ...".
    ByteView next();
    /// Of the sound, so far: 0 to 1.
    double done() const;

private:
    FileHandle file_;
    WAV wav_;
    std::size_t frameSize_;
    Bytes buffer_;
    std::int64_t at_ = 0;  // behind the sound's beginning
};

}  // namespace marlet::AudioConvert
