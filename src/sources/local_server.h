#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sources/async.h"
#include "sources/http_message.h"

namespace marlet {

/// A server on this machine, asked over HTTP. What is sent never leaves the machine: the address
/// is a loopback one (RFC 1122, 3.2.1.3; RFC 4291, 2.5.3), redirects are answers like others, and
/// no proxy is used, whatever the environment says. Main context only.
namespace LocalServer {

struct Question {
    std::string root;  ///< "http://127.0.0.1:8080", without a slash at its end
    std::string path;  ///< "/v1/models"
    /// Sent as JSON by POST; without one it is a GET.
    std::optional<std::string> json;
    /// For the whole of it, however steadily bytes come in.
    std::chrono::milliseconds atMost{30000};
    std::size_t maxBody = 256 * 1024;  ///< bytes
};

/// Why nothing is asked at this root, in a sentence; nothing when it may be asked.
std::optional<std::string> refusal(const std::string& root);
/// Each question has a connection of its own and leaves nothing behind. Throws MFError with the
/// refusal, TransportError, or CancelError as soon as the token is cancelled; any HTTP status is
/// an answer.
Task<HttpAnswer> ask(Question question, CancelToken cancel);
/// Whether these addresses, which a name stands for, all mean this machine; none at all don't.
bool areHere(const std::vector<std::string>& addresses);

}  // namespace LocalServer
}  // namespace marlet
