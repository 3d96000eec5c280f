#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace marlet {

/// One track of a film that is to be built: where it comes from, and what its headers shall say.
/// What is not given stays as the source has it.
struct TrackRequest {
    std::filesystem::path file;
    std::optional<std::uint32_t> track;  ///< its number in the file; nothing: the only one
    std::optional<std::string> language;
    std::optional<std::string> name;
    std::optional<std::string> handler;
    std::optional<std::uint32_t> textFlags;  ///< display flags of a subtitle (3GPP TS 26.245)
    std::optional<std::uint16_t> group;      ///< alternate group
    bool disabled = false;
    std::uint32_t delayMs = 0;  ///< by how much it starts late
    bool operator==(const TrackRequest&) const = default;
};

namespace TrackRequests {

/// Reads "FILE[#TRACK][:lang=L][:name=N][:hdlr=H][:txtflags=F][:group=G][:disable][:delay=MS]", the
/// options in any order, each once. It is read from its end, so that the path and a name may hold
/// "#", "=" and "/", and the path ":" too; only a path whose own end reads like an option can't be
/// told. MFError for anything else.
TrackRequest parse(const std::string& argument);

}  // namespace TrackRequests
}  // namespace marlet
