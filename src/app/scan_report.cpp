#include <cmath>
#include <cstdlib>

#include "app/headless.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/text.h"

namespace marlet::Headless {

namespace {

/// A name may hold what would break a line of the report.
std::string oneField(std::string text) {
    text = Text::repairUtf8(viewOf(text));
    for (char& c : text)
        if (c == '\t' || c == '\n' || c == '\r') c = ' ';
    return text;
}

std::string guessField(const std::optional<Guess>& guess) {
    if (!guess) return " [-]";
    std::string text = guess->title;
    if (guess->episodeTitle) text += " | " + *guess->episodeTitle;
    return text + (guess->source == Guess::Source::ai ? " [ai]" : " [rules]");
}

std::string titleField(const std::optional<Match>& match) {
    if (!match) return {};
    return match->title + " (" + std::to_string(match->year.value_or(0)) + ")";
}

std::string numberField(const ResolvedFile& file) {
    std::optional<int> season;
    std::optional<int> episode;
    if (file.match && file.match->season) {
        season = file.match->season;
        episode = file.match->episode;
    } else if (file.guess) {
        season = file.guess->season;
        episode = file.guess->episode;
    }
    if (!season) return {};
    return "S" + std::to_string(*season) + "E" + std::to_string(episode.value_or(0));
}

std::string lineFor(const ResolvedFile& file) {
    const auto& match = file.match;
    const auto& seconds = file.file.duration;
    const bool look = !file.verdict.isCertain();
    const std::vector<std::string> fields = {
        look ? "LOOK" : "CERTAIN",
        Text::replaceAll(file.file.url.string(), libraryRoot(), ""),
        guessField(file.guess),
        titleField(match),
        numberField(file),
        match ? match->episodeTitle.value_or("") : "",
        seconds ? std::to_string(std::lround(*seconds / 60)) : "",
        match && match->runtimeMinutes ? std::to_string(*match->runtimeMinutes) : "",
        Text::join(file.verdict.reasons(), "; ")};
    std::string line;
    for (const std::string& field : fields) {
        if (&field != &fields.front()) line += '\t';
        line += oneField(field);
    }
    return line;
}

}  // namespace

std::string libraryRoot() {
    const char* root = std::getenv("MARLET_TEST_LIBRARY");
    return root == nullptr ? "/nonexistent-test-library/" : root;
}

std::string report(const AppModel& model) {
    std::string text =
        "verdict\tfile\tfile_guess\tdatabase_title\tS/E\tdb_episode_title\tfile_min\tdb_min\t"
        "reasons";
    for (const LibraryItem& item : model.items())
        for (const ResolvedFile& file : item.files) text += "\n" + lineFor(file);
    return text;
}

void writeReport(const std::filesystem::path& to, const AppModel& model) {
    try {
        Durable::writeFile(std::filesystem::absolute(to), viewOf(report(model)));
    } catch (const std::exception&) {
        // A report that can't be written ends nothing.
    }
}

}  // namespace marlet::Headless
