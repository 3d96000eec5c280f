// A track of an MP4 in words.

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/languages.h"
#include "foundation/text.h"
#include "write/in_place_tracks.h"

namespace marlet {

namespace {

constexpr std::array<std::string_view, 3> tellingWords = {"forced", "foreign", "commentary"};

struct CodecName {
    std::string_view code;
    std::string_view name;
};

constexpr auto codecNames = std::to_array<CodecName>({
    {"mp4a", "AAC"},  {"ac-3", "AC3"},  {"ec-3", "E-AC3"},  {"ac-4", "AC4"}, {"alac", "ALAC"},
    {"fLaC", "FLAC"}, {"Opus", "Opus"}, {"mlpa", "TrueHD"}, {".mp3", "MP3"}, {"dtsc", "DTS"},
    {"dtsh", "DTS"},  {"dtsl", "DTS"},  {"dtse", "DTS"},    {"lpcm", "PCM"}, {"ipcm", "PCM"},
    {"fpcm", "PCM"},  {"sowt", "PCM"},  {"twos", "PCM"},    {"in24", "PCM"}, {"in32", "PCM"},
});

std::string codecName(const std::string& code) {
    const auto* const row = std::ranges::find(codecNames, code, &CodecName::code);
    return row != codecNames.end() ? std::string(row->name) : Text::trim(code);
}

std::vector<std::string> wordsIn(const std::string& name) {
    const std::string lowered = Text::lower(name);
    std::vector<std::string> words;
    for (const std::string_view word : tellingWords)
        if (Text::contains(lowered, word)) words.emplace_back(word);
    return words;
}

/// Our own conversions name a track by its language and layout.
bool isTold(const std::string& descriptor, const std::vector<std::string>& parts) {
    return std::ranges::find(tellingWords, Text::lower(descriptor)) != tellingWords.end() ||
           std::ranges::find(parts, descriptor) != parts.end();
}

}  // namespace

std::string InPlaceTrack::layout() const {
    if (channels == 1) return "Mono";
    if (channels == 2) return "Stereo";
    if (channels == 6 || channels == 7) return "Surround 5.1";
    if (channels >= 8) return "Surround 7.1";
    return std::to_string(channels) + " channels";
}

/// "English · Surround 5.1 · AC3", "English (commentary) · Stereo · AAC · Talk with the crew",
/// "French (forced)".
std::string InPlaceTrack::label() const {
    std::string first = Lang::name(language);
    if (const auto words = wordsIn(name); !words.empty())
        first += " (" + Text::join(words, ", ") + ")";
    std::vector<std::string> parts = {first};
    if (kind == Kind::audio) {
        if (channels > 0) parts.push_back(layout());
        if (!codec.empty()) parts.push_back(codecName(codec));
    }
    const auto more = Lang::descriptor(name, language);
    if (more && !isTold(*more, parts)) parts.push_back(*more);
    return Text::join(parts, " · ");
}

}  // namespace marlet
