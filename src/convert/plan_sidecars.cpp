#include <algorithm>
#include <system_error>

#include "convert/plan_language.h"
#include "convert/plan_parts.h"
#include "foundation/text.h"

namespace marlet {

namespace {

namespace fs = std::filesystem;

std::string nameOf(const fs::path& file) {
    return Text::repairUtf8(viewOf(file.filename().string()));
}

/// A name as names are compared: letters with marks may be stored in one piece or in two.
std::string evenName(const std::string& name) {
    return Text::lower(Text::compose(name));
}

std::string evenBase(const fs::path& file) {
    return evenName(Text::repairUtf8(viewOf(file.stem().string())));
}

std::vector<std::string> namePieces(std::string rest) {
    for (const std::string_view divider : {"-", "_", " "})
        rest = Text::replaceAll(rest, divider, ".");
    return Text::words(rest, '.');
}

}  // namespace

namespace PlanBuilder {

std::vector<fs::path> findSidecars(const fs::path& source) {
    const std::string base = evenBase(source);
    std::vector<fs::path> sidecars;
    std::error_code error;
    const fs::path folder = source.parent_path();
    fs::directory_iterator item(folder.empty() ? "." : folder, error);
    for (; !error && item != fs::directory_iterator(); item.increment(error)) {
        const std::string name = evenName(nameOf(item->path()));
        if (!name.ends_with(".srt") || !name.starts_with(base)) continue;
        std::error_code ignored;
        if (!item->is_directory(ignored)) sidecars.push_back(folder / item->path().filename());
    }
    std::ranges::sort(sidecars, {}, [](const fs::path& path) { return path.native(); });
    return sidecars;
}

SidecarInfo sidecarInfo(const fs::path& sidecar, const std::string& base,
                        const std::string& audioLang) {
    std::string rest = evenBase(sidecar);
    const std::string front = evenName(base);
    if (rest.starts_with(front)) rest.erase(0, front.size());

    SidecarInfo info;
    std::optional<std::string> language;
    for (const std::string& piece : namePieces(rest)) {
        info.forced |= piece == "forced" || piece == "foreign";
        if (language) continue;
        language = Lang::code(piece);
        if (language == "und") language.reset();
    }
    if (!language) language = Lang::code(Lang::firstPart(audioLang));
    info.lang = language.value_or("eng");
    return info;
}

}  // namespace PlanBuilder

namespace PlanParts {

std::vector<SubChoice> sidecarSubtitles(const PlanInput& input,
                                        const std::vector<AudioChoice>& sound,
                                        const Languages& kept) {
    const auto heard = std::ranges::find_if(sound, &AudioChoice::isDefault);
    const std::string audioLang = heard == sound.end() ? "eng" : heard->track.language;
    const std::string base = Text::repairUtf8(viewOf(input.source.stem().string()));
    std::vector<SubChoice> choices;
    for (const fs::path& sidecar : input.sidecars) {
        const auto info = PlanBuilder::sidecarInfo(sidecar, base, audioLang);
        const bool isHeard = info.forced && kept.contains(info.lang);
        choices.push_back({.id = "side:" + nameOf(sidecar),
                           .sidecar = sidecar,
                           .kind = SubKind::sidecar,
                           .language = info.lang,
                           .keep = isHeard || isWanted(info.lang, input.keepLanguages),
                           .isForced = info.forced,
                           .label = info.forced ? forcedLabel(info.lang) : Lang::name(info.lang),
                           .note = "From the file " + nameOf(sidecar)});
    }
    return choices;
}

}  // namespace PlanParts
}  // namespace marlet
