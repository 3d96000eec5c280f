// Reads the JSON of History without keeping a tree of it: tens of thousands of entries are read
// while somebody waits.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "app/history_fields.h"
#include "app/history_json.h"

namespace marlet::HistoryJson {

namespace {

template <typename T>
constexpr bool isNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

template <typename Target, typename Value>
bool fill(Target& target, Value value) {
    if constexpr (std::is_same_v<Target, double>) {
        target = static_cast<double>(value);
    } else if constexpr (std::is_integral_v<Value>) {
        if (!std::in_range<Target>(value)) return false;
        target = static_cast<Target>(value);
    } else {
        // "5.0", as some writers have it; beyond 2^53 no floating number tells an exact one.
        constexpr double exact = 9007199254740992;
        if (value != std::trunc(value) || std::abs(value) > exact) return false;
        return fill(target, static_cast<std::int64_t>(value));
    }
    return true;
}

/// False when a value of this type doesn't belong there.
template <typename Target, typename Value>
bool assign(Target& target, const Value& value) {
    if constexpr (isOptional<Target>) {
        target.reset();
        if constexpr (std::is_same_v<Value, std::nullptr_t>)
            return true;
        else
            return assign(target.emplace(), value);
    } else if constexpr (std::is_same_v<Target, Moment> && std::is_same_v<Value, std::string>) {
        const auto date = Dates::parseIso8601(value);
        target = date.value_or(Moment{});
        return date.has_value();
    } else if constexpr (std::is_same_v<Target, Value>) {
        target = value;
        return true;
    } else if constexpr (isNumber<Target> && isNumber<Value>) {
        return fill(target, value);
    } else {
        return false;
    }
}

std::optional<std::string> fromHex(const std::string& hex) {
    if (hex.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    for (const char* at = hex.data(); at != hex.data() + hex.size(); at += 2) {
        unsigned char byte = 0;
        const auto [end, error] = std::from_chars(at, at + 2, byte, 16);
        if (error != std::errc() || end != at + 2) return std::nullopt;
        bytes.push_back(static_cast<char>(byte));
    }
    return bytes;
}

/// Called by the JSON library for each piece of the text in turn; false ends the reading.
class Reader {
public:
    HistoryList take() { return std::move(entries_); }

    bool null() { return value(nullptr); }
    bool boolean(bool given) { return value(given); }
    bool number_integer(std::int64_t given) { return value(given); }
    bool number_unsigned(std::uint64_t given) { return value(given); }
    bool number_float(double given, const std::string& /*text*/) { return value(given); }
    bool string(const std::string& given) {
        if (passedOver_ == 0 && inside_ == Inside::Changes) {
            entry_.changes.push_back(given);
            return true;
        }
        return value(given);
    }
    bool binary(const std::vector<std::uint8_t>& /*given*/) { return false; }

    bool start_array(std::size_t /*count*/) {
        if (passesOver()) return true;
        if (inside_ == Inside::Nothing) {
            inside_ = Inside::List;
            return true;
        }
        if (inside_ != Inside::Entry || field_ == unknown) return false;
        if (fields[field_].name != "changes") return false;
        given_[field_] = true;
        entry_.changes.clear();
        inside_ = Inside::Changes;
        return true;
    }
    bool end_array() {
        if (passedOver_ > 0)
            passedOver_--;
        else
            inside_ = inside_ == Inside::Changes ? Inside::Entry : Inside::Nothing;
        return true;
    }
    bool start_object(std::size_t /*count*/) {
        if (passesOver()) return true;
        if (inside_ != Inside::List) return false;
        entry_ = {};
        given_ = {};
        bytesOfPath_.reset();
        inside_ = Inside::Entry;
        return true;
    }
    bool end_object() {
        if (passedOver_ > 0) {
            passedOver_--;
            return true;
        }
        for (std::size_t i = 0; i < fields.size(); i++)
            if (!given_[i] && isNeeded(fields[i])) return false;
        if (bytesOfPath_) entry_.path = std::move(*bytesOfPath_);
        entries_.add(std::make_shared<const HistoryEntry>(std::move(entry_)));
        inside_ = Inside::List;
        return true;
    }
    bool key(const std::string& name) {
        if (passedOver_ > 0) return true;
        isBytesOfPath_ = name == pathBytes;
        // They mostly come in their order.
        for (std::size_t i = 0; i < fields.size(); i++) {
            field_ = field_ + 1 < fields.size() ? field_ + 1 : 0;
            if (fields[field_].name == name) return true;
        }
        field_ = unknown;
        return true;
    }
    bool parse_error(std::size_t /*at*/, const std::string& /*token*/,
                     const nlohmann::json::exception& /*error*/) {
        return false;
    }

private:
    enum class Inside { Nothing, List, Entry, Changes };
    static constexpr std::size_t unknown = fields.size();

    static bool isNeeded(const Field& field) {
        return std::visit(
            [](auto member) {
                return !isOptional<
                    std::remove_cvref_t<decltype(std::declval<HistoryEntry>().*member)>>;
            },
            field.member);
    }

    /// Whether an array or an object that begins here is one that nobody asked for.
    bool passesOver() {
        if (passedOver_ == 0 && !(inside_ == Inside::Entry && field_ == unknown)) return false;
        if (isBytesOfPath_ && passedOver_ == 0) return false;
        passedOver_++;
        return true;
    }

    template <typename Value>
    bool value(const Value& given) {
        if (passedOver_ > 0) return true;
        if (inside_ != Inside::Entry) return false;
        if (isBytesOfPath_) {
            if constexpr (std::is_same_v<Value, std::string>) bytesOfPath_ = fromHex(given);
            return bytesOfPath_.has_value();
        }
        if (field_ == unknown) return true;
        given_[field_] = true;
        return std::visit([&](auto member) { return assign(entry_.*member, given); },
                          fields[field_].member);
    }

    HistoryList entries_;
    HistoryEntry entry_;
    std::array<bool, fields.size()> given_{};
    std::optional<std::string> bytesOfPath_;
    std::size_t field_ = unknown;
    bool isBytesOfPath_ = false;
    Inside inside_ = Inside::Nothing;
    std::size_t passedOver_ = 0;  ///< open brackets of a value under an unknown key
};

}  // namespace

std::optional<HistoryList> decode(ByteView text) {
    try {
        Reader reader;
        if (!nlohmann::json::sax_parse(text.data(), text.data() + text.size(), &reader))
            return std::nullopt;
        return reader.take();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::size_t firstEntryAt(ByteView text) {
    const auto bracket = std::find(text.begin(), text.end(), '[');
    const auto entry = std::find_if(bracket + 1, text.end(), [](std::uint8_t byte) {
        return byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n';
    });
    return static_cast<std::size_t>(entry - text.begin());
}

}  // namespace marlet::HistoryJson
