#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

/// What Marlet asks of GPAC's `gpac`, done by FFmpeg's `ffmpeg`.
namespace marlet::SoundCommand {

enum class Kind {
    decode,    ///< to WAV of 16 bits
    resample,  ///< the same, at 48 kHz
    ac3,       ///< from FLAC, 640 kbit/s
    aac,       ///< from WAV, 192 kbit/s
    aacMono,   ///< from WAV, 128 kbit/s
};

struct Command {
    Kind kind = Kind::decode;
    std::filesystem::path input;
    std::filesystem::path output;
    bool operator==(const Command&) const = default;
};

/// The command lines of gpac that Marlet uses, and no others:
///   -i IN ffdec resample:osfmt=s16[:osr=48000] -o OUT
///   -i IN ffdec ffenc:c=ac3:b=640k -o OUT
///   -i IN ffenc:c=aac:b=192k -o OUT:store=flat
///   -i IN ffenc:c=aac:b=128k -o OUT:store=flat
/// Every place has one meaning, so that a path is never read as an option. Anything else is an
/// MFError that says so.
Command parse(std::span<const std::string> arguments);

/// The arguments of ffmpeg that come to the same. It opens no other file, whatever the input says.
std::vector<std::string> forFFmpeg(const Command& command);

}  // namespace marlet::SoundCommand
