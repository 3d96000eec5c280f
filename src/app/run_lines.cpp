#include "app/run_lines.h"

#include <cstdio>

#include "app/headless.h"
#include "foundation/text.h"
#include "write/result_line.h"

namespace marlet {

namespace {

void print(const std::string& line) {
    std::fputs((Text::repairUtf8(viewOf(line)) + "\n").c_str(), stdout);
    std::fflush(stdout);
}

std::string nameOf(const ResolvedFile& file) {
    return file.file.url.filename().string();
}

std::string sourceWords(const ResolvedFile& file) {
    if (!file.match) return "no source";
    return file.match->byHand() ? "by hand" : displayName(file.match->sourceID());
}

class Words : public RunLines {
public:
    void found(const ResolvedFile&) override {}  // the report tells it
    void matched(const ResolvedFile& file) override {
        const std::string verdict = file.verdict.isCertain()
                                        ? "CERTAIN"
                                        : "LOOK: " + Text::join(file.verdict.reasons(), "; ");
        const std::string layout =
            file.file.interleave ? Text::fixed(*file.file.interleave, 2) + " s" : "-";
        print("matched: " + nameOf(file) + " -> " + (file.match ? file.match->title : "-") + " " +
              sourceWords(file) + " " + verdict + " layout " + layout);
    }
    void art(const ResolvedFile& file, const std::optional<Art>& art) override {
        print("ART " + nameOf(file) +
              (art ? " " + art->chosen + "; grid order = " + Text::join(art->grid, " ")
                   : ": no draft"));
    }
    void plan(const ConvertPlan& plan) override { print(Headless::planLine(plan)); }
    void planProgress(double fraction, double seconds, const std::string& which) override {
        print("PLAN progress " + Text::fixed(fraction * 100, 0) + "% after " +
              Text::fixed(seconds, 1) + " s (" + which + ")");
    }
    void notice(const std::string& text) override { print("NOTICE " + text); }
    void problem(const std::string& text) override { print(text); }
    void result(const WriteQueue::Job& job) override {
        print(resultLine(name(job.state), job.label, job.outcome.value_or(WriteOutcome{})));
    }
    void restored(const WriteQueue::Job& job) override {
        print("RESTORE " + name(job.state) + ": " + job.label + " | " +
              (job.outcome ? job.outcome->message : ""));
    }
    void addedAgain(int inReview) override {
        print("AFTER ADD: review " + std::to_string(inReview));
    }
    void addedOnceMore(int inReview, int waiting) override {
        print("AFTER ADD AGAIN: review " + std::to_string(inReview) + " file(s), queue waiting " +
              std::to_string(waiting));
    }
};

}  // namespace

std::unique_ptr<RunLines> RunLines::inWords() {
    return std::make_unique<Words>();
}

}  // namespace marlet
