#include "sources/http_session.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QTimer>
#include <QUrl>
#include <chrono>
#include <map>
#include <utility>

#include "sources/http_exchange.h"
#include "sources/turnstile.h"

namespace marlet {
namespace {

constexpr int connectionsPerHost = 4;
constexpr int mostRedirects = 10;

QUrl addressOf(const std::string& text) {
    QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    const bool web = url.scheme() == "http" || url.scheme() == "https";
    if (!url.isValid() || !web || url.host().isEmpty()) throw TransportError("not a web address");
    return url;
}

std::string originOf(const QUrl& url) {
    return (url.scheme() + "://" + url.host() + ":" +
            QString::number(url.port(url.scheme() == "https" ? 443 : 80)))
        .toStdString();
}

/// Where an answer sends us; nothing when it is one to keep.
std::optional<QUrl> redirectOf(const HttpAnswer& answer, const QUrl& from) {
    switch (answer.status) {
        case 301:
        case 302:
        case 303:
        case 307:
        case 308:
            break;
        default:
            return std::nullopt;
    }
    const auto location = answer.header("location");
    if (!location) return std::nullopt;
    const QUrl target = from.resolved(QUrl(QString::fromStdString(*location)));
    return addressOf(target.toEncoded().toStdString());
}

}  // namespace

struct HttpSession::Impl {
    std::shared_ptr<KeylessCache> cache;
    /// Not deleted while one of its signals is being handled.
    std::shared_ptr<QNetworkAccessManager> manager{new QNetworkAccessManager,
                                                   [](QObject* ended) { ended->deleteLater(); }};
    std::map<std::string, std::shared_ptr<Turnstile>> hosts;

    std::shared_ptr<Turnstile> turnstile(const QUrl& url) {
        auto& entry = hosts[originOf(url)];
        if (!entry) entry = std::make_shared<Turnstile>(connectionsPerHost);
        return entry;
    }

    static Task<HttpAnswer> exchangeInTurn(std::shared_ptr<Impl> impl, QUrl url,
                                           HttpRequest request, bool withSecrets,
                                           CancelToken cancel);
    static Task<HttpAnswer> follow(std::shared_ptr<Impl> impl, HttpRequest request,
                                   CancelToken cancel);
    /// As follow, and ended when the request's longest time is over.
    static Task<HttpAnswer> followInTime(std::shared_ptr<Impl> impl, HttpRequest request,
                                         CancelToken cancel);
    static Task<HttpAnswer> get(std::shared_ptr<Impl> impl, HttpRequest request, Use use,
                                CancelToken cancel);
};

Task<HttpAnswer> HttpSession::Impl::exchangeInTurn(std::shared_ptr<Impl> impl, QUrl url,
                                                   HttpRequest request, bool withSecrets,
                                                   CancelToken cancel) {
    Task<Turnstile::Place> entering = Turnstile::enter(impl->turnstile(url), cancel);
    const Turnstile::Place place = co_await entering;
    const QNetworkRequest wire = HttpExchange::prepared(url, request, withSecrets);
    Task<HttpAnswer> exchanging =
        HttpExchange::run(impl->manager, wire, std::nullopt, request.maxBody, cancel);
    HttpAnswer answer = co_await exchanging;
    co_return answer;
}

Task<HttpAnswer> HttpSession::Impl::follow(std::shared_ptr<Impl> impl, HttpRequest request,
                                           CancelToken cancel) {
    QUrl url = addressOf(request.url);
    const std::string home = originOf(url);
    for (int i = 0; i <= mostRedirects; i++) {
        const bool withSecrets = originOf(url) == home;
        Task<HttpAnswer> exchanging = exchangeInTurn(impl, url, request, withSecrets, cancel);
        HttpAnswer answer = co_await exchanging;
        const std::optional<QUrl> next = redirectOf(answer, url);
        if (!next || (request.sameHostOnly && originOf(*next) != home)) co_return answer;
        url = *next;
    }
    throw TransportError("too many redirects");
}

Task<HttpAnswer> HttpSession::Impl::followInTime(std::shared_ptr<Impl> impl, HttpRequest request,
                                                 CancelToken cancel) {
    if (request.longest.count() <= 0) {
        Task<HttpAnswer> following = follow(impl, request, cancel);
        HttpAnswer answer = co_await following;
        co_return answer;
    }
    const CancelToken ended;
    const auto registration = cancel.onCancel([ended] { ended.cancel(); });
    const QObject context;  // the timer ends with it
    QTimer::singleShot(request.longest, &context, [ended] { ended.cancel(); });
    try {
        Task<HttpAnswer> following = follow(impl, request, ended);
        HttpAnswer answer = co_await following;
        co_return answer;
    } catch (const CancelError&) {
        cancel.check();
    }
    throw TransportError("the server didn't answer in time");
}

Task<HttpAnswer> HttpSession::Impl::get(std::shared_ptr<Impl> impl, HttpRequest request, Use use,
                                        CancelToken cancel) {
    cancel.check();
    if (impl->cache && use == Use::CacheFirst) {
        std::optional<HttpAnswer> saved = impl->cache->find(request);
        if (saved) co_return std::move(*saved);
    }
    Task<HttpAnswer> following = followInTime(impl, request, cancel);
    HttpAnswer answer = co_await following;
    if (impl->cache) impl->cache->store(request, answer);
    co_return answer;
}

HttpSession::HttpSession(std::shared_ptr<KeylessCache> cache) : impl_(std::make_shared<Impl>()) {
    impl_->cache = std::move(cache);
}

HttpSession::~HttpSession() = default;

KeylessCache* HttpSession::cache() const {
    return impl_->cache.get();
}

Task<HttpAnswer> HttpSession::get(HttpRequest request, Use use, CancelToken cancel) {
    return Impl::get(impl_, std::move(request), use, std::move(cancel));
}

}  // namespace marlet
