#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

// What FFmpeg reads from a film. Streams are named as it counts them: "a:1" is the second sound.
namespace marlet::test {

/// Times in seconds, as a player has them.
struct Packet {
    double time = 0;                 ///< when it is shown
    std::optional<double> decoding;  ///< when it is decoded, where that is told
    std::optional<double> length;
    std::string flags;
    std::string hash;  ///< SHA-256 of its bytes

    /// Whether decoding can start here.
    bool isKeyframe() const { return flags.starts_with("K"); }
    bool operator==(const Packet&) const = default;
};
void PrintTo(const Packet& packet, std::ostream* out);

/// In the order of the file.
std::vector<Packet> packetsOf(const std::filesystem::path& film, const std::string& stream);
/// The earliest time of them.
double startOf(const std::vector<Packet>& packets);

struct Stream {
    std::string codec;
    std::string language;  ///< ISO 639-2
    std::string name;
    int channels = 0;
    bool isDefault = false;
    double duration = 0;  ///< in seconds
};
/// Those of a kind: "a", "s" or "v".
std::vector<Stream> streamsOf(const std::filesystem::path& film, const std::string& kind);

/// Seconds and titles.
using Chapters = std::vector<std::pair<double, std::string>>;
Chapters chaptersOf(const std::filesystem::path& film);

/// What FFmpeg and, where it is installed, MediaInfo have to say against a film: nothing, of a
/// good one. FFmpeg decodes picture and sound, or what is named, to their ends and stops at the
/// first error; it has to find some of each.
std::string complaintsOf(const std::filesystem::path& film,
                         const std::vector<std::string>& streams = {"v", "a"});

}  // namespace marlet::test
