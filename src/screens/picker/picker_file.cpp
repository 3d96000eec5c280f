#include "screens/picker/picker_file.h"

#include "identify/lengths.h"

namespace marlet {

namespace {

/// The number that the file says, which a wrong match may have read otherwise.
std::optional<int> ownEpisode(const ResolvedFile& file) {
    if (file.guess && file.guess->episode) return file.guess->episode;
    return file.match ? file.match->episode : std::nullopt;
}

std::vector<EpisodeChoice> episodesOf(const LibraryItem& item) {
    std::vector<EpisodeChoice> row;
    for (const ResolvedFile& file : item.files) {
        const auto number = ownEpisode(file);
        if (!number) continue;
        EpisodeChoice choice{file.file.url, *number, {}};
        if (file.match && file.match->episode == number) choice.episodeEnd = file.match->episodeEnd;
        row.push_back(std::move(choice));
    }
    return row;
}

PickerFile read(const LibraryItem& item, const ResolvedFile& file) {
    PickerFile picked;
    picked.url = file.file.url;
    picked.minutes = Lengths::minutes(file.file);
    picked.match = file.match;
    picked.tv = item.kind == MediaKind::tv;
    picked.film = picked.show = file.file.url.stem().string();
    if (const auto& guess = file.guess) {
        if (!guess->title.empty()) picked.film = picked.show = guess->title;
        if (guess->movieTitle) picked.film = *guess->movieTitle;
        picked.season = guess->season;
        picked.episodeTitle = guess->episodeTitle.value_or("");
    }
    picked.episode = ownEpisode(file);
    if (!picked.season && file.match) picked.season = file.match->season;
    if (picked.tv) picked.row = episodesOf(item);
    return picked;
}

}  // namespace

std::optional<PickerFile> PickerFile::of(const AppModel& model, const std::filesystem::path& url) {
    for (const LibraryItem& item : model.items())
        for (const ResolvedFile& file : item.files)
            if (file.file.url == url) return read(item, file);
    return std::nullopt;
}

}  // namespace marlet
