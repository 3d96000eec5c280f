#include "sources/local_server.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QUrl>
#include <algorithm>
#include <memory>
#include <utility>

#include "sources/clock.h"
#include "sources/http_exchange.h"
#include "sources/http_session.h"

namespace marlet::LocalServer {
namespace {

const QString localName = QStringLiteral("localhost");

constexpr const char* noAddress =
    "The address of the local model can't be read. It looks like this: http://127.0.0.1:8080";
constexpr const char* withMore =
    "The address of the local model may hold no name, no password and no “?” or “#”";
constexpr const char* notHere =
    "Only a model on this computer is asked: its address is 127.0.0.1, [::1] or localhost";
constexpr const char* leadsAway =
    "“localhost” leads to another computer here, so the local model isn't asked";

bool isHere(const QHostAddress& address) {
    if (address.protocol() == QAbstractSocket::IPv4Protocol)
        return address.toIPv4Address() >> 24 == 127;
    // An IPv4 address in IPv6 clothes doesn't count: who writes that hides something.
    return address == QHostAddress(QHostAddress::LocalHostIPv6);
}

QUrl parsed(const std::string& root) {
    return QUrl(QString::fromStdString(root), QUrl::StrictMode);
}

/// Cancels a token on every way out.
class CancelAtEnd {
public:
    explicit CancelAtEnd(CancelToken token) : token_(std::move(token)) {}
    ~CancelAtEnd() { token_.cancel(); }
    CancelAtEnd(const CancelAtEnd&) = delete;
    CancelAtEnd& operator=(const CancelAtEnd&) = delete;

private:
    CancelToken token_;
};

Task<> cancelAfter(std::chrono::milliseconds time, CancelToken what, CancelToken unless) {
    try {
        Task<> sleeping = Clock::sleep(time, unless);
        co_await sleeping;
    } catch (const CancelError&) {
        co_return;
    }
    what.cancel();
}

/// What the name of this machine stands for; the lookup ends on its own when nobody waits.
Task<std::vector<std::string>> lookUp(QString name, CancelToken cancel) {
    auto found = std::make_shared<std::vector<std::string>>();
    Gate ended;
    const auto context = std::make_shared<QObject>();
    QHostInfo::lookupHost(name, context.get(), [found, ended](const QHostInfo& info) {
        for (const QHostAddress& address : info.addresses())
            found->push_back(address.toString().toStdString());
        ended.open();
    });
    const auto registration = cancel.onCancel([ended] { ended.open(); });
    co_await ended;
    cancel.check();
    co_return *found;
}

/// The addresses to try in turn, as they stand in an URL. Most servers listen on IPv4 alone.
Task<std::vector<QUrl>> placesOf(QUrl url, CancelToken cancel) {
    std::vector<QUrl> places;
    if (url.host() != localName) {
        places.push_back(url);
        co_return places;
    }
    Task<std::vector<std::string>> looking = lookUp(url.host(), cancel);
    std::vector<std::string> addresses = co_await looking;
    // It is this machine by its very name (RFC 6761, 6.3), also where nothing knows names.
    if (addresses.empty()) addresses = {"127.0.0.1"};
    if (!areHere(addresses)) throw MFError(leadsAway);
    std::stable_partition(addresses.begin(), addresses.end(), [](const std::string& each) {
        return each.find(':') == std::string::npos;
    });
    for (const std::string& address : addresses) {
        // The name isn't looked up a second time, when it might lead elsewhere.
        url.setHost(QString::fromStdString(address));
        if (std::find(places.begin(), places.end(), url) == places.end()) places.push_back(url);
    }
    co_return places;
}

Task<HttpAnswer> askAt(QUrl place, Question question, CancelToken cancel) {
    cancel.check();
    // Not deleted while one of its signals is being handled.
    const std::shared_ptr<QNetworkAccessManager> manager(
        new QNetworkAccessManager, [](QObject* ended) { ended->deleteLater(); });
    manager->setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    HttpRequest plain;
    plain.headers = {{"Accept", "application/json"}, {"Connection", "close"}};
    plain.timeout = std::chrono::milliseconds(0);  // the time of the whole is kept by ask
    std::optional<QByteArray> body;
    if (question.json) {
        plain.headers.emplace_back("Content-Type", "application/json");
        body = QByteArray::fromStdString(*question.json);
    }
    const QNetworkRequest wire = HttpExchange::prepared(place, plain, false);
    Task<HttpAnswer> exchanging =
        HttpExchange::run(manager, wire, std::move(body), question.maxBody, cancel);
    HttpAnswer answer = co_await exchanging;
    co_return answer;
}

Task<HttpAnswer> askInTurn(Question question, CancelToken cancel) {
    Task<std::vector<QUrl>> finding = placesOf(parsed(question.root + question.path), cancel);
    const std::vector<QUrl> places = co_await finding;
    for (std::size_t i = 0; i < places.size(); i++) {
        const bool last = i + 1 == places.size();
        try {
            Task<HttpAnswer> asking = askAt(places[i], question, cancel);
            HttpAnswer answer = co_await asking;
            co_return answer;
        } catch (const TransportError&) {
            if (last) throw;
        }
    }
    throw MFError(leadsAway);
}

}  // namespace

std::optional<std::string> refusal(const std::string& root) {
    const QUrl url = parsed(root);
    if (!url.isValid() || url.scheme() != "http" || url.host().isEmpty()) return noAddress;
    if (!url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment()) return withMore;
    if (url.host() != localName && !isHere(QHostAddress(url.host()))) return notHere;
    return std::nullopt;
}

bool areHere(const std::vector<std::string>& addresses) {
    return !addresses.empty() &&
           std::all_of(addresses.begin(), addresses.end(), [](const auto& it) {
               return isHere(QHostAddress(QString::fromStdString(it)));
           });
}

Task<HttpAnswer> ask(Question question, CancelToken cancel) {
    cancel.check();
    if (const auto refused = refusal(question.root)) throw MFError(*refused);
    CancelToken end;
    const CancelToken done;
    const auto registration = cancel.onCancel([end] { end.cancel(); });
    cancelAfter(question.atMost, end, done);
    const CancelAtEnd atEnd(done);
    try {
        Task<HttpAnswer> asking = askInTurn(question, end);
        HttpAnswer answer = co_await asking;
        co_return answer;
    } catch (const CancelError&) {
        cancel.check();
        throw TransportError("the server didn't answer in time");
    }
}

}  // namespace marlet::LocalServer
