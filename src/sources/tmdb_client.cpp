#include "sources/tmdb_client.h"

#include <QUrl>
#include <algorithm>
#include <chrono>

#include "foundation/paths.h"
#include "foundation/preferences.h"
#include "foundation/text.h"
#include "sources/clock.h"
#include "sources/details_loader.h"
#include "sources/http_address.h"
#include "sources/tmdb_decode.h"

namespace marlet {

using TMDBDecode::SearchResponse;
using TMDBDecode::SeasonImages;

namespace {

/// A list is asked for anew when its answer is older than this, seconds.
constexpr std::int64_t listAge = 21600;
/// The service's limit on items appended to one answer.
constexpr std::size_t seasonsPerRequest = 20;
/// The longest real answer has about 2 MB; what is built from JSON takes several times its bytes.
constexpr std::size_t largestAnswer = 16 * 1024 * 1024;
constexpr int mostTries = 4;
constexpr int tooManyRequests = 429;

/// The person's language, English and "no text", each once.
std::string imageLanguages() {
    return Text::join(DetailsLoader::unique({DetailsLoader::userLanguage(), "en", "null"}), ",");
}

std::string showPath(std::int64_t show) {
    return "/tv/" + std::to_string(show);
}

std::string seasonPath(std::int64_t show, int season) {
    return showPath(show) + "/season/" + std::to_string(season);
}

TMDBClient::Query fullQuery(const std::string& appended) {
    return {{"append_to_response", appended},
            {"language", "en-US"},
            {"include_image_language", imageLanguages()}};
}

}  // namespace

TMDBError TMDBError::http(int status) {
    return {Kind::http, status, "TMDB answered with an error (" + std::to_string(status) + ")"};
}

TMDBError TMDBError::noKey() {
    return {Kind::noKey, 0, "There is no TMDB key"};
}

TMDBError TMDBError::badResponse() {
    return {Kind::badResponse, 0, "TMDB's answer isn't one that can be used"};
}

std::string ImageRef::url(const std::string& path, const std::string& size) {
    if (Text::startsWith(path, "http")) return path;
    return HttpAddress::rootOf("MARLET_TMDB_IMAGES", "https://image.tmdb.org") + "/t/p/" + size +
           path;
}

struct TMDBClient::Impl {
    std::string token;
    Refresh refresh = Refresh::No;
    CancelToken cancel;
    HttpSession session;

    explicit Impl(std::shared_ptr<KeylessCache> cache) : session(std::move(cache)) {}

    HttpRequest request(const std::string& path, Query query) const;
    HttpSession::Use useFor(const std::string& path, const HttpRequest& request) const;

    // Each keeps the client alive for as long as it runs.
    using Shared = std::shared_ptr<Impl>;
    static Task<HttpAnswer> send(Shared impl, HttpRequest request, HttpSession::Use use);
    template <typename Record>
    static Task<Record> get(Shared impl, std::string path, Query query);
    static Task<std::vector<TMDBSearchHit>> search(Shared impl, std::string path, Query query);
    static Task<std::map<int, TMDBSeason>> seasons(Shared impl, std::vector<int> numbers,
                                                   std::int64_t show);
    static Task<std::vector<TMDBImage>> posters(Shared impl, std::string path);
    static Task<Bytes> image(Shared impl, std::string url);
};

HttpRequest TMDBClient::Impl::request(const std::string& path, Query query) const {
    HttpRequest made;
    // One question has one address, which the cache goes by.
    made.url = HttpAddress::withQuery(
        HttpAddress::rootOf("MARLET_TMDB_API", "https://api.themoviedb.org/3") + path,
        std::move(query));
    made.headers = {{"Authorization", "Bearer " + token}, {"accept", "application/json"}};
    made.maxBody = largestAnswer;
    return made;
}

HttpSession::Use TMDBClient::Impl::useFor(const std::string& path, const HttpRequest& made) const {
    if (refresh == Refresh::Yes) return HttpSession::Use::IgnoreCache;
    if (isList(path) && isStale(session.cache()->find(made), Clock::now(), listAge))
        return HttpSession::Use::IgnoreCache;
    return HttpSession::Use::CacheFirst;
}

Task<HttpAnswer> TMDBClient::Impl::send(Shared impl, HttpRequest request, HttpSession::Use use) {
    for (int attempt = 1;; attempt++) {
        Task<HttpAnswer> sending = impl->session.get(request, use, impl->cancel);
        HttpAnswer answer = co_await sending;
        if (answer.status == 0) throw TMDBError::badResponse();
        if (answer.status != tooManyRequests || attempt == mostTries) co_return answer;
        Task<> pause = Clock::sleep(std::chrono::seconds(attempt), impl->cancel);
        co_await pause;
    }
}

template <typename Record>
Task<Record> TMDBClient::Impl::get(Shared impl, std::string path, Query query) {
    const HttpRequest request = impl->request(path, std::move(query));
    Task<HttpAnswer> sending = send(impl, request, impl->useFor(path, request));
    const HttpAnswer answer = co_await sending;
    if (answer.status != 200) throw TMDBError::http(answer.status);
    try {
        Record record = TMDBDecode::decode<Record>(answer.body);
        co_return record;
    } catch (const MFError&) {
        // Kept, an answer cut short on its way would be believed for ever.
        impl->session.cache()->remove(request);
        throw;
    }
}

Task<std::vector<TMDBSearchHit>> TMDBClient::Impl::search(Shared impl, std::string path,
                                                          Query query) {
    Task<SearchResponse> asking = get<SearchResponse>(impl, path, query);
    SearchResponse response = co_await asking;
    co_return std::move(response.results);
}

Task<std::map<int, TMDBSeason>> TMDBClient::Impl::seasons(Shared impl, std::vector<int> numbers,
                                                          std::int64_t show) {
    std::map<int, TMDBSeason> result;
    for (std::size_t from = 0; from < numbers.size(); from += seasonsPerRequest) {
        std::vector<std::string> appended;
        const std::size_t to = std::min(from + seasonsPerRequest, numbers.size());
        for (std::size_t i = from; i < to; i++)
            appended.push_back("season/" + std::to_string(numbers[i]));
        const Query query = {{"append_to_response", Text::join(appended, ",")}};
        Task<TMDBSeasonBundle> asking = get<TMDBSeasonBundle>(impl, showPath(show), query);
        TMDBSeasonBundle bundle = co_await asking;
        for (auto& [number, season] : bundle.seasons) result[number] = std::move(season);
    }
    co_return result;
}

Task<std::vector<TMDBImage>> TMDBClient::Impl::posters(Shared impl, std::string path) {
    const Query query = {{"include_image_language", imageLanguages()}};
    Task<SeasonImages> asking = get<SeasonImages>(impl, path, query);
    SeasonImages images = co_await asking;
    if (!images.posters) co_return std::vector<TMDBImage>();
    co_return std::move(*images.posters);
}

Task<Bytes> TMDBClient::Impl::image(Shared impl, std::string url) {
    const QUrl address(QString::fromStdString(url), QUrl::StrictMode);
    const bool web = address.scheme() == "http" || address.scheme() == "https";
    if (!address.isValid() || !web || address.host().isEmpty()) throw TMDBError::badResponse();
    HttpRequest request;
    request.url = url;
    const auto use = impl->refresh == Refresh::Yes ? HttpSession::Use::IgnoreCache
                                                   : HttpSession::Use::CacheFirst;
    Task<HttpAnswer> sending = impl->session.get(request, use, impl->cancel);
    HttpAnswer answer = co_await sending;
    if (answer.status == 0) throw TMDBError::badResponse();
    if (answer.status != 200) throw TMDBError::http(answer.status);
    co_return std::move(answer.body);
}

std::shared_ptr<TMDBClient> TMDBClient::make(std::optional<std::string> token, Refresh refresh,
                                             CancelToken cancel) {
    if (!token || token->empty()) return nullptr;
    auto cache = std::make_shared<KeylessCache>(Paths::tmdbCacheDir());
    // An older build stored answers under keys that held the token.
    constexpr const char* migrated = "tmdbCacheKeyless";
    if (!Preferences::current().boolean(migrated).value_or(false)) {
        cache->clear();
        Preferences::current().setBoolean(migrated, true);
    }
    auto impl = std::make_shared<Impl>(std::move(cache));
    impl->token = std::move(*token);
    impl->refresh = refresh;
    impl->cancel = std::move(cancel);
    return std::shared_ptr<TMDBClient>(new TMDBClient(std::move(impl)));
}

Task<std::vector<TMDBSearchHit>> TMDBClient::searchMovie(std::string query,
                                                         std::optional<int> year) {
    Query pairs = {{"query", query}, {"include_adult", "false"}};
    if (year) pairs.emplace_back("year", std::to_string(*year));
    return Impl::search(impl_, "/search/movie", std::move(pairs));
}

Task<std::vector<TMDBSearchHit>> TMDBClient::searchShow(std::string query) {
    return Impl::search(impl_, "/search/tv", {{"query", query}});
}

Task<TMDBMovie> TMDBClient::movie(std::int64_t id) {
    return Impl::get<TMDBMovie>(impl_, "/movie/" + std::to_string(id), {});
}

Task<TMDBMovieFull> TMDBClient::movieFull(std::int64_t id) {
    return Impl::get<TMDBMovieFull>(impl_, "/movie/" + std::to_string(id),
                                    fullQuery("credits,release_dates,images"));
}

Task<TMDBShow> TMDBClient::show(std::int64_t id) {
    return Impl::get<TMDBShow>(impl_, showPath(id), {});
}

Task<TMDBShowFull> TMDBClient::showFull(std::int64_t id) {
    return Impl::get<TMDBShowFull>(impl_, showPath(id), fullQuery("content_ratings,images"));
}

Task<TMDBSeason> TMDBClient::season(int number, std::int64_t show) {
    return Impl::get<TMDBSeason>(impl_, seasonPath(show, number), {});
}

Task<std::map<int, TMDBSeason>> TMDBClient::seasons(std::vector<int> numbers, std::int64_t show) {
    return Impl::seasons(impl_, std::move(numbers), show);
}

Task<TMDBEpisodeFull> TMDBClient::episodeFull(std::int64_t show, int season, int episode) {
    return Impl::get<TMDBEpisodeFull>(
        impl_, seasonPath(show, season) + "/episode/" + std::to_string(episode),
        fullQuery("credits,images"));
}

Task<std::vector<TMDBImage>> TMDBClient::seasonPosters(std::int64_t show, int season) {
    return Impl::posters(impl_, seasonPath(show, season) + "/images");
}

Task<Bytes> TMDBClient::imageData(std::string path, std::string size) {
    return Impl::image(impl_, ImageRef::url(path, size));
}

bool TMDBClient::isList(const std::string& path) {
    static const Regex showOrSeason(R"(^/tv/\d+(/season/\d+)?$)");
    return Text::startsWith(path, "/search/") || showOrSeason.matchesIn(path);
}

bool TMDBClient::isStale(const std::optional<HttpAnswer>& cached, Moment now, std::int64_t maxAge) {
    if (!cached || cached->status == 0) return true;
    const auto text = cached->header("date");
    const auto date = text ? Dates::parseHttpDate(*text) : std::nullopt;
    if (!date) return true;
    return (now - *date).count() > maxAge;
}

}  // namespace marlet
