// The lines of a scripted run as JSON, one object each (docs/json-lines.md).

#include <cstdio>
#include <nlohmann/json.hpp>

#include "app/headless.h"
#include "app/run_lines.h"

namespace marlet {

namespace {

// In the order in which they are put in, which reads better.
using Json = nlohmann::ordered_json;

void print(const Json& object) {
    // A file's name may hold anything; what is not UTF-8 becomes U+FFFD.
    const std::string line =
        object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

template <typename T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json guessOf(const ResolvedFile& file) {
    if (!file.guess) return nullptr;
    const Guess& guess = *file.guess;
    return {{"kind", guess.kind == MediaKind::tv ? "tv" : "movie"},
            {"title", guess.title},
            {"year", orNull(guess.year)},
            {"season", orNull(guess.season)},
            {"episode", orNull(guess.episode)},
            {"episodeTitle", orNull(guess.episodeTitle)},
            {"origin", guess.source == Guess::Source::ai ? "ai" : "rules"}};
}

Json matchOf(const ResolvedFile& file) {
    if (!file.match) return nullptr;
    const Match& match = *file.match;
    return {{"kind", match.kind == MediaKind::tv ? "tv" : "movie"},
            {"id", match.tmdbID},
            {"title", match.title},
            {"year", orNull(match.year)},
            {"season", orNull(match.season)},
            {"episode", orNull(match.episode)},
            {"episodeTitle", orNull(match.episodeTitle)},
            {"minutes", orNull(match.runtimeMinutes)},
            {"source", match.byHand() ? "by hand" : displayName(match.sourceID())}};
}

Json fileObject(const char* event, const ResolvedFile& file) {
    return {{"event", event},
            {"file", file.file.url.string()},
            {"verdict", file.verdict.isCertain() ? "CERTAIN" : "LOOK"},
            {"reasons", file.verdict.reasons()},
            {"guess", guessOf(file)},
            {"match", matchOf(file)},
            {"seconds", orNull(file.file.duration)},
            {"layout", orNull(file.file.interleave)}};
}

Json jobObject(const char* event, const WriteQueue::Job& job) {
    const WriteOutcome outcome = job.outcome.value_or(WriteOutcome{});
    const auto path = [](const std::filesystem::path& each) { return each.string(); };
    return {{"event", event},
            {"state", name(job.state)},
            {"label", job.label},
            {"file", path(job.request.file)},
            {"output", outcome.output ? Json(path(*outcome.output)) : Json(nullptr)},
            {"message", outcome.message},
            {"layoutBefore", orNull(outcome.before)},
            {"layoutAfter", orNull(outcome.after)},
            {"changes", outcome.changes}};
}

class JsonLines : public RunLines {
public:
    void found(const ResolvedFile& file) override { print(fileObject("file", file)); }
    void matched(const ResolvedFile& file) override { print(fileObject("matched", file)); }
    void art(const ResolvedFile& file, const std::optional<Art>& art) override {
        Json object = {{"event", "art"}, {"file", file.file.url.string()}};
        object["chosen"] = art && art->chosen != "-" ? Json(art->chosen) : Json(nullptr);
        object["grid"] = art ? Json(art->grid) : Json(nullptr);
        print(object);
    }
    void plan(const ConvertPlan& plan) override {
        print({{"event", "plan"},
               {"file", plan.source.string()},
               {"possible", plan.snapshot().has_value()},
               {"text", Headless::planLine(plan)}});
    }
    void planProgress(double fraction, double seconds, const std::string& which) override {
        print({{"event", "planProgress"},
               {"which", which},
               {"fraction", fraction},
               {"seconds", seconds}});
    }
    void notice(const std::string& text) override { print({{"event", "notice"}, {"text", text}}); }
    void problem(const std::string& text) override {
        print({{"event", "problem"}, {"text", text}});
    }
    void result(const WriteQueue::Job& job) override { print(jobObject("result", job)); }
    void restored(const WriteQueue::Job& job) override { print(jobObject("restored", job)); }
    void addedAgain(int inReview) override {
        print({{"event", "addedAgain"}, {"review", inReview}});
    }
    void addedOnceMore(int inReview, int waiting) override {
        print({{"event", "addedOnceMore"}, {"review", inReview}, {"waiting", waiting}});
    }
};

}  // namespace

std::unique_ptr<RunLines> RunLines::inJson() {
    return std::make_unique<JsonLines>();
}

}  // namespace marlet
