#include "sources/http_exchange.h"

#include <QNetworkReply>
#include <QUrl>
#include <utility>

#include "foundation/text.h"
#include "sources/http_session.h"

namespace marlet::HttpExchange {
namespace {

constexpr qint64 readAhead = 1024 * 1024;  // bytes

/// Outlives the signal that ended it.
struct DeleteLater {
    void operator()(QNetworkReply* reply) const {
        reply->disconnect();
        reply->abort();
        reply->deleteLater();
    }
};
using Reply = std::unique_ptr<QNetworkReply, DeleteLater>;

/// Errors that only restate a status of 400 and above: those are answers.
bool isStatusError(QNetworkReply::NetworkError error) {
    return error >= QNetworkReply::ContentAccessDenied ||
           error == QNetworkReply::ProxyAuthenticationRequiredError;
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

QNetworkReply* send(QNetworkAccessManager& manager, const QNetworkRequest& wire,
                    const std::optional<QByteArray>& body) {
    return body ? manager.post(wire, *body) : manager.get(wire);
}

}  // namespace

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

Task<HttpAnswer> run(std::shared_ptr<QNetworkAccessManager> manager, QNetworkRequest wire,
                     std::optional<QByteArray> body, std::size_t maxBody, CancelToken cancel) {
    auto incoming = std::make_shared<Incoming>();
    const Reply reply(send(*manager, wire, body));
    QNetworkReply* raw = reply.get();
    // Qt's own thread must not run ahead of us with an answer that never ends.
    raw->setReadBufferSize(readAhead);
    QObject::connect(raw, &QNetworkReply::readyRead, raw,
                     [raw, incoming, maxBody] { drain(raw, *incoming, maxBody); });
    QObject::connect(raw, &QNetworkReply::finished, raw, [incoming] { incoming->ended.open(); });
    const auto registration = cancel.onCancel([incoming] { incoming->ended.open(); });
    co_await incoming->ended;
    cancel.check();
    if (!incoming->tooLarge && raw->isOpen()) drain(raw, *incoming, maxBody);
    if (incoming->tooLarge) throw TransportError("the answer is too large");
    co_return answerOf(raw, std::move(incoming->body));
}

}  // namespace marlet::HttpExchange
