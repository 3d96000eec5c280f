#pragma once

// For .cpp files that read an answer: nlohmann's types stay out of every other header.

#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/errors.h"

namespace marlet {

using Json = nlohmann::json;

/// Throws MFError for what isn't JSON or nests deeper than any answer does.
Json parseJson(ByteView bytes);

/// Reads the fields of one object into a record, with failures that name the field.
class JsonObject {
public:
    /// Throws when the value isn't an object; `what` names it in failures.
    JsonObject(const Json& value, std::string what);

    template <typename T>
    JsonObject& required(const char* key, T& out) {
        const Json* value = find(key);
        if (value == nullptr) fail(key, "is missing");
        read(*value, key, out);
        return *this;
    }

    template <typename T>
    JsonObject& optional(const char* key, std::optional<T>& out) {
        out.reset();
        if (const Json* value = find(key)) read(*value, key, out.emplace());
        return *this;
    }

private:
    /// Null for an absent key and for a null.
    const Json* find(const char* key) const;
    [[noreturn]] void fail(const std::string& key, const std::string& fault) const;

    void read(const Json& value, const char* key, std::string& out) const;
    void read(const Json& value, const char* key, std::int64_t& out) const;
    void read(const Json& value, const char* key, int& out) const;
    void read(const Json& value, const char* key, double& out) const;

    template <typename T>
    void read(const Json& value, const char* key, std::vector<T>& out) const {
        if (!value.is_array()) fail(key, "is not a list");
        out.reserve(value.size());
        for (const Json& element : value) readRecord(element, path(key), out.emplace_back());
    }

    template <typename T>
    void read(const Json& value, const char* key, T& out) const {
        readRecord(value, path(key), out);
    }

    std::string path(const std::string& key) const;

    const Json& value_;
    std::string what_;
};

}  // namespace marlet
