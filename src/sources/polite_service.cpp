#include "sources/polite_service.h"

#include <optional>
#include <utility>

#include "sources/source_cache.h"

namespace marlet {

namespace {

using namespace std::chrono_literals;

/// The longest real answer has about 2 MB; what is built from JSON takes several times its bytes.
constexpr std::size_t largestAnswer = 16 * 1024 * 1024;
constexpr auto longest = 60s;  ///< for a whole answer

/// Nothing when there is no saved answer, or one that was damaged since.
std::optional<Json> saved(const std::string& cacheKey) {
    const auto bytes = SourceCache::read(cacheKey);
    if (!bytes) return std::nullopt;
    try {
        return parseJson(*bytes);
    } catch (const MFError&) {
        return std::nullopt;
    }
}

}  // namespace

Task<Json> PoliteService::answer(Shared service, std::string cacheKey, Ask ask,
                                 CancelToken cancel) {
    if (auto known = saved(cacheKey)) co_return std::move(*known);
    Task<Turnstile::Place> entering = Turnstile::enter(service->turns_, cancel);
    const Turnstile::Place place = co_await entering;
    // The one before may have asked the same.
    if (auto known = saved(cacheKey)) co_return std::move(*known);
    Task<Json> asking = ask();
    Json told = co_await asking;
    co_return told;
}

Task<HttpAnswer> PoliteService::get(Shared service, HttpRequest request, CancelToken cancel) {
    Task<> waiting = service->polite.wait(cancel);
    co_await waiting;
    cancel.check();
    Task<HttpAnswer> asking =
        service->session_.get(std::move(request), HttpSession::Use::IgnoreCache, cancel);
    HttpAnswer told = co_await asking;
    co_return told;
}

HttpRequest PoliteService::request(std::string url) {
    HttpRequest made;
    made.url = std::move(url);
    made.headers = {{"accept", "application/json"}};
    made.longest = longest;
    made.maxBody = largestAnswer;
    // The address may hold a key, and so may the one that a redirect names; and what another host
    // says is no answer of the service, but would be kept as one.
    made.sameHostOnly = true;
    return made;
}

}  // namespace marlet
