#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace marlet::AudioConvert {

/// Writes a FLAC file, for another program to read soon: speed before size. Channels stand in the
/// order of WAV files; six are L R C LFE Ls Rs (RFC 9639, 9.1.3).
class FLACWriter {
public:
    struct Format {
        int channels = 0;
        std::uint32_t sampleRate = 0;  ///< Hz
        int bits = 0;                  ///< a sample
    };
    /// Whether FLAC can hold it.
    static bool takes(const Format& format);

    /// Replaces what is there. Throws MFError "write failed: ...", as all of its steps do, and "no
    /// 5.1 layout" when the encoder refuses the format.
    FLACWriter(const std::filesystem::path& file, const Format& format);
    ~FLACWriter();
    FLACWriter(const FLACWriter&) = delete;
    FLACWriter& operator=(const FLACWriter&) = delete;

    /// Interleaved samples of the format's bits.
    void write(std::span<const std::int32_t> samples);
    void finish();

private:
    struct Encoder;
    std::unique_ptr<Encoder> encoder_;
    int channels_;
};

}  // namespace marlet::AudioConvert
