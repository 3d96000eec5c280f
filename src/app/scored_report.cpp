#include "app/scored_report.h"

#include <cstdio>

#include "app/answer_key.h"
#include "app/report_fields.h"
#include "foundation/text.h"

namespace marlet::Headless {

std::string scoredClass(const ResolvedFile& file, bool right) {
    if (file.verdict.isCertain()) return right ? "RIGHT_NO_ASK" : "WRONG_CERTAIN";
    if (!file.match) return "ASKED_NO_MATCH";
    return right ? "RIGHT_BUT_ASKED" : "ASKED_WRONG_GUESS";
}

std::string scoredText(std::size_t total, const std::vector<std::pair<std::string, int>>& labels,
                       const std::vector<std::string>& rows) {
    std::vector<std::string> lines = {"TOTAL " + std::to_string(total)};
    for (const auto& [label, count] : labels) lines.push_back(label + " " + std::to_string(count));
    lines.emplace_back();
    lines.insert(lines.end(), rows.begin(), rows.end());
    return Text::join(lines, "\n");
}

std::string scoredReport(const AppModel& model) {
    Counts counts;
    std::vector<std::string> rows;
    for (const ResolvedFile& file : model.allFiles()) {
        const std::string path = ReportFields::relativePath(file.file.url);
        const AnswerKey key = answerKey(path, file);
        const std::string label = scoredClass(file, key.right);
        counts[label]++;
        rows.push_back(ReportFields::row({label, path, "truth: " + key.expected,
                                          "got: " + (file.match ? describe(*file.match) : "-"),
                                          ReportFields::minutes(file.file.duration),
                                          Text::join(file.verdict.reasons(), "; ")}));
    }
    return scoredText(rows.size(), {counts.begin(), counts.end()}, rows);
}

bool writeScoredReport(const std::filesystem::path& to, const AppModel& model) {
    const std::string text = scoredReport(model);
    std::fputs((text + "\n").c_str(), stdout);
    std::fflush(stdout);
    return ReportFields::save(to, text);
}

}  // namespace marlet::Headless
