#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {

/// The editable state of the files in Review, and the artwork that the episodes of a season share.
class DraftStore {
public:
    using Path = std::filesystem::path;

    const FileDraft* find(const Path& file) const;
    FileDraft* find(const Path& file);
    /// A draft that just loaded: it takes its season's artwork first.
    void put(const Path& file, FileDraft draft);
    /// Also lets go whoever waits for the file's draft.
    void forget(const Path& file);

    bool isLoading(const Path& file) const { return loading_.contains(file); }
    bool anyLoading() const { return !loading_.empty(); }
    /// The number tells this loading from a later one of the same file.
    int beginLoading(const Path& file);
    bool isCurrent(const Path& file, int number) const;
    /// Ignored when the loading was forgotten meanwhile.
    void endLoading(const Path& file, int number);
    /// Lets go whoever waits, at once.
    void endAll();
    /// Opens soon after the loading under way has ended; nothing when there is none.
    std::optional<Gate> loadingOf(const Path& file) const;

    /// Ignored without a draft. While the season shares its artwork, all its drafts follow.
    void pickArtwork(const ArtworkOption& option, const Path& file);
    void adoptSeasonArt(FileDraft& draft) const;
    void setShareSeason(bool on, const std::string& key, const Path& file);
    bool sharesSeason(const std::string& key) const { return !apart_.contains(key); }

private:
    struct Loading {
        int number;
        Gate ended;
    };

    std::map<Path, FileDraft> drafts_;
    std::map<Path, Loading> loading_;
    int lastNumber_ = 0;
    std::set<std::string> apart_;                 ///< seasons whose episodes pick one by one
    std::map<std::string, ArtworkOption> picks_;  ///< by season key and "|wide" or "|tall"
};

}  // namespace marlet
