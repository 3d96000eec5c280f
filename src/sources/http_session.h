#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/errors.h"
#include "sources/async.h"
#include "sources/http_cache.h"

namespace marlet {

/// The line is down, the host is unknown, the time is up, the answer is endless: no HTTP answer.
class TransportError : public MFError {
public:
    using MFError::MFError;
};

struct HttpRequest {
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::chrono::milliseconds timeout{60000};  ///< without any byte coming in
    /// Largest body taken, bytes; a longer one is a TransportError.
    std::size_t maxBody = 64 * 1024 * 1024;
};

struct HttpAnswer {
    int status = 0;
    Bytes body;
    std::vector<std::pair<std::string, std::string>> headers;
    bool fromCache = false;
};

/// HTTP over Qt Network with the program's own cache in front. GET only. Redirects to another
/// host are not followed with the Authorization header. Main context only.
class HttpSession {
public:
    enum class Use { CacheFirst, IgnoreCache };

    /// No cache when none is given.
    explicit HttpSession(std::shared_ptr<KeylessCache> cache = {});
    ~HttpSession();
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    KeylessCache* cache() const;
    /// Throws TransportError or CancelError. Answers of status 200 go into the cache.
    Task<HttpAnswer> get(HttpRequest request, Use use, CancelToken cancel);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace marlet
