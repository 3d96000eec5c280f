#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

#include "foundation/text.h"
#include "identify/file_names.h"
#include "identify/filename_rules.h"
#include "identify/guess_model.h"

namespace marlet::AIGuard {
namespace {

using Words = std::vector<std::string>;
using WordSet = std::set<std::string, std::less<>>;

constexpr std::array<std::string_view, 3> articles{"the", "a", "an"};

bool isArticle(const std::string& word) {
    return std::find(articles.begin(), articles.end(), word) != articles.end();
}

void add(WordSet& set, const Words& words) {
    set.insert(words.begin(), words.end());
}

/// A season or episode as a name may write it: 7 and 07.
void addNumber(WordSet& set, const std::optional<int>& number) {
    if (!number) return;
    std::array<char, 16> padded{};
    std::snprintf(padded.data(), padded.size(), "%02d", *number);
    set.insert(std::to_string(*number));
    set.insert(padded.data());
}

WordSet wordsOf(const Guess& guess) {
    WordSet words;
    add(words, FilenameRules::tokens(guess.title));
    if (guess.year) words.insert(std::to_string(*guess.year));
    if (guess.episodeTitle) add(words, FilenameRules::tokens(*guess.episodeTitle));
    addNumber(words, guess.season);
    addNumber(words, guess.episode);
    return words;
}

/// The words that the set lacks, articles apart.
Words missingFrom(const WordSet& set, const Words& words) {
    Words missing;
    for (const std::string& word : words) {
        if (!set.contains(word) && !isArticle(word)) missing.push_back(word);
    }
    return missing;
}

std::string nameOf(const std::string& fileName) {
    const std::string base = FileNames::base(fileName);
    if (Text::contains(base, " ")) return base;
    return Text::replaceAll(Text::replaceAll(base, "_", " "), ".", " ");
}

}  // namespace

std::vector<std::string> conflicts(const std::string& fileName, const std::string& folderPath,
                                   const Guess& guess) {
    std::vector<std::string> found;
    const std::string name = nameOf(fileName);
    const Words nameWords = FilenameRules::tokens(name);

    WordSet excused = wordsOf(guess);
    excused.insert(FilenameRules::junkTokens.begin(), FilenameRules::junkTokens.end());
    const Words leftOut = missingFrom(excused, nameWords);
    if (!leftOut.empty()) {
        found.push_back("The model left out “" + Text::join(leftOut, ", ") +
                        "” from the file name");
    }

    WordSet known;
    add(known, nameWords);
    add(known, FilenameRules::tokens(folderPath));
    const Words added = missingFrom(known, FilenameRules::tokens(guess.title));
    if (!added.empty()) {
        found.push_back("The model added “" + Text::join(added, ", ") +
                        "”, which isn't in the name");
    }

    const auto nameYear = FilenameRules::splitYear(FilenameRules::clean(name)).year;
    if (nameYear && guess.year && *nameYear != *guess.year) {
        found.push_back("File says " + std::to_string(*nameYear) + ", model says " +
                        std::to_string(*guess.year));
    }
    return found;
}

}  // namespace marlet::AIGuard
