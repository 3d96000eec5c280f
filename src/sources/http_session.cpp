#include "sources/http_session.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <deque>
#include <map>
#include <utility>

#include "foundation/text.h"

namespace marlet {
namespace {

constexpr int connectionsPerHost = 4;
constexpr int mostRedirects = 10;
constexpr qint64 readAhead = 1024 * 1024;  // bytes

/// Lets so many in at a time, the others in the order in which they came.
struct Turnstile {
    int inside = 0;
    std::deque<Gate> waiting;
};

/// A place at a host's turnstile, given back on every way out.
class Place {
public:
    explicit Place(std::shared_ptr<Turnstile> turnstile) : turnstile_(std::move(turnstile)) {}
    ~Place() {
        if (!taken_) return;
        turnstile_->inside--;
        // An open gate is that of a caller who was cancelled and has left the queue. The next one
        // takes its place before open() returns.
        while (!turnstile_->waiting.empty()) {
            const Gate next = turnstile_->waiting.front();
            turnstile_->waiting.pop_front();
            if (next.isOpen()) continue;
            next.open();
            return;
        }
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    bool tryTake() {
        if (turnstile_->inside >= connectionsPerHost) return false;
        turnstile_->inside++;
        return taken_ = true;
    }

private:
    std::shared_ptr<Turnstile> turnstile_;
    bool taken_ = false;
};

/// Outlives the signal that ended it.
struct DeleteLater {
    void operator()(QNetworkReply* reply) const {
        reply->disconnect();
        reply->abort();
        reply->deleteLater();
    }
};
using Reply = std::unique_ptr<QNetworkReply, DeleteLater>;

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

/// Errors that only restate a status of 400 and above: those are answers.
bool isStatusError(QNetworkReply::NetworkError error) {
    return error >= QNetworkReply::ContentAccessDenied ||
           error == QNetworkReply::ProxyAuthenticationRequiredError;
}

QNetworkRequest prepared(const QUrl& url, const HttpRequest& request, bool withSecrets) {
    QNetworkRequest wire(url);
    wire.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                      QNetworkRequest::ManualRedirectPolicy);
    wire.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    wire.setHeader(QNetworkRequest::UserAgentHeader, "Marlet");
    wire.setTransferTimeout(static_cast<int>(request.timeout.count()));
    for (const auto& [name, value] : request.headers) {
        const bool secret = Text::lower(name) == "authorization";
        if (!secret || withSecrets)
            wire.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }
    return wire;
}

/// What came in so far, and why it ended.
struct Incoming {
    Bytes body;
    bool tooLarge = false;
    Gate ended;
};

void drain(QNetworkReply* reply, Incoming& incoming, std::size_t limit) {
    const QByteArray piece = reply->readAll();
    if (incoming.body.size() + static_cast<std::size_t>(piece.size()) > limit) {
        incoming.tooLarge = true;
        incoming.ended.open();
        return;
    }
    incoming.body.insert(incoming.body.end(), piece.begin(), piece.end());
}

[[noreturn]] void failTransport(QNetworkReply* reply) {
    // We abort only what nobody waits for any more; what Qt aborts has been silent too long.
    if (reply->error() == QNetworkReply::OperationCanceledError)
        throw TransportError("the server didn't answer in time");
    throw TransportError(reply->errorString().toStdString());
}

HttpAnswer answerOf(QNetworkReply* reply, Bytes body) {
    HttpAnswer answer;
    answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError &&
        (answer.status == 0 || !isStatusError(reply->error()))) {
        failTransport(reply);
    }
    answer.body = std::move(body);
    for (const auto& [name, value] : reply->rawHeaderPairs())
        answer.headers.emplace_back(name.toStdString(), value.toStdString());
    return answer;
}

/// One exchange, with redirects as answers.
Task<HttpAnswer> exchange(std::shared_ptr<QNetworkAccessManager> manager, QUrl url,
                          HttpRequest request, bool withSecrets, CancelToken cancel) {
    auto incoming = std::make_shared<Incoming>();
    const Reply reply(manager->get(prepared(url, request, withSecrets)));
    QNetworkReply* raw = reply.get();
    // Qt's own thread must not run ahead of us with an answer that never ends.
    raw->setReadBufferSize(readAhead);
    const std::size_t limit = request.maxBody;
    QObject::connect(raw, &QNetworkReply::readyRead, raw,
                     [raw, incoming, limit] { drain(raw, *incoming, limit); });
    QObject::connect(raw, &QNetworkReply::finished, raw, [incoming] { incoming->ended.open(); });
    const auto registration = cancel.onCancel([incoming] { incoming->ended.open(); });
    co_await incoming->ended;
    cancel.check();
    if (!incoming->tooLarge && raw->isOpen()) drain(raw, *incoming, limit);
    if (incoming->tooLarge) throw TransportError("the answer is too large");
    co_return answerOf(raw, std::move(incoming->body));
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
        if (!entry) entry = std::make_shared<Turnstile>();
        return entry;
    }

    static Task<HttpAnswer> exchangeInTurn(std::shared_ptr<Impl> impl, QUrl url,
                                           HttpRequest request, bool withSecrets,
                                           CancelToken cancel);
    static Task<HttpAnswer> follow(std::shared_ptr<Impl> impl, HttpRequest request,
                                   CancelToken cancel);
    static Task<HttpAnswer> get(std::shared_ptr<Impl> impl, HttpRequest request, Use use,
                                CancelToken cancel);
};

Task<HttpAnswer> HttpSession::Impl::exchangeInTurn(std::shared_ptr<Impl> impl, QUrl url,
                                                   HttpRequest request, bool withSecrets,
                                                   CancelToken cancel) {
    const std::shared_ptr<Turnstile> turnstile = impl->turnstile(url);
    Place place(turnstile);
    while (!place.tryTake()) {
        Gate turn;
        turnstile->waiting.push_back(turn);
        const auto registration = cancel.onCancel([turn] { turn.open(); });
        co_await turn;
        cancel.check();
    }
    Task<HttpAnswer> exchanging = exchange(impl->manager, url, request, withSecrets, cancel);
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
        if (!next) co_return answer;
        url = *next;
    }
    throw TransportError("too many redirects");
}

Task<HttpAnswer> HttpSession::Impl::get(std::shared_ptr<Impl> impl, HttpRequest request, Use use,
                                        CancelToken cancel) {
    cancel.check();
    if (impl->cache && use == Use::CacheFirst) {
        std::optional<HttpAnswer> saved = impl->cache->find(request);
        if (saved) co_return std::move(*saved);
    }
    Task<HttpAnswer> following = follow(impl, request, cancel);
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
