#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marlet {

/// Addresses of services, put together so that one question always has one spelling.
namespace HttpAddress {

using Query = std::vector<std::pair<std::string, std::string>>;

/// A service's root from the environment, else the usual one; without a slash at its end.
std::string rootOf(const char* variable, const char* usual);
/// RFC 3986, 2.3: what isn't unreserved is escaped.
std::string escaped(std::string_view text);
/// The address with the pairs as its query, sorted by name.
std::string withQuery(const std::string& address, Query query);
/// The pairs as name=value, sorted by name and joined with "&", nothing escaped: for a key.
std::string plainQuery(Query query);

}  // namespace HttpAddress
}  // namespace marlet
