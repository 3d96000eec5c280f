#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/app_model.h"

namespace marlet {

/// The file for which a person picks a film or an episode, as it was when the picker opened.
struct PickerFile {
    std::filesystem::path url;
    std::optional<double> minutes;
    bool tv = false;
    std::string film;  ///< what to search for, as a film ...
    std::string show;  ///< ... and as an episode
    std::optional<int> season;
    std::optional<int> episode;
    std::string episodeTitle;
    std::optional<Match> match;  ///< what it is taken for now
    /// The files of its row that say an episode's number, itself included.
    std::vector<EpisodeChoice> row;

    /// Nothing when it isn't in Review (any more).
    static std::optional<PickerFile> of(const AppModel& model, const std::filesystem::path& url);
};

}  // namespace marlet
