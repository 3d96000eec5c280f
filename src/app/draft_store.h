#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "app/draft_corrections.h"
#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {

/// The editable state of the files in Review, and the artwork that the episodes of a season share.
class DraftStore {
public:
    using Path = std::filesystem::path;

    const FileDraft* find(const Path& file) const;
    /// To be edited now; a later edit asks again.
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

    /// What a person did to the file's draft, or what is wished for one that isn't loaded yet.
    DraftCorrections corrections(const Path& file) const;
    /// Applied to the file's draft when it has loaded.
    void wish(const Path& file, const DraftCorrections& corrections);

    /// Told of each file whose draft may be other than it was.
    std::function<void(const Path&)> onTouched;

private:
    struct Loading {
        int number;
        Gate ended;
    };

    void touched(const Path& file) const;
    void grant(const Path& file, FileDraft& draft);

    std::map<Path, FileDraft> drafts_;
    std::map<Path, DraftCorrections> wishes_;  ///< of files without a draft
    std::map<Path, Loading> loading_;
    int lastNumber_ = 0;
    std::set<std::string> apart_;                 ///< seasons whose episodes pick one by one
    std::map<std::string, ArtworkOption> picks_;  ///< by season key and "|wide" or "|tall"
};

}  // namespace marlet
