#include <charconv>
#include <functional>
#include <map>

#include "app/headless.h"
#include "foundation/text.h"

namespace marlet::Headless {

namespace {

using Taker = std::function<void(Options&, const std::string&)>;
using Flag = bool Options::*;

const std::map<std::string, Taker>& valued() {
    static const std::map<std::string, Taker> table = {
        {"--scan", [](Options& o, const std::string& value) { o.scan.push_back(value); }},
        {"--report", [](Options& o, const std::string& value) { o.report = value; }},
        {"--tag", [](Options& o, const std::string& value) { o.tag.push_back(value); }},
        {"--output-dir", [](Options& o, const std::string& value) { o.outputDir = value; }},
        {"--audio-test", [](Options& o, const std::string& value) { o.audioTest = value; }},
        {"--mkv-in", [](Options& o, const std::string& value) { o.mkvIn = value; }},
        {"--drop", [](Options& o, const std::string& value) { o.drop.push_back(value); }},
        {"--confirm", [](Options& o, const std::string& value) { o.confirm.push_back(value); }},
    };
    return table;
}

const std::map<std::string, Flag>& flags() {
    static const std::map<std::string, Flag> table = {
        {"--confirm-all", &Options::confirmAll},
        {"--ignore-tags", &Options::ignoreTags},
        {"--no-ai", &Options::noAI},
        {"--no-fix", &Options::noFix},
        {"--restore-original", &Options::restoreOriginal},
        {"--restore-last-batch", &Options::restoreLastBatch},
        {"--quit", &Options::quit},
        {"--trace", &Options::trace},
        {"--progress", &Options::progress},
        {"--plan-test", &Options::planTest},
        {"--plan-only", &Options::planOnly},
        {"--art-report", &Options::artReport},
        {"--match-only", &Options::matchOnly},
        {"--roundtrip", &Options::roundtrip},
    };
    return table;
}

bool isOption(const std::string& argument) {
    return Text::startsWith(argument, "--");
}

}  // namespace

Options parse(const std::vector<std::string>& arguments) {
    Options options;
    bool scripted = false;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::string& argument = arguments[i];
        if (!isOption(argument)) continue;
        scripted = true;
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (const auto flag = flags().find(name); flag != flags().end()) {
            options.*(flag->second) = true;
            continue;
        }
        const auto taker = valued().find(name);
        if (taker == valued().end()) continue;
        std::string value;
        if (equals != std::string::npos)
            value = argument.substr(equals + 1);
        else if (i + 1 < arguments.size() && !Text::startsWith(arguments[i + 1], "-"))
            value = arguments[i + 1];
        // An empty value is none: every name holds the empty text, and "--confirm=" is no yes to
        // all.
        if (!value.empty()) taker->second(options, value);
    }
    if (!scripted) options.files.assign(arguments.begin(), arguments.end());
    return options;
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
