#include "sources/source_settings.h"

#include <algorithm>

#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"
#include "sources/key_store.h"

namespace marlet::SourceSettings {
namespace {

constexpr SourceID allSources[] = {SourceID::appleTV, SourceID::tmdb, SourceID::itunes};

std::vector<SourceID> known(const std::vector<std::string>& names) {
    std::vector<SourceID> result;
    for (const std::string& name : names) {
        if (const auto id = sourceFromRaw(name)) result.push_back(*id);
    }
    return result;
}

}  // namespace

std::vector<SourceID> normalised(const std::vector<SourceID>& list) {
    std::vector<SourceID> result;
    const auto add = [&result](SourceID id) {
        if (std::find(result.begin(), result.end(), id) == result.end()) result.push_back(id);
    };
    for (const SourceID id : list) add(id);
    for (const SourceID id : allSources) add(id);
    return result;
}

std::vector<SourceID> order() {
    const auto stored = Preferences::current().texts("sourceOrder");
    return normalised(known(stored.value_or(std::vector<std::string>())));
}

void setOrder(const std::vector<SourceID>& list) {
    std::vector<std::string> names;
    for (const SourceID id : list) names.push_back(rawValue(id));
    Preferences::current().setTexts("sourceOrder", names);
}

std::vector<SourceID> active() {
    if (const auto pinned = testSources()) return *pinned;
    const bool off = Preferences::current().boolean("sourceOn.appleTV") == false;
    // A script must not hit an unofficial service by accident.
    const bool unattended = KeyStore::automated() && !allowAppleTVInTests();
    std::vector<SourceID> result = order();
    if (off || unattended) std::erase(result, SourceID::appleTV);
    return result;
}

std::optional<std::vector<SourceID>> testSources() {
    constexpr std::string_view option = "--sources=";
    for (const std::string& argument : RunMode::arguments()) {
        if (!Text::startsWith(argument, option)) continue;
        return known(Text::words(argument.substr(option.size()), ','));
    }
    return std::nullopt;
}

bool allowAppleTVInTests() {
    return RunMode::hasArgument("--apple-tv");
}

}  // namespace marlet::SourceSettings
