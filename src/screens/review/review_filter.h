#pragma once

#include <string>
#include <vector>

#include "foundation/records.h"

namespace marlet {

class AppModel;

/// Which items of Review are shown: by verdict, and by what a person looks for.
class ReviewFilter {
public:
    enum class Verdicts { all, needLook, ready };

    Verdicts verdicts() const { return verdicts_; }
    const std::string& query() const { return query_; }
    bool isOn() const { return verdicts_ != Verdicts::all || !words_.empty(); }
    bool isSearching() const { return !words_.empty(); }
    void setVerdicts(Verdicts verdicts) { verdicts_ = verdicts; }
    /// Every word must stand somewhere, whatever its case and accents.
    void setQuery(const std::string& query);

    /// What the words of a search are looked for in: titles, year, season, episodes, file names.
    static std::string textOf(const LibraryItem& item);
    bool takes(bool ready, const std::string& text) const;

private:
    Verdicts verdicts_ = Verdicts::all;
    std::string query_;
    std::vector<std::string> words_;  ///< folded
};

}  // namespace marlet
