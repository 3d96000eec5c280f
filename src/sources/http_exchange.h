#pragma once

// For .cpp files that speak HTTP: Qt Network stays out of every other header.

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QUrl>
#include <cstddef>
#include <memory>
#include <optional>

#include "sources/async.h"
#include "sources/http_message.h"

namespace marlet::HttpExchange {

/// What is the same for every server: no cookies, no remembered passwords, redirects as answers.
/// Without secrets the Authorization header stays behind.
QNetworkRequest prepared(const QUrl& url, const HttpRequest& request, bool withSecrets);

/// One request and its answer: POST with a body, else GET. Throws TransportError (also for an
/// answer above so many bytes) and CancelError; any HTTP status is an answer.
Task<HttpAnswer> run(std::shared_ptr<QNetworkAccessManager> manager, QNetworkRequest wire,
                     std::optional<QByteArray> body, std::size_t maxBody, CancelToken cancel);

}  // namespace marlet::HttpExchange
