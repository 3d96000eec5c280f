#pragma once

#include <memory>

#include "foundation/errors.h"
#include "sources/async.h"
#include "sources/http_cache.h"
#include "sources/http_message.h"

namespace marlet {

/// The line is down, the host is unknown, the time is up, the answer is endless: no HTTP answer.
class TransportError : public MFError {
public:
    using MFError::MFError;
};

/// HTTP over Qt Network with the program's own cache in front. GET over http and https only, at
/// most 4 requests to a host at a time. Redirects to another host are not followed with the
/// Authorization header. Main context only; requests under way keep what they need alive.
class HttpSession {
public:
    enum class Use { CacheFirst, IgnoreCache };

    /// No cache when none is given.
    explicit HttpSession(std::shared_ptr<KeylessCache> cache = {});
    ~HttpSession();
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    KeylessCache* cache() const;
    /// Throws TransportError or CancelError; an HTTP status is never a failure here. Answers of
    /// status 200 go into the cache.
    Task<HttpAnswer> get(HttpRequest request, Use use, CancelToken cancel);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace marlet
