#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <list>
#include <sstream>

#include "foundation/text.h"
#include "identify/made_up_files.h"
#include "identify/matcher.h"
#include "support/catalogue.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

/// One line of the corpus; its texts as they stand there.
struct Name {
    ScannedFile file;
    std::string reading;
    std::string match;
};

struct Score {
    int readings = 0;
    int right = 0;
    int certain = 0;  ///< of the right ones
    int wrong = 0;    ///< called certain
};

struct Corpus {
    std::vector<Name> names;
    Score baseline;
};

/// The columns that tell a reading, as the corpus writes them.
std::string spelled(const std::optional<int>& number) {
    return number ? std::to_string(*number) : "-";
}

std::string readingOf(const std::optional<Guess>& guess) {
    if (!guess) return "- | - | - | - | -";
    const std::string kind = guess->kind == MediaKind::tv ? "tv" : "movie";
    return Text::join(
        {kind, guess->title, spelled(guess->year), spelled(guess->season), spelled(guess->episode)},
        " | ");
}

std::string matchOf(const std::optional<Match>& match) {
    if (!match) return "-";
    std::string text = std::to_string(match->tmdbID);
    if (match->kind == MediaKind::movie) return text;
    text += " " + spelled(match->season) + " " + spelled(match->episode);
    if (match->episodeEnd) text += "-" + std::to_string(*match->episodeEnd);
    return text;
}

Name nameFrom(const std::string& line) {
    std::vector<std::string> columns;
    for (const std::string& column : Text::split(line, '|')) columns.push_back(Text::trim(column));
    if (columns.size() != 8) throw std::runtime_error("a line with other columns: " + line);
    const auto minutes = Text::integer(columns[1]);
    Name name;
    name.file = test::fileOf(columns[0], minutes ? std::optional<double>(*minutes) : std::nullopt);
    name.reading = Text::join({columns.begin() + 2, columns.begin() + 7}, " | ");
    name.match = columns[7];
    return name;
}

Corpus readCorpus() {
    std::ifstream file(test::sourceTree() / "tests/identify/corpus/names.txt");
    Corpus corpus;
    const std::string mark = "# baseline: ";
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(mark)) {
            std::istringstream numbers(line.substr(mark.size()));
            Score& kept = corpus.baseline;
            numbers >> kept.readings >> kept.right >> kept.certain >> kept.wrong;
        }
        if (!line.empty() && line.front() != '#') corpus.names.push_back(nameFrom(line));
    }
    return corpus;
}

/// Adds one file's outcome to the score, and tells what a person would have to put right.
void count(Score& score, const Name& name, const ResolvedFile& result) {
    const std::string reading = readingOf(result.guess);
    const std::string match = matchOf(result.match);
    const bool isRight = match == name.match;
    const bool isCertain = result.verdict.isCertain();
    score.readings += reading == name.reading;
    score.right += isRight;
    score.certain += isRight && isCertain;
    score.wrong += !isRight && isCertain;
    const std::string file = result.file.url.string();
    if (reading != name.reading) std::cout << "  reading  " << file << ": " << reading << "\n";
    if (isRight && isCertain) return;
    const char* const outcome = isRight ? "look     " : isCertain ? "WRONG    " : "asked    ";
    std::cout << "  " << outcome << file << ": " << match << "  "
              << Text::join(result.verdict.reasons(), "; ") << "\n";
}

/// The sample catalogue, with the environment that leads to it.
class CorpusTest : public testing::Test {
protected:
    CorpusTest() {
        test::qtApp();
        for (const auto& [name, value] : server.environment())
            environment.emplace_back(name, value);
        matcher.tmdb = TMDBClient::make("test-token", TMDBClient::Refresh::Yes);
        matcher.order = {SourceID::tmdb};
    }

    test::CatalogueServer server;
    std::list<test::ScopedEnv> environment;
    Matcher matcher;
};

TEST_F(CorpusTest, NoNameIsReadOrMatchedWorseThanBefore) {
    const Corpus corpus = readCorpus();
    ASSERT_GE(corpus.names.size(), 60U);
    Score score;
    for (const Name& name : corpus.names) {
        const auto results = Async::wait(matcher.process({name.file}));
        ASSERT_EQ(results.size(), 1U);
        count(score, name, results.front());
    }
    const int total = static_cast<int>(corpus.names.size());
    std::cout << total << " names: " << score.readings << " read as expected; " << score.right
              << " right (" << score.certain << " certain), " << total - score.right - score.wrong
              << " asked, " << score.wrong << " wrong\n";
    EXPECT_GE(score.readings, corpus.baseline.readings);
    EXPECT_GE(score.right, corpus.baseline.right);
    EXPECT_GE(score.certain, corpus.baseline.certain);
    EXPECT_LE(score.wrong, corpus.baseline.wrong);
}

}  // namespace
}  // namespace marlet
