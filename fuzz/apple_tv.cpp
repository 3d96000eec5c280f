// Answers of Apple TV's web interface from anywhere: each reader gets the same bytes, and what they
// find must be usable.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "sources/apple_tv_answers.h"
#include "sources/json_object.h"

using namespace marlet;

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void useMovie(const ExtMovie& movie) {
    require(!movie.title.empty() && movie.pseudoID() < 0);
    require(!movie.minutes || *movie.minutes > 0);
    require(movie.date.empty() || movie.date.size() == 10);
    for (const std::string& url : movie.wide) require(url.starts_with("http"));
    for (const std::string& url : movie.tall) require(url.starts_with("http"));
}

void useSeasons(const AppleTVAnswers::SeasonSummaries& summaries) {
    for (const auto& [season, count] : summaries)
        require(count >= 0 && AppleTVAnswers::offset(season, summaries) >= 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const Json answer = parseJson(ByteView(data, size));
        const auto found = AppleTVAnswers::parseSearch(answer);
        for (const ExtMovie& movie : found.movies) useMovie(movie);
        for (const ExtShow& show : found.shows) require(show.pseudoID() < 0);
        if (const auto movie = AppleTVAnswers::parseMovie(answer, "m")) useMovie(*movie);
        if (const auto seasons = AppleTVAnswers::parseSeasonSummaries(answer)) useSeasons(*seasons);
        (void)AppleTVAnswers::parseShowInfo(answer);
        (void)AppleTVAnswers::parseEpisodes(answer);
        if (const auto key = AppleTVAnswers::parseKey(answer))
            require(!key->utsk.empty() && !key->pfm.empty());
    } catch (const MFError&) {
    }
    return 0;
}
