#include "sources/itunes.h"

#include <chrono>
#include <map>
#include <optional>
#include <utility>

#include "sources/http_address.h"
#include "sources/http_session.h"
#include "sources/itunes_answers.h"
#include "sources/json_object.h"
#include "sources/loose_json.h"
#include "sources/politeness.h"
#include "sources/region.h"
#include "sources/source_cache.h"
#include "sources/turnstile.h"

namespace marlet {

using HttpAddress::Query;

namespace {

using namespace std::chrono_literals;

constexpr const char* publicRoot = "https://itunes.apple.com";
/// 200 episodes with their descriptions have about half a megabyte.
constexpr std::size_t largestAnswer = 16 * 1024 * 1024;
constexpr auto longest = 60s;  ///< for a whole answer

using SeasonIDs = std::map<int, std::int64_t>;

Json resultsOf(const Json& answer) {
    const Json& results = LooseJson::at(answer, "results");
    return results.is_array() ? results : Json::array();
}

/// Nothing when there is no saved answer, or one that was damaged since.
std::optional<Json> saved(const std::string& cacheKey) {
    const auto bytes = SourceCache::read(cacheKey);
    if (!bytes) return std::nullopt;
    try {
        return resultsOf(parseJson(*bytes));
    } catch (const MFError&) {
        return std::nullopt;
    }
}

Query lookup(const std::string& id, const char* entity) {
    return {{"id", id}, {"entity", entity}, {"limit", "200"}};
}

}  // namespace

struct ITunesSource::Impl {
    Politeness polite{Politeness::itunesGap};
    /// One request at a time, and what is asked twice at once is asked once.
    std::shared_ptr<Turnstile> turns = std::make_shared<Turnstile>(1);
    HttpSession session;
    struct Collections {
        SeasonIDs ids;
        SourceCache::Instant at;
    };
    std::map<std::string, Collections> seasonIDs;  ///< by show id

    using Shared = std::shared_ptr<Impl>;

    static Task<Json> fetch(Shared impl, std::string path, Query query, CancelToken cancel);
    static Task<Json> send(Shared impl, std::string path, Query query, std::string cacheKey,
                           CancelToken cancel);
    static Task<Json> collections(Shared impl, ExtShow show, CancelToken cancel);
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
    if (auto known = saved(cacheKey)) co_return std::move(*known);
    Task<Turnstile::Place> entering = Turnstile::enter(impl->turns, cancel);
    const Turnstile::Place place = co_await entering;
    // The one before may have asked the same.
    if (auto known = saved(cacheKey)) co_return std::move(*known);
    Task<Json> sending = send(impl, path, std::move(query), cacheKey, cancel);
    Json results = co_await sending;
    co_return results;
}

Task<Json> ITunesSource::Impl::send(Shared impl, std::string path, Query query,
                                    std::string cacheKey, CancelToken cancel) {
    Task<> waiting = impl->polite.wait(cancel);
    co_await waiting;
    cancel.check();
    HttpRequest request;
    request.url = HttpAddress::withQuery(
        HttpAddress::rootOf("MARLET_ITUNES_API", publicRoot) + "/" + path, std::move(query));
    request.headers = {{"accept", "application/json"}};
    request.longest = longest;
    request.maxBody = largestAnswer;
    // What another host says is no answer of the store, and would be kept as one.
    request.sameHostOnly = true;
    Task<HttpAnswer> asking =
        impl->session.get(std::move(request), HttpSession::Use::IgnoreCache, cancel);
    const HttpAnswer answer = co_await asking;
    const int status = answer.status;
    // The service refuses with 403 when it has had enough.
    if (status == 403 || status == 429 || status >= 500) {
        impl->polite.failed(status == 500 ? Politeness::Failure::Soft : Politeness::Failure::Hard);
        throw SourceError("The iTunes Store answered with an error (" + std::to_string(status) +
                          ")");
    }
    if (status != 200) co_return Json::array();
    Json results = resultsOf(parseJson(answer.body));
    impl->polite.succeeded();
    SourceCache::write(answer.body, cacheKey);
    co_return results;
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

Task<Json> ITunesSource::Impl::collections(Shared impl, ExtShow show, CancelToken cancel) {
    Task<Json> fetching = fetch(impl, "lookup", lookup(show.id, "tvSeason"), cancel);
    Json results = co_await fetching;
    impl->seasonIDs[show.id] = {ITunesAnswers::seasonCollections(results),
                                std::chrono::system_clock::now()};
    co_return results;
}

Task<SeasonIDs> ITunesSource::Impl::seasonCollections(Shared impl, ExtShow show,
                                                      CancelToken cancel) {
    const auto held = impl->seasonIDs.find(show.id);
    if (held != impl->seasonIDs.end() && SourceCache::isGood(held->second.at)) {
        SeasonIDs known = held->second.ids;
        co_return known;
    }
    Task<Json> asking = collections(impl, std::move(show), cancel);
    const Json results = co_await asking;
    co_return ITunesAnswers::seasonCollections(results);
}

Task<ExtShowInfo> ITunesSource::Impl::info(Shared impl, ExtShow show, CancelToken cancel) {
    Task<Json> asking = collections(impl, show, cancel);
    const Json results = co_await asking;
    co_return ITunesAnswers::showInfo(results, show);
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
