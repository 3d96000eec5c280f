#pragma once

#include <map>

#include "screens/picker/picker_source.h"

namespace marlet {

/// Apple TV or the iTunes Store.
class CataloguePickerSource : public PickerSource {
public:
    CataloguePickerSource(SourceID id, AppModel& model) : id_(id), model_(model) {}

    SourceID id() const override { return id_; }
    Task<Titles> find(std::string words, bool tv, CancelToken cancel) override;
    Task<PickerTitle> full(PickerTitle title, bool tv, CancelToken cancel) override;
    Task<std::vector<int>> seasons(PickerTitle show, Fresh fresh, CancelToken cancel) override;
    Task<Episodes> episodes(PickerTitle show, int season, Fresh fresh, CancelToken cancel) override;
    Task<bool> takeFilm(std::filesystem::path file, PickerTitle film, CancelToken cancel) override;
    Task<bool> takeEpisodes(std::vector<EpisodeChoice> files, PickerTitle show, int season,
                            CancelToken cancel) override;

private:
    ExternalSource* source() const { return model_.external(id_); }

    SourceID id_;
    AppModel& model_;
    // What searches have found so far, by the source's own number.
    std::map<std::string, ExtShow> shows_;
    std::map<std::string, ExtMovie> films_;
};

}  // namespace marlet
