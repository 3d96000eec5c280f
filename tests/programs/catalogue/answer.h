#pragma once

#include <map>
#include <string>

namespace marlet::catalogue {

inline constexpr const char* jsonType = "application/json;charset=utf-8";

struct Answer {
    int status = 200;
    std::string body;
    std::string type = jsonType;
};

/// The decoded path and the query items, and how the asker calls this server.
struct Question {
    std::string path;
    std::string root;  ///< "http://127.0.0.1:40123"
    std::multimap<std::string, std::string> items;

    /// The item's value; empty when it is missing.
    std::string item(const std::string& key) const {
        const auto found = items.find(key);
        return found == items.end() ? std::string() : found->second;
    }
    bool has(const std::string& key) const { return items.contains(key); }
};

/// The service's own words for a refusal.
Answer refusal(int status);
/// As refusal, with a number and words of its own.
Answer refusal(int status, int code, const std::string& words);

}  // namespace marlet::catalogue
