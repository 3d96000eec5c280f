#pragma once

#include "screens/picker/picker_source.h"

namespace marlet {

/// Made-up films and shows, for pictures of the match picker. Nothing can be taken from it.
class DemoSource : public PickerSource {
public:
    explicit DemoSource(SourceID id) : id_(id) {}

    SourceID id() const override { return id_; }
    Task<Titles> find(std::string words, bool tv, CancelToken cancel) override;
    Task<PickerTitle> full(PickerTitle title, bool tv, CancelToken cancel) override;
    Task<std::vector<int>> seasons(PickerTitle show, Fresh fresh, CancelToken cancel) override;
    Task<Episodes> episodes(PickerTitle show, int season, Fresh fresh, CancelToken cancel) override;
    Task<bool> takeFilm(std::filesystem::path file, PickerTitle film, CancelToken cancel) override;
    Task<bool> takeEpisodes(std::vector<EpisodeChoice> files, PickerTitle show, int season,
                            CancelToken cancel) override;

    /// The files that the picker is shown for; they are nowhere.
    static ResolvedFile film();
    static ResolvedFile episode();

private:
    SourceID id_;
};

}  // namespace marlet
