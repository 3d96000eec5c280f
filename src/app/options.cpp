#include <charconv>
#include <map>
#include <variant>

#include "app/headless.h"
#include "foundation/text.h"

namespace marlet::Headless {

namespace {

using Flag = bool Options::*;
using One = std::optional<std::filesystem::path> Options::*;
using Paths = std::vector<std::filesystem::path> Options::*;
using Texts = std::vector<std::string> Options::*;
using ShotFlag = bool ShotOptions::*;
using ShotPath = std::optional<std::filesystem::path> ShotOptions::*;
using ShotText = std::optional<std::string> ShotOptions::*;
/// Where an option puts what it was given.
using Target = std::variant<Flag, One, Paths, Texts, ShotFlag, ShotPath, ShotText>;

const std::map<std::string, Target>& targets() {
    static const std::map<std::string, Target> table = {
        {"--scan", &Options::scan},
        {"--report", &Options::report},
        {"--tag", &Options::tag},
        {"--output-dir", &Options::outputDir},
        {"--virtual", &Options::virtualMap},
        {"--playable", &Options::playable},
        {"--audio-test", &Options::audioTest},
        {"--mkv-in", &Options::mkvIn},
        {"--history-csv", &Options::historyCsv},
        {"--drop", &Options::drop},
        {"--confirm", &Options::confirm},
        {"--confirm-all", &Options::confirmAll},
        {"--ignore-tags", &Options::ignoreTags},
        {"--no-ai", &Options::noAI},
        {"--no-fix", &Options::noFix},
        {"--restore-original", &Options::restoreOriginal},
        {"--restore-last-batch", &Options::restoreLastBatch},
        {"--test-key", &Options::testKey},
        {"--quit", &Options::quit},
        {"--trace", &Options::trace},
        {"--progress", &Options::progress},
        {"--plan-test", &Options::planTest},
        {"--plan-only", &Options::planOnly},
        {"--art-report", &Options::artReport},
        {"--match-only", &Options::matchOnly},
        {"--roundtrip", &Options::roundtrip},
        {"--json", &Options::json},
        {"--strict-exit", &Options::strictExit},
        {"--snapshots", &ShotOptions::snapshots},
        {"--shots", &ShotOptions::shots},
        {"--website-shots", &ShotOptions::websiteShots},
        {"--poster-picks", &ShotOptions::posterPicks},
        {"--picker-demo", &ShotOptions::pickerDemo},
        {"--empty-shots", &ShotOptions::emptyShots},
        {"--snapshot-about", &ShotOptions::about},
        {"--snapshot-about-window", &ShotOptions::aboutWindow},
        {"--review", &ShotOptions::review},
        {"--window", &ShotOptions::window},
        {"--select", &ShotOptions::select},
        {"--inspect-file", &ShotOptions::inspectFile},
        {"--shots-only", &ShotOptions::shotsOnly},
        {"--sample-failure", &ShotOptions::sampleFailure},
        {"--keep-open", &ShotOptions::keepOpen},
        {"--shot-watcher", &ShotOptions::watcher},
    };
    return table;
}

bool isOption(const std::string& argument) {
    return Text::startsWith(argument, "--");
}

struct Put {
    Options& options;
    const std::string& value;
    void operator()(Flag flag) const { options.*flag = true; }
    // An empty value is none: every name holds the empty text, and "--confirm=" is no yes to all.
    void operator()(One one) const {
        if (!value.empty()) options.*one = value;
    }
    void operator()(ShotFlag flag) const { options.shots.*flag = true; }
    void operator()(ShotPath one) const {
        if (!value.empty()) options.shots.*one = value;
    }
    void operator()(ShotText one) const {
        if (!value.empty()) options.shots.*one = value;
    }
    template <typename List>
    void operator()(List Options::*list) const {
        if (!value.empty()) (options.*list).emplace_back(value);
    }
};

}  // namespace

Options parse(const std::vector<std::string>& arguments) {
    Options options;
    bool scripted = false;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::string& argument = arguments[i];
        if (!isOption(argument)) continue;
        scripted = true;
        const std::size_t equals = argument.find('=');
        const auto target = targets().find(argument.substr(0, equals));
        if (target == targets().end()) continue;
        std::string value;
        if (equals != std::string::npos)
            value = argument.substr(equals + 1);
        else if (i + 1 < arguments.size() && !Text::startsWith(arguments[i + 1], "-"))
            value = arguments[i + 1];
        std::visit(Put{options, value}, target->second);
    }
    if (!scripted) options.files.assign(arguments.begin(), arguments.end());
    return options;
}

std::vector<std::string> optionNames() {
    std::vector<std::string> names;
    for (const auto& [name, target] : targets()) names.push_back(name);
    return names;
}

std::optional<Drop> parseDrop(const std::string& value) {
    const std::size_t colon = value.rfind(':');
    if (colon == std::string::npos || colon == 0) return std::nullopt;
    Drop drop{value.substr(0, colon), {}};
    for (const std::string& piece : Text::split(value.substr(colon + 1), ',')) {
        int number = 0;
        const char* end = piece.data() + piece.size();
        const auto [stopped, failed] = std::from_chars(piece.data(), end, number);
        if (failed != std::errc() || stopped != end || number < 0) return std::nullopt;
        drop.tracks.push_back(number);
    }
    return drop;
}

std::optional<std::string> value(const std::string& option,
                                 const std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::size_t equals = arguments[i].find('=');
        if (arguments[i].substr(0, equals) != option) continue;
        if (equals != std::string::npos) return arguments[i].substr(equals + 1);
        if (i + 1 < arguments.size()) return arguments[i + 1];
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace marlet::Headless
