// Answers of the iTunes Store's search from anywhere: each reader gets the same bytes, and what
// they find must be usable.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "sources/itunes_answers.h"
#include "sources/json_object.h"
#include "sources/loose_json.h"

using namespace marlet;

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const Json answer = parseJson(ByteView(data, size));
        const Json& results = LooseJson::at(answer, "results");
        for (const ExtMovie& movie : ITunesAnswers::movies(results)) {
            require(!movie.id.empty() && !movie.title.empty() && movie.pseudoID() < 0);
            require(!movie.minutes || *movie.minutes > 0);
            require(movie.date.empty() || movie.date.size() == 10);
        }
        const auto shows = ITunesAnswers::shows(results);
        for (const ExtShow& show : shows) require(!show.id.empty() && !show.title.empty());
        for (const ExtEpisode& episode : ITunesAnswers::episodes(results, 3))
            require(episode.season == 3);
        const auto seasons = ITunesAnswers::seasonCollections(results);
        const auto info = ITunesAnswers::showInfo(results, shows.empty() ? ExtShow() : shows[0]);
        for (const auto& [season, pictures] : info.seasonTall) {
            require(seasons.contains(season));
            for (const std::string& url : pictures) require(url.starts_with("http"));
        }
    } catch (const MFError&) {
    }
    return 0;
}
