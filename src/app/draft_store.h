#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "foundation/records.h"

namespace marlet {

/// The editable state of the files in Review, and the artwork that the episodes of a season share.
class DraftStore {
public:
    using Path = std::filesystem::path;

    const FileDraft* find(const Path& file) const;
    FileDraft* find(const Path& file);
    bool isLoading(const Path& file) const { return loading_.contains(file); }
    bool anyLoading() const { return !loading_.empty(); }
    void setLoading(const Path& file) { loading_.insert(file); }
    void endLoading(const Path& file) { loading_.erase(file); }
    /// A draft that just loaded: it takes its season's artwork first.
    void put(const Path& file, FileDraft draft);
    void forget(const Path& file);

    /// Ignored without a draft. While the season shares its artwork, all its drafts follow.
    void pickArtwork(const ArtworkOption& option, const Path& file);
    void adoptSeasonArt(FileDraft& draft) const;
    void setShareSeason(bool on, const std::string& key, const Path& file);
    bool sharesSeason(const std::string& key) const { return !apart_.contains(key); }

private:
    std::map<Path, FileDraft> drafts_;
    std::set<Path> loading_;
    std::set<std::string> apart_;                 ///< seasons whose episodes pick one by one
    std::map<std::string, ArtworkOption> picks_;  ///< by season key and "|wide" or "|tall"
};

}  // namespace marlet
