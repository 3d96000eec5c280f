#pragma once

#include <array>
#include <string_view>
#include <variant>

#include "app/history_entry.h"

namespace marlet::HistoryJson {

template <typename T>
using Member = T HistoryEntry::*;

/// A key of the JSON object and what it fills. Those that are optional here may be absent there.
struct Field {
    std::string_view name;
    std::variant<Member<std::string>, Member<Moment>, Member<bool>, Member<std::uint64_t>,
                 Member<std::vector<std::string>>, Member<std::optional<std::string>>,
                 Member<std::optional<int>>, Member<std::optional<bool>>,
                 Member<std::optional<double>>>
        member;
};

/// In the order in which they are written.
inline constexpr std::array<Field, 20> fields{{
    {"id", &HistoryEntry::id},
    {"date", &HistoryEntry::date},
    {"path", &HistoryEntry::path},
    {"title", &HistoryEntry::title},
    {"show", &HistoryEntry::show},
    {"season", &HistoryEntry::season},
    {"episode", &HistoryEntry::episode},
    {"isMovie", &HistoryEntry::isMovie},
    {"result", &HistoryEntry::result},
    {"before", &HistoryEntry::before},
    {"after", &HistoryEntry::after},
    {"changes", &HistoryEntry::changes},
    {"message", &HistoryEntry::message},
    {"size", &HistoryEntry::size},
    {"batchID", &HistoryEntry::batchID},
    {"isRestore", &HistoryEntry::isRestore},
    {"posterPath", &HistoryEntry::posterPath},
    {"year", &HistoryEntry::year},
    {"how", &HistoryEntry::how},
    {"summary", &HistoryEntry::summary},
}};

/// Beside "path" when that is no valid UTF-8: all its bytes, hexadecimal.
inline constexpr std::string_view pathBytes = "pathBytes";

template <typename T>
inline constexpr bool isOptional = false;
template <typename T>
inline constexpr bool isOptional<std::optional<T>> = true;

}  // namespace marlet::HistoryJson
