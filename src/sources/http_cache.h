#pragma once

#include <cstdint>
#include <filesystem>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "sources/http_message.h"

namespace marlet {

/// Answers of status 200 to GET requests, kept for ever (whoever asks judges their age): a small
/// part in memory, the rest as one file per request in a folder that several caches and processes
/// may share. Neither key nor entry holds a secret header, so no token reaches the disk and a
/// changed token finds the same answers. Nothing here throws: a cache that fails is an empty one.
class KeylessCache {
public:
    struct Capacity {
        std::uint64_t memory = 20'000'000;  ///< bytes
        std::uint64_t disk = 200'000'000;   ///< bytes
    };

    explicit KeylessCache(std::filesystem::path folder) : KeylessCache(std::move(folder), {}) {}
    KeylessCache(std::filesystem::path folder, Capacity capacity);

    /// An entry that is damaged counts as absent.
    std::optional<HttpAnswer> find(const HttpRequest& request);
    /// Leaves alone what isn't of status 200.
    void store(const HttpRequest& request, const HttpAnswer& answer);
    void remove(const HttpRequest& request);
    /// Removes all entries, those of other caches on the folder included.
    void clear();

    const std::filesystem::path& folder() const { return folder_; }
    std::uint64_t memoryUsed() const { return memoryUsed_; }

    /// Method, address and the headers that are no secret: what an answer is found by.
    static std::string keyOf(const HttpRequest& request);

private:
    struct Held {
        std::string key;
        std::shared_ptr<const HttpAnswer> answer;
        std::uint64_t bytes = 0;
    };

    std::filesystem::path fileOf(const std::string& key) const;
    void hold(const std::string& key, const HttpAnswer& answer);
    void letGo(const std::string& key);
    void countDisk(std::uint64_t added);
    void prune();

    std::filesystem::path folder_;
    Capacity capacity_;
    std::list<Held> held_;  ///< last used first
    std::map<std::string, std::list<Held>::iterator> byKey_;
    std::uint64_t memoryUsed_ = 0;
    /// What the folder held when last looked at, and what was added since.
    std::optional<std::uint64_t> diskUsed_;
};

}  // namespace marlet
