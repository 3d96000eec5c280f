#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/errors.h"
#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {

// What any catalogue answers in. Texts that a source doesn't have are empty.

struct ExtShow {
    SourceID source = SourceID::appleTV;
    std::string id;
    std::string title;
    std::optional<int> year;
    std::string overview;
    std::optional<std::string> poster;  ///< a full address

    /// Stands in Match::tmdbID: always negative.
    std::int64_t pseudoID() const;
};

struct ExtMovie {
    SourceID source = SourceID::appleTV;
    std::string id;
    std::string title;
    std::optional<int> year;
    std::string overview;
    std::optional<int> minutes;
    std::optional<std::string> poster;
    std::vector<std::string> wide;
    std::vector<std::string> tall;
    std::vector<std::string> cast;
    std::vector<std::string> directors;
    std::string genre;
    std::string rating;
    std::string date;

    std::int64_t pseudoID() const;
};

struct ExtEpisode {
    int season = 0;
    int number = 0;
    std::string title;
    std::string overview;
    std::string date;
    std::optional<int> minutes;
};

struct ExtShowInfo {
    std::string overview;
    std::string genre;
    std::string rating;
    std::string date;
    std::vector<std::string> cast;
    std::vector<std::string> wide;
    std::vector<std::string> tall;
    std::map<int, std::vector<std::string>> seasonTall;
};

/// The service refused, or its answer isn't one that can be used.
class SourceError : public MFError {
public:
    using MFError::MFError;
};

/// A catalogue beside TMDB. One request at a time; any call may throw, and throws CancelError as
/// soon as its token is cancelled.
class ExternalSource {
public:
    virtual ~ExternalSource() = default;
    virtual SourceID id() const = 0;
    virtual Task<std::vector<ExtShow>> searchShows(std::string title, CancelToken cancel) = 0;
    virtual Task<ExtShowInfo> showInfo(ExtShow show, CancelToken cancel) = 0;
    virtual Task<std::vector<int>> seasons(ExtShow show, CancelToken cancel) = 0;
    virtual Task<std::vector<ExtEpisode>> episodes(int season, ExtShow show,
                                                   CancelToken cancel) = 0;
    virtual Task<std::vector<ExtMovie>> searchMovies(std::string title, CancelToken cancel) = 0;
    virtual Task<ExtMovie> movieDetails(ExtMovie movie, CancelToken cancel) = 0;
};

/// The built-in catalogue of that name, which lives as long as the application object; nothing for
/// TMDB, which has a client of its own.
ExternalSource* sharedSource(SourceID id);

/// 64-bit djb2 over the UTF-8 bytes.
std::uint64_t stableHash(const std::string& key);

}  // namespace marlet
