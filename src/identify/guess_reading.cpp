#include "identify/guess_reading.h"

#include <algorithm>

#include "foundation/text.h"
#include "identify/asking.h"
#include "identify/file_names.h"

namespace marlet::GuessReading {
namespace {

using Parses = std::vector<FilenameRules::Parse>;

/// Names read in one go on a worker: few enough that a cancelled scan ends promptly.
constexpr std::size_t batch = 64;
/// A model that didn't answer so often in a row is left alone for the rest of the scan. The first
/// call may well be in vain: a server that has just been started reads its model from the disk.
constexpr int mostSilences = 3;

AIGuesser::Input inputOf(const ScannedFile& file) {
    return {FileNames::name(file.url), Text::repairUtf8(viewOf(file.url.parent_path().native())),
            file.tags};
}

Parses parseSome(const std::vector<ScannedFile>& files) {
    Parses parses;
    for (const ScannedFile& file : files) {
        parses.push_back(FilenameRules::parse(file.url, file.tags));
    }
    return parses;
}

/// Away from the main context: a large library has tens of thousands of names.
Task<Parses> parseAll(std::vector<ScannedFile> files, CancelToken cancel) {
    Parses all;
    for (std::size_t from = 0; from < files.size(); from += batch) {
        const auto begin = files.begin() + static_cast<std::ptrdiff_t>(from);
        const auto end = begin + static_cast<std::ptrdiff_t>(std::min(batch, files.size() - from));
        std::function<Parses()> work = [some = std::vector<ScannedFile>(begin, end)] {
            return parseSome(some);
        };
        auto working = Asking::orCancelled(Async::onWorker(std::move(work)), cancel);
        Parses parses = co_await working;
        std::move(parses.begin(), parses.end(), std::back_inserter(all));
    }
    co_return all;
}

}  // namespace

bool wantsModel(const FilenameRules::Parse& parse) {
    return !parse.guess || (parse.messy && !parse.confident);
}

std::optional<Guess> settled(const FilenameRules::Parse& parse, std::optional<Guess> model,
                             const AIGuesser::Input& input) {
    if (!model) return parse.guess;
    if (model->kind == MediaKind::movie && !model->year) {
        model->year = FilenameRules::nameYear(input.fileName);
    }
    const auto conflicts = AIGuard::conflicts(input.fileName, input.folderPath, *model);
    if (conflicts.empty()) return model;
    std::optional<Guess> kept = parse.guess ? parse.guess : model;
    kept->conflict = Text::join(conflicts, "; ");
    return kept;
}

Task<std::vector<std::optional<Guess>>> readAll(std::vector<ScannedFile> files, bool useModel,
                                                CancelToken cancel) {
    auto parsing = parseAll(files, cancel);
    const Parses parses = co_await parsing;
    int silences = 0;
    std::vector<std::optional<Guess>> guesses;
    for (std::size_t i = 0; i < files.size(); i++) {
        std::optional<Guess> model;
        const AIGuesser::Input input = inputOf(files[i]);
        const bool mayAsk = useModel && silences < mostSilences && wantsModel(parses[i]);
        if (mayAsk && !AIGuesser::disabled() && AIGuesser::isAvailable()) {
            auto asking = Asking::orCancelled(ModelCall::ask(input, cancel), cancel);
            ModelCall::Answer answer = co_await asking;
            silences = answer.silent ? silences + 1 : 0;
            model = std::move(answer.guess);
        }
        guesses.push_back(settled(parses[i], std::move(model), input));
    }
    co_return guesses;
}

}  // namespace marlet::GuessReading
