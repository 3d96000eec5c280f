#pragma once

#include <QString>
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
inline std::string fromQt(const QString& text) {
    return text.toStdString();
}

}  // namespace marlet
