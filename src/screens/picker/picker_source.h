#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/app_model.h"
#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {

/// A film or show that a source knows.
struct PickerTitle {
    std::string id;
    std::string title;
    std::optional<int> year;
    std::optional<int> runtime;  ///< minutes
    std::string overview;
    std::string poster;          ///< a source's path or a full address; empty: none
    std::optional<int> seasons;  ///< how many, without Specials
    bool isFull = false;         ///< there is no more to ask for
};

struct PickerEpisode {
    int season = 0;
    int number = 0;
    std::string title;
    std::optional<int> runtime;  ///< minutes
    std::string date;            ///< "yyyy-mm-dd", or empty
    std::string still;
};

/// What the picker asks a source for. Answers come in the source's own order. Any call may throw;
/// CancelError as soon as its token is cancelled.
class PickerSource {
public:
    using Titles = std::vector<PickerTitle>;
    using Episodes = std::vector<PickerEpisode>;
    enum class Fresh { No, Yes };  ///< Yes: past everything saved

    virtual ~PickerSource() = default;
    virtual SourceID id() const = 0;
    virtual Task<Titles> find(std::string words, bool tv, CancelToken cancel) = 0;
    /// The same with what only the full record tells.
    virtual Task<PickerTitle> full(PickerTitle title, bool tv, CancelToken cancel) = 0;
    /// In the order in which they are offered: Specials last.
    virtual Task<std::vector<int>> seasons(PickerTitle show, Fresh fresh, CancelToken cancel) = 0;
    /// Empty when the source has no such season.
    virtual Task<Episodes> episodes(PickerTitle show, int season, Fresh fresh,
                                    CancelToken cancel) = 0;
    /// Whether all() can be asked.
    virtual bool searchesAll() const { return false; }
    virtual Task<Episodes> all(PickerTitle show, std::vector<int> seasons, Fresh fresh,
                               CancelToken cancel);
    virtual Task<bool> takeFilm(std::filesystem::path file, PickerTitle film,
                                CancelToken cancel) = 0;
    virtual Task<bool> takeEpisodes(std::vector<EpisodeChoice> files, PickerTitle show, int season,
                                    CancelToken cancel) = 0;

    static std::unique_ptr<PickerSource> make(SourceID id, AppModel& model);
    /// Set before the screens are made, it makes them in place of the real ones.
    static std::function<std::unique_ptr<PickerSource>(SourceID)> instead;
};

}  // namespace marlet
