#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "foundation/bytes.h"
#include "foundation/syscalls.h"

namespace marlet::AudioConvert {

/// Writes a WAV file of 16-bit samples. Every failure is MFError "write failed: ...".
class WAVWriter {
public:
    /// Replaces what is there.
    WAVWriter(const std::filesystem::path& file, int channels, std::uint32_t sampleRate);

    /// Interleaved samples.
    void write(std::span<const std::int16_t> samples);
    /// Writes the header, with the sizes in it. More than 4 GiB can't be told: readers then take
    /// all to the file's end.
    void finish();

private:
    Bytes header() const;

    FileHandle file_;
    int channels_;
    std::uint32_t sampleRate_;
    std::uint64_t at_;
};

}  // namespace marlet::AudioConvert
