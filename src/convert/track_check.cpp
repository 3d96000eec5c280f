#include <map>
#include <string>

#include "convert/build_step.h"
#include "convert/convert_wording.h"
#include "foundation/errors.h"
#include "foundation/text.h"
#include "foundation/tool_runner.h"

namespace marlet::Converter {

namespace {

/// The kind of each track by its number, from lines such as "- Track 2 type: Audio - Codec AAC".
std::map<int, std::string> listedKinds(const std::string& listing) {
    static const Regex line(R"(Track (\d+) type: (\w+))");
    std::map<int, std::string> kinds;
    for (const std::string& each : Text::words(listing, '\n')) {
        const auto match = line.firstMatch(each);
        if (!match) continue;
        if (const auto number = Text::integer(match->groups[0])) kinds[*number] = match->groups[1];
    }
    return kinds;
}

void expectKind(const std::map<int, std::string>& kinds, int track, const char* kind) {
    const auto found = kinds.find(track);
    if (found == kinds.end() || Text::startsWith(found->second, kind)) return;
    throw MFError(ConvertWording::otherKind(track, found->second));
}

}  // namespace

void checkTrackIDs(const std::filesystem::path& tool, const std::filesystem::path& link,
                   const ConvertPlanSnapshot& plan, RunControl& control) {
    const auto kinds = listedKinds(
        ToolRunner::listing(tool, {"-info", link.string()}, {.reads = {link}}, control));
    expectKind(kinds, plan.video, "Video");
    for (const ConvertPlanSnapshot::Audio& entry : plan.audio)
        expectKind(kinds, entry.track, "Audio");
}

}  // namespace marlet::Converter
