#pragma once

#include <QString>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

namespace marlet {

inline QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}
inline QString toQt(const std::optional<std::string>& text) {
    return text ? toQt(*text) : QString();
}
/// For showing only: a name that isn't UTF-8 can't be turned back into its path.
inline QString toQt(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}
/// A file's name for showing: from left to right whatever letters it begins with, or its extension
/// would stand in front of it. Unicode's isolates keep its place among other text.
inline QString nameToShow(const std::filesystem::path& name) {
    const QString text = toQt(name);
    const bool turns = std::ranges::any_of(text, [](QChar letter) {
        return letter.direction() == QChar::DirR || letter.direction() == QChar::DirAL;
    });
    return turns ? QChar(0x2066) + text + QChar(0x2069) : text;
}
inline std::string fromQt(const QString& text) {
    return text.toStdString();
}

}  // namespace marlet
