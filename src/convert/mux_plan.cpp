#include "convert/mux_plan.h"

#include <algorithm>

#include "foundation/text.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

/// A command line has an end; a track's name in a hostile file hasn't.
constexpr std::size_t longestName = 255;  // characters

std::string argument(const MuxTrack& track) {
    std::string text = track.file.string();
    if (track.number) text += "#" + std::to_string(*track.number);
    if (!track.language.empty()) text += ":lang=" + track.language;
    if (track.name) text += ":name=" + *track.name;
    if (track.group == MuxTrack::Group::subtitles) text += ":hdlr=sbtl";
    if (track.isForced) text += ":txtflags=0x40000000";
    if (track.group != MuxTrack::Group::none)
        text += ":group=" + std::to_string(static_cast<int>(track.group));
    if (!track.isEnabled) text += ":disable";
    if (track.delayMs > 0) text += ":delay=" + std::to_string(track.delayMs);
    return text;
}

bool isControl(char each) {
    return static_cast<unsigned char>(each) < 0x20 || each == 0x7F;
}

}  // namespace

std::vector<std::string> MuxPlan::arguments() const {
    std::vector<std::string> list = {"-tmp", scratch.string()};
    for (const MuxTrack& track : tracks) {
        list.push_back("-add");
        list.push_back(argument(track));
    }
    if (chapters) list.insert(list.end(), {"-chap", chapters->string()});
    list.insert(list.end(), {"-inter", std::to_string(slice), "-moovpad", std::to_string(pad),
                             "-new", output.string()});
    return list;
}

std::vector<fs::path> MuxPlan::inputs() const {
    std::vector<fs::path> files;
    for (const MuxTrack& track : tracks)
        if (std::ranges::find(files, track.file) == files.end()) files.push_back(track.file);
    if (chapters) files.push_back(*chapters);
    return files;
}

std::string muxName(std::string name) {
    std::ranges::replace_if(name, isControl, ' ');
    name = Text::replaceAll(std::move(name), ":", " -");
    name = Text::replaceAll(std::move(name), "\"", "");
    name = Text::replaceAll(std::move(name), "+", "＋");
    return Text::firstCharacters(name, longestName);
}

}  // namespace marlet
