// One write without a screen, a network or a queue: the program that the tests and the timings
// drive. Usage: one_job --start | one_job REQUEST.json
#include <cstdio>
#include <exception>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "convert/converter.h"
#include "convert/plan_builder.h"
#include "foundation/file_ops.h"
#include "foundation/languages.h"
#include "foundation/records.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"
#include "foundation/work_area.h"
#include "write/result_line.h"
#include "write/tag_builder.h"
#include "write/tag_writer.h"

namespace {

using namespace marlet;
using nlohmann::json;
namespace fs = std::filesystem;

constexpr int unusableRequest = 2;

void print(const std::string& line) {
    std::fputs((Text::repairUtf8(viewOf(line)) + "\n").c_str(), stdout);
    std::fflush(stdout);
}

template <typename Value>
void take(const json& from, const char* key, Value& into) {
    if (from.contains(key)) from.at(key).get_to(into);
}

void take(const json& from, const char* key, std::optional<int>& into) {
    if (from.contains(key) && !from.at(key).is_null()) into = from.at(key).get<int>();
}

std::optional<fs::path> folderOf(const json& from, const char* key) {
    if (!from.contains(key) || from.at(key).is_null()) return std::nullopt;
    return from.at(key).get<std::string>();
}

Details detailsOf(const json& from) {
    Details details;
    std::string kind = "movie";
    take(from, "kind", kind);
    if (kind != "movie" && kind != "tv") throw std::runtime_error("kind is neither movie nor tv");
    details.kind = kind == "tv" ? MediaKind::tv : MediaKind::movie;
    take(from, "title", details.title);
    take(from, "description", details.description);
    take(from, "longDescription", details.longDescription);
    take(from, "cast", details.cast);
    take(from, "directors", details.directors);
    take(from, "writers", details.writers);
    take(from, "genre", details.genre);
    take(from, "rating", details.rating);
    take(from, "releaseDate", details.releaseDate);
    take(from, "show", details.show);
    take(from, "season", details.season);
    take(from, "episode", details.episode);
    take(from, "episodeEnd", details.episodeEnd);
    return details;
}

CoverImage pictureAt(const fs::path& path) {
    auto data = FileOps::readSmall(path);
    if (!data) throw std::runtime_error("cannot read the artwork");
    const bool isPNG = data->size() > 4 && textOf(slice(*data, 1, 4)) == "PNG";
    return {std::move(*data), isPNG};
}

struct Job {
    WriteRequest request;
    std::string label;
};

std::string labelOf(const Details& details, const fs::path& file) {
    if (details.kind == MediaKind::tv && !details.show.empty()) {
        const std::string episode = details.episodeLabel();
        return episode.empty() ? details.show : details.show + " · " + episode;
    }
    return details.title.empty() ? file.filename().string() : details.title;
}

/// With a plan of its own making, as the review would make it. A file that can't be read has none.
ConvertRequest conversionOf(const json& from, std::vector<Atom> atoms) {
    ConvertRequest request;
    request.source = from.at("file").get<std::string>();
    request.atoms = std::move(atoms);
    request.outputDir = folderOf(from, "outputDir").value_or(request.source.parent_path());
    std::vector<std::string> languages;
    for (const std::string& each : from.value("keepLanguages", std::vector<std::string>{"English"}))
        for (std::string& code : Lang::parseList(each)) languages.push_back(std::move(code));
    if (const auto mkv = MKVFile::open(request.source)) {
        ConvertPlan plan =
            PlanBuilder::make(request.source, *mkv, languages,
                              PlanBuilder::findSidecars(request.source), mkv->blockStats());
        PlanBuilder::applyPGS(plan, *mkv);
        request.plan = plan.snapshot();
    }
    return request;
}

WriteRequest::Mode modeOf(const json& from, const Details& details) {
    const std::string mode = from.value("mode", "details");
    if (mode == "restoreOriginal") return WriteRequest::RestoreOriginal{};
    if (mode != "details" && mode != "convert")
        throw std::runtime_error("unknown mode \"" + mode + "\"");
    std::optional<CoverImage> artwork;
    if (const auto picture = folderOf(from, "artwork")) artwork = pictureAt(*picture);
    std::vector<Atom> atoms = TagBuilder::atoms(details, artwork);
    if (mode == "convert") return conversionOf(from, std::move(atoms));
    return WriteRequest::WriteDetails{std::move(atoms)};
}

Job jobOf(const json& from) {
    Job job;
    job.request.file = from.at("file").get<std::string>();
    const Details details = detailsOf(from.value("details", json::object()));
    job.label = labelOf(details, job.request.file);
    job.request.mode = modeOf(from, details);
    take(from, "fixLayout", job.request.fixLayout);
    job.request.copyTo = folderOf(from, "copyTo");
    job.request.outputDir = folderOf(from, "outputDir");
    take(from, "dropTracks", job.request.dropTracks);
    return job;
}

WriteOutcome run(const Job& job) {
    RunControl control;
    if (const auto* const convert = std::get_if<ConvertRequest>(&job.request.mode))
        return Converter::runAny(*convert, control);
    return TagWriter::write(job.request, control, {});
}

/// A job has no state of its own for a run that stops: it failed.
std::string stateOf(const WriteOutcome& outcome) {
    return outcome.status == WriteOutcome::Status::stopped ? name(WriteOutcome::Status::failed)
                                                           : name(outcome.status);
}

void start() {
    if (const auto notice = TagWriter::recoverInterruptedWrite()) print("NOTICE " + *notice);
    WorkArea::cleanUp(WorkArea::DryRun::No);
}

int runRequest(const fs::path& path) {
    Job job;
    try {
        const auto text = FileOps::readSmall(path);
        if (!text) throw std::runtime_error("cannot read it");
        job = jobOf(json::parse(*text));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s is no usable request: %s\n", path.c_str(), failure.what());
        return unusableRequest;
    }
    const WriteOutcome outcome = run(job);
    print(resultLine(stateOf(outcome), job.label, outcome));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    RunMode::setArguments(arguments);
    if (arguments.size() != 1) {
        std::fputs("usage: one_job --start | one_job REQUEST.json\n", stderr);
        return unusableRequest;
    }
    start();
    return arguments.front() == "--start" ? 0 : runRequest(arguments.front());
}
