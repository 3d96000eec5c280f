#pragma once

#include <optional>
#include <string>

#include "sources/async.h"

namespace marlet {

/// Whether TMDB takes a token, found out by one search past everything saved.
namespace KeyCheck {

enum class Result {
    none,  ///< there is no token
    works,
    rejected,     ///< TMDB says that it isn't one
    unreachable,  ///< nobody could be asked, or what answered isn't TMDB
};

/// Throws nothing but CancelError.
Task<Result> check(std::optional<std::string> token, CancelToken cancel = {});
/// In words; never with the token.
std::string sentence(Result result);

}  // namespace KeyCheck
}  // namespace marlet
