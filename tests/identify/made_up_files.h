#pragma once

#include <optional>
#include <string>

#include "foundation/records.h"

namespace marlet::test {

/// A file as the probe would tell it, with nothing on the disk behind it.
inline ScannedFile fileOf(const std::string& path, std::optional<double> minutes = {}) {
    ScannedFile file;
    file.url = path;
    file.size = 1000;
    if (minutes) file.duration = *minutes * 60.0;
    return file;
}

inline Guess episodeGuess(const std::string& show, std::optional<int> season,
                          std::optional<int> episode, std::optional<std::string> title = {}) {
    Guess guess;
    guess.kind = MediaKind::tv;
    guess.title = show;
    guess.season = season;
    guess.episode = episode;
    guess.episodeTitle = std::move(title);
    return guess;
}

inline Guess filmGuess(const std::string& title, std::optional<int> year = {}) {
    Guess guess;
    guess.kind = MediaKind::movie;
    guess.title = title;
    guess.year = year;
    return guess;
}

}  // namespace marlet::test
