#pragma once

// For .cpp files that ask a service: nlohmann's types stay out of every other header.

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "sources/async.h"
#include "sources/http_message.h"
#include "sources/http_session.h"
#include "sources/json_object.h"
#include "sources/politeness.h"
#include "sources/turnstile.h"

namespace marlet {

/// What the catalogues without published rules have in common: one request at a time with a gap
/// before it, and what is asked twice at once is asked once. Main context only; calls under way
/// keep it alive.
class PoliteService {
public:
    explicit PoliteService(std::chrono::milliseconds gap) : polite(gap) {}

    using Shared = std::shared_ptr<PoliteService>;
    using Ask = std::function<Task<Json>()>;

    /// The saved answer of this key, or what `ask` gives when its turn comes and still nobody has
    /// saved one. To save it is up to `ask`. Throws what that throws, and CancelError.
    static Task<Json> answer(Shared service, std::string cacheKey, Ask ask, CancelToken cancel);
    /// One request, for use within a turn. Throws TransportError and CancelError; any HTTP status
    /// is an answer.
    static Task<HttpAnswer> get(Shared service, HttpRequest request, CancelToken cancel);
    /// For JSON from this host alone, within the bounds that hold for every such service.
    static HttpRequest request(std::string url);

    Politeness polite;

private:
    std::shared_ptr<Turnstile> turns_ = std::make_shared<Turnstile>(1);
    HttpSession session_;
};

}  // namespace marlet
