#include "system/film_readers.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "support/media.h"

namespace marlet::test {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

json probe(const fs::path& film, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"ffprobe", "-v", "error", "-of", "json"});
    arguments.push_back(film.string());
    return json::parse(runTool(arguments));
}

/// ffprobe writes seconds as text.
std::optional<double> seconds(const json& from, const char* key) {
    if (!from.contains(key)) return std::nullopt;
    return std::stod(from.at(key).get<std::string>());
}

json tagsOf(const json& of) {
    return of.value("tags", json::object());
}

}  // namespace

void PrintTo(const Packet& packet, std::ostream* out) {
    *out << packet.time << " (decoded " << packet.decoding.value_or(packet.time) << ", for "
         << packet.length.value_or(0) << ") " << packet.flags << ' ' << packet.hash;
}

std::vector<Packet> packetsOf(const fs::path& film, const std::string& stream) {
    const json told =
        probe(film, {"-select_streams", stream, "-show_packets", "-show_data_hash", "sha256"});
    std::vector<Packet> packets;
    for (const json& each : told.at("packets"))
        packets.push_back({.time = seconds(each, "pts_time").value(),
                           .decoding = seconds(each, "dts_time"),
                           .length = seconds(each, "duration_time"),
                           .flags = each.at("flags"),
                           .hash = each.at("data_hash")});
    return packets;
}

double startOf(const std::vector<Packet>& packets) {
    return std::ranges::min_element(packets, {}, &Packet::time)->time;
}

std::vector<Stream> streamsOf(const fs::path& film, const std::string& kind) {
    std::vector<Stream> streams;
    const json told = probe(film, {"-select_streams", kind, "-show_streams"});
    for (const json& each : told.at("streams"))
        streams.push_back({.codec = each.value("codec_name", ""),
                           .language = tagsOf(each).value("language", ""),
                           .name = tagsOf(each).value("handler_name", ""),
                           .channels = each.value("channels", 0),
                           .isDefault = each.at("disposition").at("default") == 1,
                           .duration = seconds(each, "duration").value_or(0)});
    return streams;
}

Chapters chaptersOf(const fs::path& film) {
    Chapters all;
    const json told = probe(film, {"-show_chapters"});
    for (const json& each : told.at("chapters"))
        all.emplace_back(seconds(each, "start_time").value(), tagsOf(each).value("title", ""));
    return all;
}

std::string complaintsOf(const fs::path& film, const std::vector<std::string>& streams) {
    std::string maps;
    for (const std::string& each : streams) maps += " -map 0:" + each;
    // Two things FFmpeg says of its own files, too: of each with a cover, and of each with a track
    // of chapters, which it has no decoder for. And it guesses what seven channels are.
    const std::string harmless =
        "stream 0, timescale not set|Unsupported codec with id 98314|Guessed Channel Layout|^$";
    return runTool(
        {"sh", "-c",
         "{ ffprobe -v warning \"$0\" 2>&1 >/dev/null;"
         "ffmpeg -v warning -xerror -nostdin -i \"$0\"" +
             maps +
             " -f null - 2>&1 || "
             "echo decoding failed; } | grep -vE '" +
             harmless +
             "'; if command -v mediainfo >/dev/null; then mediainfo --Output=JSON \"$0\" | "
             "grep -iE '\"(ConformanceErrors|ConformanceWarnings|IsTruncated)'; fi; :",
         film.string()});
}

}  // namespace marlet::test
