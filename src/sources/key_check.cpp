#include "sources/key_check.h"

#include <utility>

#include "foundation/errors.h"
#include "sources/tmdb_client.h"

namespace marlet::KeyCheck {
namespace {

/// 401 is TMDB's own refusal; 403 is that of what stands before it.
Result meaningOf(const TMDBError& error) {
    const bool refused =
        error.kind() == TMDBError::Kind::http && (error.status() == 401 || error.status() == 403);
    return refused ? Result::rejected : Result::unreachable;
}

}  // namespace

Task<Result> check(std::optional<std::string> token, CancelToken cancel) {
    const auto client =
        TMDBClient::make(std::move(token), TMDBClient::Refresh::Yes, std::move(cancel));
    if (!client) co_return Result::none;
    Result result = Result::works;
    try {
        auto searching = client->searchMovie("Alien");
        co_await searching;
    } catch (const CancelError&) {
        throw;
    } catch (const TMDBError& error) {
        result = meaningOf(error);
    } catch (const std::exception&) {
        result = Result::unreachable;
    }
    co_return result;
}

std::string sentence(Result result) {
    switch (result) {
        case Result::works:
            return "Key works.";
        case Result::rejected:
            return "TMDB rejected the key.";
        case Result::unreachable:
            return "TMDB couldn't be reached, so the key wasn't tried.";
        case Result::none:
            break;
    }
    return "No key yet.";
}

}  // namespace marlet::KeyCheck
