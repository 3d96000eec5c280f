#pragma once

#include "screens/picker/picker_source.h"

namespace marlet {

/// TMDB, through its client. Without a key every call throws TMDBError::noKey.
class DatabasePickerSource : public PickerSource {
public:
    explicit DatabasePickerSource(AppModel& model) : model_(model) {}

    SourceID id() const override { return SourceID::tmdb; }
    /// A year in round brackets at the end narrows a search for a film.
    Task<Titles> find(std::string words, bool tv, CancelToken cancel) override;
    Task<PickerTitle> full(PickerTitle title, bool tv, CancelToken cancel) override;
    Task<std::vector<int>> seasons(PickerTitle show, Fresh fresh, CancelToken cancel) override;
    Task<Episodes> episodes(PickerTitle show, int season, Fresh fresh, CancelToken cancel) override;
    bool searchesAll() const override { return true; }
    Task<Episodes> all(PickerTitle show, std::vector<int> seasons, Fresh fresh,
                       CancelToken cancel) override;
    Task<bool> takeFilm(std::filesystem::path file, PickerTitle film, CancelToken cancel) override;
    Task<bool> takeEpisodes(std::vector<EpisodeChoice> files, PickerTitle show, int season,
                            CancelToken cancel) override;

private:
    AppModel& model_;
};

}  // namespace marlet
