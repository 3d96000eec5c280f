#include "sources/apple_tv.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "foundation/text.h"
#include "sources/apple_tv_answers.h"
#include "sources/polite_service.h"
#include "sources/region.h"
#include "sources/show_memory.h"
#include "sources/source_cache.h"

namespace marlet {

using AppleTVAnswers::Key;
using AppleTVAnswers::SeasonSummaries;
using HttpAddress::Query;

namespace {

using namespace std::chrono_literals;

constexpr const char* publicRoot = "https://uts-api.itunes.apple.com/uts/v3";
constexpr auto silence = 20s;  ///< without any byte coming in

std::string showPath(const ExtShow& show) {
    return "shows/" + HttpAddress::escaped(show.id);
}

/// An answer that repeats the key isn't kept with it.
Bytes withoutKey(const Bytes& answer, const std::optional<Key>& key) {
    if (!key) return answer;
    std::string text = textOf(answer);
    for (const std::string& form :
         {key->utsk, HttpAddress::escaped(key->utsk), Text::replaceAll(key->utsk, "/", "\\/")}) {
        text = Text::replaceAll(std::move(text), form, "");
    }
    return bytesOf(text);
}

}  // namespace

struct AppleTVSource::Impl : PoliteService {
    Impl() : PoliteService(Politeness::appleTVGap) {}

    std::optional<Key> key;
    ShowMemory<SeasonSummaries> known;

    using Shared = std::shared_ptr<Impl>;

    static Task<Json> send(Shared impl, std::string path, Query query, std::string cacheKey,
                           CancelToken cancel);
    static Task<> ensureKey(Shared impl, CancelToken cancel);
    static Task<Json> sendWithKey(Shared impl, std::string path, Query query, std::string cacheKey,
                                  CancelToken cancel);
    static Task<Json> call(Shared impl, std::string path, Query query, CancelToken cancel);
    static Task<AppleTVAnswers::SearchResult> search(Shared impl, std::string title,
                                                     CancelToken cancel);
    static Task<std::optional<SeasonSummaries>> summaries(Shared impl, ExtShow show,
                                                          CancelToken cancel);

    static Task<std::vector<ExtShow>> shows(Shared impl, std::string title, CancelToken cancel);
    static Task<std::vector<ExtMovie>> movies(Shared impl, std::string title, CancelToken cancel);
    static Task<ExtShowInfo> info(Shared impl, ExtShow show, CancelToken cancel);
    static Task<std::vector<int>> seasons(Shared impl, ExtShow show, CancelToken cancel);
    static Task<std::vector<ExtEpisode>> episodes(Shared impl, int season, ExtShow show,
                                                  CancelToken cancel);
    static Task<ExtMovie> details(Shared impl, ExtMovie movie, CancelToken cancel);

    HttpRequest question(const std::string& path, Query query) const;
    void judge(int status);
};

HttpRequest AppleTVSource::Impl::question(const std::string& path, Query query) const {
    const Query common = {{"caller", "js"},
                          {"v", "82"},
                          {"locale", Region::locale()},
                          {"sf", std::to_string(Region::storefront())}};
    query.insert(query.end(), common.begin(), common.end());
    if (key) {
        query.emplace_back("utsk", key->utsk);
        query.emplace_back("pfm", key->pfm);
    }
    HttpRequest made = request(HttpAddress::withQuery(
        HttpAddress::rootOf("MARLET_APPLE_TV_API", publicRoot) + "/" + path, std::move(query)));
    made.timeout = silence;
    return made;
}

void AppleTVSource::Impl::judge(int status) {
    if (status == 200) return;
    if (status == 429) polite.failed(Politeness::Failure::Hard);
    if (status >= 500 || status == 0) polite.failed(Politeness::Failure::Soft);
    // A key that the service no longer takes is asked for anew.
    if (status == 401 || status == 403) key.reset();
    throw SourceError("Apple TV answered with an error (" + std::to_string(status) + ")");
}

Task<Json> AppleTVSource::Impl::send(Shared impl, std::string path, Query query,
                                     std::string cacheKey, CancelToken cancel) {
    HttpAnswer answer;
    try {
        Task<HttpAnswer> asking = get(impl, impl->question(path, std::move(query)), cancel);
        answer = co_await asking;
    } catch (const TransportError&) {
        impl->polite.failed(Politeness::Failure::Soft);
        throw;
    }
    impl->judge(answer.status);
    Json json = parseJson(answer.body);
    impl->polite.succeeded();
    if (!cacheKey.empty()) SourceCache::write(withoutKey(answer.body, impl->key), cacheKey);
    co_return json;
}

Task<> AppleTVSource::Impl::ensureKey(Shared impl, CancelToken cancel) {
    if (impl->key) co_return;
    // Never kept: the answer is the key.
    Task<Json> sending = send(impl, "configurations", {}, "", cancel);
    const Json answer = co_await sending;
    impl->key = AppleTVAnswers::parseKey(answer);
    if (!impl->key) throw SourceError("Apple TV gave no key");
}

Task<Json> AppleTVSource::Impl::sendWithKey(Shared impl, std::string path, Query query,
                                            std::string cacheKey, CancelToken cancel) {
    Task<> ensuring = ensureKey(impl, cancel);
    co_await ensuring;
    Task<Json> sending = send(impl, path, std::move(query), cacheKey, cancel);
    Json answer = co_await sending;
    co_return answer;
}

Task<Json> AppleTVSource::Impl::call(Shared impl, std::string path, Query query,
                                     CancelToken cancel) {
    const std::string cacheKey = AppleTVSource::cacheKey(path, query);
    const auto ask = [=] { return sendWithKey(impl, path, query, cacheKey, cancel); };
    return answer(impl, cacheKey, ask, cancel);
}

Task<AppleTVAnswers::SearchResult> AppleTVSource::Impl::search(Shared impl, std::string title,
                                                               CancelToken cancel) {
    const Query query = {{"searchTerm", title}};
    Task<Json> calling = call(impl, "search", query, cancel);
    const Json answer = co_await calling;
    co_return AppleTVAnswers::parseSearch(answer);
}

Task<std::vector<ExtShow>> AppleTVSource::Impl::shows(Shared impl, std::string title,
                                                      CancelToken cancel) {
    Task<AppleTVAnswers::SearchResult> searching = search(impl, std::move(title), cancel);
    AppleTVAnswers::SearchResult found = co_await searching;
    co_return std::move(found.shows);
}

Task<std::vector<ExtMovie>> AppleTVSource::Impl::movies(Shared impl, std::string title,
                                                        CancelToken cancel) {
    Task<AppleTVAnswers::SearchResult> searching = search(impl, std::move(title), cancel);
    AppleTVAnswers::SearchResult found = co_await searching;
    co_return std::move(found.movies);
}

Task<ExtShowInfo> AppleTVSource::Impl::info(Shared impl, ExtShow show, CancelToken cancel) {
    Task<Json> calling = call(impl, showPath(show), {}, cancel);
    const Json answer = co_await calling;
    auto found = AppleTVAnswers::parseShowInfo(answer);
    if (!found) throw SourceError("Apple TV's answer tells of no show");
    co_return std::move(*found);
}

Task<std::optional<SeasonSummaries>> AppleTVSource::Impl::summaries(Shared impl, ExtShow show,
                                                                    CancelToken cancel) {
    std::optional<SeasonSummaries> known = impl->known.find(show.id);
    if (known) co_return known;
    Task<Json> calling = call(impl, showPath(show) + "/episodes", {}, cancel);
    const Json answer = co_await calling;
    std::optional<SeasonSummaries> found = AppleTVAnswers::parseSeasonSummaries(answer);
    if (found) impl->known.keep(show.id, *found);
    co_return found;
}

Task<std::vector<int>> AppleTVSource::Impl::seasons(Shared impl, ExtShow show, CancelToken cancel) {
    Task<std::optional<SeasonSummaries>> asking = summaries(impl, std::move(show), cancel);
    const std::optional<SeasonSummaries> found = co_await asking;
    std::vector<int> numbers;
    if (found) {
        for (const auto& [number, count] : *found) numbers.push_back(number);
    }
    co_return numbers;
}

Task<std::vector<ExtEpisode>> AppleTVSource::Impl::episodes(Shared impl, int season, ExtShow show,
                                                            CancelToken cancel) {
    Task<std::optional<SeasonSummaries>> asking = summaries(impl, show, cancel);
    const SeasonSummaries known = (co_await asking).value_or(SeasonSummaries());
    const auto own = known.find(season);
    Query query;
    if (own != known.end() && own->second >= 1) {
        query.emplace_back("nextToken", std::to_string(AppleTVAnswers::offset(season, known)) +
                                            ":" + std::to_string(own->second));
    }
    Task<Json> calling = call(impl, showPath(show) + "/episodes", std::move(query), cancel);
    const Json answer = co_await calling;
    std::vector<ExtEpisode> found = AppleTVAnswers::parseEpisodes(answer);
    std::erase_if(found, [season](const ExtEpisode& episode) { return episode.season != season; });
    co_return found;
}

Task<ExtMovie> AppleTVSource::Impl::details(Shared impl, ExtMovie movie, CancelToken cancel) {
    Task<Json> calling = call(impl, "movies/" + HttpAddress::escaped(movie.id), {}, cancel);
    const Json answer = co_await calling;
    auto filled = AppleTVAnswers::parseMovie(answer, movie.id);
    if (!filled) throw SourceError("Apple TV's answer tells of no film");
    // What the search told and the film's own record doesn't.
    filled->poster = movie.poster;
    if (!filled->year) filled->year = movie.year;
    if (filled->overview.empty()) filled->overview = movie.overview;
    if (filled->wide.empty()) filled->wide = movie.wide;
    if (filled->tall.empty()) filled->tall = movie.tall;
    co_return std::move(*filled);
}

AppleTVSource::AppleTVSource() : impl_(std::make_shared<Impl>()) {}
AppleTVSource::~AppleTVSource() = default;

Task<std::vector<ExtShow>> AppleTVSource::searchShows(std::string title, CancelToken cancel) {
    return Impl::shows(impl_, std::move(title), std::move(cancel));
}

Task<ExtShowInfo> AppleTVSource::showInfo(ExtShow show, CancelToken cancel) {
    return Impl::info(impl_, std::move(show), std::move(cancel));
}

Task<std::vector<int>> AppleTVSource::seasons(ExtShow show, CancelToken cancel) {
    return Impl::seasons(impl_, std::move(show), std::move(cancel));
}

Task<std::vector<ExtEpisode>> AppleTVSource::episodes(int season, ExtShow show,
                                                      CancelToken cancel) {
    return Impl::episodes(impl_, season, std::move(show), std::move(cancel));
}

Task<std::vector<ExtMovie>> AppleTVSource::searchMovies(std::string title, CancelToken cancel) {
    return Impl::movies(impl_, std::move(title), std::move(cancel));
}

Task<ExtMovie> AppleTVSource::movieDetails(ExtMovie movie, CancelToken cancel) {
    return Impl::details(impl_, std::move(movie), std::move(cancel));
}

std::string AppleTVSource::cacheKey(const std::string& path, Query query) {
    std::erase_if(query,
                  [](const auto& pair) { return pair.first == "utsk" || pair.first == "pfm"; });
    return "appletv|" + Region::locale() + "|" + std::to_string(Region::storefront()) + "|" + path +
           "|" + HttpAddress::plainQuery(std::move(query));
}

}  // namespace marlet
