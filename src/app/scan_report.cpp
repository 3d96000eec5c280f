#include <cstdlib>

#include "app/headless.h"
#include "app/report_fields.h"
#include "foundation/text.h"

namespace marlet::Headless {

namespace {

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
    const bool look = !file.verdict.isCertain();
    return ReportFields::row(
        {look ? "LOOK" : "CERTAIN", ReportFields::relativePath(file.file.url),
         guessField(file.guess), titleField(match), numberField(file),
         match ? match->episodeTitle.value_or("") : "", ReportFields::minutes(file.file.duration),
         match && match->runtimeMinutes ? std::to_string(*match->runtimeMinutes) : "",
         Text::join(file.verdict.reasons(), "; ")});
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

bool writeReport(const std::filesystem::path& to, const AppModel& model) {
    return ReportFields::save(to, report(model));
}

}  // namespace marlet::Headless
