#include "app/virtual_run.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "app/answer_key.h"
#include "app/headless.h"
#include "app/report_fields.h"
#include "app/scored_report.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "identify/matcher.h"
#include "sources/key_store.h"

namespace marlet::Headless {

namespace {

namespace fs = std::filesystem;
using VirtualMap::Entry;

std::string outcomeLabel(const Entry& entry, const ResolvedFile& file, bool right) {
    if (!entry.expectAsk) return scoredClass(file, right);
    return file.verdict.isCertain() ? "WRONG_CERTAIN(should ask)" : "ASKED_CORRECTLY";
}

std::string guessWords(const std::optional<Guess>& guess) {
    if (!guess) return "[rules] -";
    return (guess->source == Guess::Source::ai ? "[ai] " : "[rules] ") + describe(*guess);
}

/// The labels by their counts, highest first, ties by name.
std::vector<std::pair<std::string, int>> ranked(const Counts& counts) {
    std::vector<std::pair<std::string, int>> labels(counts.begin(), counts.end());
    std::ranges::stable_sort(labels, std::ranges::greater{}, &std::pair<std::string, int>::second);
    return labels;
}

/// The files in the order of the map. A name that stands there twice has two results, alike; one
/// that has none was left to the person.
std::vector<ResolvedFile> inOrder(const std::vector<Entry>& map,
                                  std::vector<ResolvedFile> resolved) {
    std::multimap<fs::path, ResolvedFile*> byName;
    for (ResolvedFile& file : resolved) byName.emplace(file.file.url, &file);
    std::vector<ResolvedFile> ordered(map.size());
    for (std::size_t i = 0; i < map.size(); i++) {
        const fs::path name = map[i].fake;
        const auto found = byName.lower_bound(name);
        if (found == byName.end() || found->first != name) {
            ordered[i].file.url = name;
            continue;
        }
        ordered[i] = std::move(*found->second);
        byName.erase(found);
    }
    return ordered;
}

std::optional<std::string> readUtf8(const fs::path& file) {
    const auto bytes = FileOps::readSmall(file);
    if (!bytes || Text::repairUtf8(*bytes) != textOf(*bytes)) return std::nullopt;
    return textOf(*bytes);
}

Task<std::vector<ResolvedFile>> identify(std::vector<Entry> map) {
    std::vector<Matcher::VirtualFile> files;
    for (const Entry& entry : map)
        files.push_back(
            {entry.fake, fs::path(libraryRoot()) / fs::path(entry.real).relative_path()});
    Matcher matcher;
    matcher.tmdb = TMDBClient::make(KeyStore::builtIn());
    // The other sources' catalogues change by the day; a score that is compared must not.
    matcher.order = {SourceID::tmdb};
    // What the real file says of itself would give the answer away.
    matcher.ignoreTags = true;
    auto running = matcher.run(std::move(files));
    std::vector<ResolvedFile> resolved = co_await running;
    co_return resolved;
}

}  // namespace

std::string readingLabel(const Entry& entry, const ResolvedFile& file) {
    if (entry.expectAsk) return "n/a";
    const Truth truth = truthOf(entry.real, file.file.tags);
    if (!file.guess) return truth.title.empty() ? "READ_NONE" : "READ_WRONG";
    if (truth.isSameAs(*file.guess)) return "READ_NONE";
    return truth.isMetBy(*file.guess) ? "READ_OK" : "READ_WRONG";
}

std::string virtualText(const std::vector<Entry>& map, std::vector<ResolvedFile> resolved) {
    const std::vector<ResolvedFile> files = inOrder(map, std::move(resolved));
    Counts counts;
    std::vector<std::string> rows;
    for (std::size_t i = 0; i < map.size(); i++) {
        const ResolvedFile& file = files[i];
        const AnswerKey key = answerKey(map[i].real, file);
        const std::string outcome = outcomeLabel(map[i], file, key.right);
        counts[readingLabel(map[i], file)]++;
        if (file.guess && file.guess->conflict) counts["AI_GUARD_FLAGGED"]++;
        if (file.guess && file.guess->source == Guess::Source::ai) counts["AI_READING_USED"]++;
        counts[outcome]++;
        rows.push_back(
            ReportFields::row({outcome, map[i].fake, "truth: " + key.expected,
                               "got: " + (file.match ? describe(*file.match) : "-"),
                               guessWords(file.guess), Text::join(file.verdict.reasons(), "; ")}));
    }
    return scoredText(files.size(), ranked(counts), rows);
}

Task<bool> runVirtual(fs::path mapFile, std::optional<fs::path> report) {
    const std::optional<std::string> text = readUtf8(mapFile);
    if (!text) {
        std::puts("can't read map");
        co_return false;
    }
    const std::vector<Entry> map = VirtualMap::parse(*text);
    auto identifying = identify(map);
    std::vector<ResolvedFile> resolved = co_await identifying;
    const std::string scored = virtualText(map, std::move(resolved));
    std::fputs((scored + "\n").c_str(), stdout);
    std::fflush(stdout);
    co_return !report || ReportFields::save(*report, scored);
}

}  // namespace marlet::Headless
