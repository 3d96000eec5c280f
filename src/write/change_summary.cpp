#include "write/change_summary.h"

#include <optional>
#include <set>

#include "foundation/format_bytes.h"
#include "foundation/text.h"

namespace marlet::ChangeSummary {

const std::map<std::string, std::string> labels = {
    {"©nam", "title"},
    {"©ART", "director"},
    {"©wrt", "writer"},
    {"©gen", "genre"},
    {"©day", "release date"},
    {"desc", "description"},
    {"ldes", "long description"},
    {"stik", "media kind"},
    {"tvsh", "show"},
    {"tvsn", "season"},
    {"tves", "episode"},
    {"©alb", "album"},
    {"aART", "album artist"},
    {"trkn", "track number"},
    {"iTunEXTC", "content rating"},
    {"iTunMOVI", "cast and crew"},
};

namespace {

// Characters: a longer value is cut so that one change stays one line.
constexpr std::size_t longestValue = 60;
constexpr std::size_t shownOfLonger = 57;

using ByKey = std::map<std::string, const Atom*>;

/// By type, or by name for freeform items; the first item of a key wins.
ByKey byKey(const std::vector<Atom>& atoms) {
    ByKey result;
    for (const Atom& atom : atoms)
        result.try_emplace(IlstEditor::freeformName(atom).value_or(atom.name), &atom);
    return result;
}

const Atom* atomOf(const ByKey& atoms, const std::string& key) {
    const auto found = atoms.find(key);
    return found == atoms.end() ? nullptr : found->second;
}

std::string sizeInWords(const Atom* atom) {
    return atom == nullptr ? "none" : formatBytes(static_cast<std::int64_t>(atom->bytes.size()));
}

std::string value(const std::string& key, const Atom* atom) {
    if (atom == nullptr) return "none";
    const std::string text = IlstEditor::textValue(*atom).value_or("");
    if (key == "iTunEXTC") return text;
    if (text.empty()) return "(set)";
    if (Text::characterCount(text) <= longestValue) return text;
    return Text::firstCharacters(text, shownOfLonger) + "…";
}

std::optional<std::string> change(const std::string& key, const Atom* old, const Atom* fresh) {
    if (key == "covr") return "cover art: " + sizeInWords(old) + " → " + sizeInWords(fresh);
    const auto label = labels.find(key);
    if (label == labels.end()) return std::nullopt;
    if (key == "iTunMOVI") return label->second + " updated";
    if (key == "desc" || key == "ldes") return label->second + " changed";
    return label->second + ": " + value(key, old) + " → " + value(key, fresh);
}

}  // namespace

std::vector<std::string> describe(const std::vector<Atom>& old, const std::vector<Atom>& fresh) {
    const ByKey before = byKey(old);
    const ByKey after = byKey(fresh);
    std::set<std::string> keys;
    for (const auto& [key, atom] : before) keys.insert(key);
    for (const auto& [key, atom] : after) keys.insert(key);

    std::vector<std::string> changes;
    for (const std::string& key : keys) {
        const Atom* was = atomOf(before, key);
        const Atom* is = atomOf(after, key);
        if (was != nullptr && is != nullptr && *was == *is) continue;
        if (auto text = change(key, was, is)) changes.push_back(std::move(*text));
    }
    return changes;
}

}  // namespace marlet::ChangeSummary
