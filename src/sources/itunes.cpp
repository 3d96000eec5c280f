#include "sources/itunes.h"

#include <map>
#include <optional>
#include <utility>

#include "sources/http_address.h"
#include "sources/itunes_answers.h"
#include "sources/loose_json.h"
#include "sources/polite_service.h"
#include "sources/region.h"
#include "sources/show_memory.h"
#include "sources/source_cache.h"

namespace marlet {

using HttpAddress::Query;

namespace {

constexpr const char* publicRoot = "https://itunes.apple.com";

using SeasonIDs = std::map<int, std::int64_t>;

/// What the store lists of a show, a collection for each season.
struct Collections {
    Json results;
    SeasonIDs ids;
};

Json resultsOf(const Json& answer) {
    const Json& results = LooseJson::at(answer, "results");
    return results.is_array() ? results : Json::array();
}

Query lookup(const std::string& id, const char* entity) {
    return {{"id", id}, {"entity", entity}, {"limit", "200"}};
}

}  // namespace

struct ITunesSource::Impl : PoliteService {
    Impl() : PoliteService(Politeness::itunesGap) {}

    ShowMemory<SeasonIDs> known;

    using Shared = std::shared_ptr<Impl>;

    /// The results of an answer; none when the store doesn't know what is asked.
    static Task<Json> fetch(Shared impl, std::string path, Query query, CancelToken cancel);
    static Task<Json> send(Shared impl, std::string path, Query query, std::string cacheKey,
                           CancelToken cancel);
    static Task<Collections> collections(Shared impl, ExtShow show, CancelToken cancel);
    static Task<SeasonIDs> seasonCollections(Shared impl, ExtShow show, CancelToken cancel);

    static Task<std::vector<ExtShow>> shows(Shared impl, std::string title, CancelToken cancel);
    static Task<ExtShowInfo> info(Shared impl, ExtShow show, CancelToken cancel);
    static Task<std::vector<int>> seasons(Shared impl, ExtShow show, CancelToken cancel);
    static Task<std::vector<ExtEpisode>> episodes(Shared impl, int season, ExtShow show,
                                                  CancelToken cancel);
    static Task<std::vector<ExtMovie>> movies(Shared impl, std::string title, CancelToken cancel);
};

Task<Json> ITunesSource::Impl::fetch(Shared impl, std::string path, Query query,
                                     CancelToken cancel) {
    query.emplace_back("country", Region::storeCountry());
    const std::string cacheKey = "itunes|" + path + "|" + HttpAddress::plainQuery(query);
    const auto ask = [=] { return send(impl, path, query, cacheKey, cancel); };
    Task<Json> asking = answer(impl, cacheKey, ask, cancel);
    const Json told = co_await asking;
    co_return resultsOf(told);
}

Task<Json> ITunesSource::Impl::send(Shared impl, std::string path, Query query,
                                    std::string cacheKey, CancelToken cancel) {
    const std::string url = HttpAddress::withQuery(
        HttpAddress::rootOf("MARLET_ITUNES_API", publicRoot) + "/" + path, std::move(query));
    Task<HttpAnswer> asking = get(impl, request(url), cancel);
    const HttpAnswer answer = co_await asking;
    const int status = answer.status;
    // The service refuses with 403 when it has had enough.
    if (status == 403 || status == 429 || status >= 500) {
        impl->polite.failed(status == 500 ? Politeness::Failure::Soft : Politeness::Failure::Hard);
        throw SourceError("The iTunes Store answered with an error (" + std::to_string(status) +
                          ")");
    }
    if (status != 200) co_return Json();
    Json told = parseJson(answer.body);
    impl->polite.succeeded();
    SourceCache::write(answer.body, cacheKey);
    co_return told;
}

Task<std::vector<ExtShow>> ITunesSource::Impl::shows(Shared impl, std::string title,
                                                     CancelToken cancel) {
    const Query bySeason = {
        {"term", title}, {"media", "tvShow"}, {"entity", "tvSeason"}, {"limit", "25"}};
    Task<Json> fetching = fetch(impl, "search", bySeason, cancel);
    const Json results = co_await fetching;
    std::vector<ExtShow> found = ITunesAnswers::shows(results);
    if (!found.empty()) co_return found;
    const Query byEpisode = {{"term", title},
                             {"media", "tvShow"},
                             {"entity", "tvEpisode"},
                             {"attribute", "showTerm"},
                             {"limit", "25"}};
    Task<Json> fetchingAgain = fetch(impl, "search", byEpisode, cancel);
    const Json more = co_await fetchingAgain;
    co_return ITunesAnswers::shows(more);
}

Task<Collections> ITunesSource::Impl::collections(Shared impl, ExtShow show, CancelToken cancel) {
    Task<Json> fetching = fetch(impl, "lookup", lookup(show.id, "tvSeason"), cancel);
    Collections found;
    found.results = co_await fetching;
    found.ids = ITunesAnswers::seasonCollections(found.results);
    impl->known.keep(show.id, found.ids);
    co_return found;
}

Task<SeasonIDs> ITunesSource::Impl::seasonCollections(Shared impl, ExtShow show,
                                                      CancelToken cancel) {
    std::optional<SeasonIDs> known = impl->known.find(show.id);
    if (known) co_return std::move(*known);
    Task<Collections> asking = collections(impl, std::move(show), cancel);
    Collections found = co_await asking;
    co_return std::move(found.ids);
}

Task<ExtShowInfo> ITunesSource::Impl::info(Shared impl, ExtShow show, CancelToken cancel) {
    Task<Collections> asking = collections(impl, show, cancel);
    const Collections found = co_await asking;
    co_return ITunesAnswers::showInfo(found.results, show);
}

Task<std::vector<int>> ITunesSource::Impl::seasons(Shared impl, ExtShow show, CancelToken cancel) {
    Task<SeasonIDs> asking = seasonCollections(impl, std::move(show), cancel);
    const SeasonIDs found = co_await asking;
    std::vector<int> numbers;
    for (const auto& [number, id] : found) numbers.push_back(number);
    co_return numbers;
}

Task<std::vector<ExtEpisode>> ITunesSource::Impl::episodes(Shared impl, int season, ExtShow show,
                                                           CancelToken cancel) {
    Task<SeasonIDs> asking = seasonCollections(impl, std::move(show), cancel);
    const SeasonIDs known = co_await asking;
    const auto own = known.find(season);
    if (own == known.end()) co_return std::vector<ExtEpisode>();
    Task<Json> fetching =
        fetch(impl, "lookup", lookup(std::to_string(own->second), "tvEpisode"), cancel);
    const Json results = co_await fetching;
    co_return ITunesAnswers::episodes(results, season);
}

Task<std::vector<ExtMovie>> ITunesSource::Impl::movies(Shared impl, std::string title,
                                                       CancelToken cancel) {
    const Query query = {{"term", title}, {"media", "movie"}, {"entity", "movie"}, {"limit", "15"}};
    Task<Json> fetching = fetch(impl, "search", query, cancel);
    const Json results = co_await fetching;
    co_return ITunesAnswers::movies(results);
}

namespace {

Task<ExtMovie> asItIs(ExtMovie movie) {
    co_return movie;
}

}  // namespace

ITunesSource::ITunesSource() : impl_(std::make_shared<Impl>()) {}
ITunesSource::~ITunesSource() = default;

Task<std::vector<ExtShow>> ITunesSource::searchShows(std::string title, CancelToken cancel) {
    return Impl::shows(impl_, std::move(title), std::move(cancel));
}

Task<ExtShowInfo> ITunesSource::showInfo(ExtShow show, CancelToken cancel) {
    return Impl::info(impl_, std::move(show), std::move(cancel));
}

Task<std::vector<int>> ITunesSource::seasons(ExtShow show, CancelToken cancel) {
    return Impl::seasons(impl_, std::move(show), std::move(cancel));
}

Task<std::vector<ExtEpisode>> ITunesSource::episodes(int season, ExtShow show, CancelToken cancel) {
    return Impl::episodes(impl_, season, std::move(show), std::move(cancel));
}

Task<std::vector<ExtMovie>> ITunesSource::searchMovies(std::string title, CancelToken cancel) {
    return Impl::movies(impl_, std::move(title), std::move(cancel));
}

Task<ExtMovie> ITunesSource::movieDetails(ExtMovie movie, CancelToken) {
    return asItIs(std::move(movie));
}

}  // namespace marlet
