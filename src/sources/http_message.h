#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// Names and values as sent; names compare without case (RFC 9110, 5.1).
using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
    std::string url;
    HttpHeaders headers;
    std::chrono::milliseconds timeout{60000};  ///< without any byte coming in
    std::chrono::milliseconds longest{0};  ///< for the whole answer; 0: as long as bytes come in
    /// A redirect to another host is an answer, not followed: for an address that holds a key, and
    /// for answers that only that host may give.
    bool sameHostOnly = false;
    /// Largest body taken, bytes; a longer one is a TransportError.
    std::size_t maxBody = 64 * 1024 * 1024;
};

struct HttpAnswer {
    int status = 0;
    Bytes body;
    HttpHeaders headers;
    bool fromCache = false;

    /// The first header of that name.
    std::optional<std::string> header(const std::string& name) const;
};

}  // namespace marlet
