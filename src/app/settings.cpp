#include "app/settings.h"

#include <QSettings>
#include <QStringList>
#include <QVariant>
#include <mutex>

#include "app/headless.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"

namespace marlet::Settings {

namespace {

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

/// One INI file. A job's thread reads settings too, so each call holds the lock.
class StoredPreferences : public Preferences {
public:
    explicit StoredPreferences(const std::filesystem::path& file)
        : settings_(qt(file.string()), QSettings::IniFormat) {}

    std::optional<bool> boolean(const std::string& key) const override {
        // An INI file keeps every value as text.
        const QString value = read(key).toString();
        if (value == QStringLiteral("true")) return true;
        if (value == QStringLiteral("false")) return false;
        return std::nullopt;
    }

    std::optional<std::string> text(const std::string& key) const override {
        const QVariant value = read(key);
        if (!value.isValid()) return std::nullopt;
        if (value.typeId() == QMetaType::QStringList) return unquoted(key);
        return value.toString().toStdString();
    }

    std::optional<std::vector<std::string>> texts(const std::string& key) const override {
        const QVariant value = read(key);
        if (!value.isValid()) return std::nullopt;
        std::vector<std::string> list;
        for (const QString& each : value.toStringList()) list.push_back(each.toStdString());
        return list;
    }

    void setBoolean(const std::string& key, bool value) override { write(key, value); }
    void setText(const std::string& key, const std::string& value) override {
        write(key, qt(value));
    }
    void setTexts(const std::string& key, const std::vector<std::string>& value) override {
        QStringList list;
        for (const std::string& each : value) list.append(qt(each));
        write(key, list);
    }
    void remove(const std::string& key) override {
        const std::lock_guard lock(mutex_);
        settings_.remove(qt(key));
        settings_.sync();
    }

private:
    /// A text with commas that was written by hand without quotes is a list to QSettings, which
    /// forgets the blanks around them. What a path is made of counts, so the line itself is read.
    std::optional<std::string> unquoted(const std::string& key) const {
        const auto file = FileOps::readSmall(Paths::preferencesFile());
        if (!file) return std::nullopt;
        bool isGeneral = false;
        for (const std::string& each : Text::split(textOf(*file), '\n')) {
            const std::string line = Text::trim(each);
            if (Text::startsWith(line, "[")) isGeneral = line == "[General]";
            const std::size_t equals = line.find('=');
            if (!isGeneral || equals == std::string::npos) continue;
            const std::string value = Text::trim(line.substr(equals + 1));
            if (Text::trim(line.substr(0, equals)) == key &&
                value.find_first_of("\"\\") == std::string::npos)
                return value;
        }
        return std::nullopt;
    }
    QVariant read(const std::string& key) const {
        const std::lock_guard lock(mutex_);
        return settings_.value(qt(key));
    }
    void write(const std::string& key, const QVariant& value) {
        const std::lock_guard lock(mutex_);
        settings_.setValue(qt(key), value);
        settings_.sync();
    }

    mutable std::mutex mutex_;
    QSettings settings_;  // guarded by mutex_
};

/// An emptied field is one that was never filled in.
void setOrRemove(const std::string& key, const std::string& value) {
    const std::string text = Text::trim(value);
    if (text.empty())
        Preferences::current().remove(key);
    else
        Preferences::current().setText(key, text);
}

}  // namespace

std::unique_ptr<Preferences> open() {
    return std::make_unique<StoredPreferences>(Paths::preferencesFile());
}

bool fixForAppleTV() {
    return Preferences::current().boolean("fixForAppleTV").value_or(true);
}

void setFixForAppleTV(bool on) {
    Preferences::current().setBoolean("fixForAppleTV", on);
}

bool allowLibraryWrites() {
    return Preferences::current().boolean("allowLibraryWrites").value_or(false);
}

void setAllowLibraryWrites(bool on) {
    Preferences::current().setBoolean("allowLibraryWrites", on);
}

bool outputSameFolder() {
    return Preferences::current().boolean("outputSameFolder").value_or(false);
}

void setOutputSameFolder(bool on) {
    Preferences::current().setBoolean("outputSameFolder", on);
}

std::filesystem::path outputFolder() {
    const std::string stored = Preferences::current().text("outputFolder").value_or("");
    return stored.empty() ? Paths::homeDir() / "Desktop" : std::filesystem::path(stored);
}

void setOutputFolder(const std::filesystem::path& folder) {
    // Not trimmed: a folder's name may end in a blank.
    if (folder.empty())
        Preferences::current().remove("outputFolder");
    else
        Preferences::current().setText("outputFolder", folder.string());
}

ArtworkStyle artworkStyle() {
    return Preferences::current().text("artworkStyle") == "tall" ? ArtworkStyle::tall
                                                                 : ArtworkStyle::wide;
}

void setArtworkStyle(ArtworkStyle style) {
    Preferences::current().setText("artworkStyle", style == ArtworkStyle::tall ? "tall" : "wide");
}

std::string keepLanguages() {
    return Preferences::current().text("keepLanguages").value_or("English");
}

void setKeepLanguages(const std::string& list) {
    setOrRemove("keepLanguages", list);
}

bool libraryWritesExplained() {
    return Preferences::current().boolean("libraryWritesExplained").value_or(false);
}

void setLibraryWritesExplained(bool answered) {
    Preferences::current().setBoolean("libraryWritesExplained", answered);
}

Appearance appearance() {
    const std::string stored = Preferences::current().text("appearance").value_or("");
    if (stored == "Light") return Appearance::light;
    if (stored == "Dark") return Appearance::dark;
    return Appearance::automatic;
}

void setAppearance(Appearance look) {
    constexpr const char* names[] = {"Automatic", "Light", "Dark"};
    Preferences::current().setText("appearance", names[static_cast<int>(look)]);
}

Appearance effectiveAppearance() {
    const auto forThisRun = Headless::value("--appearance", RunMode::arguments());
    if (!forThisRun) return appearance();
    return *forThisRun == "dark" ? Appearance::dark : Appearance::light;
}

bool appleTVOn() {
    return Preferences::current().boolean("sourceOn.appleTV").value_or(true);
}

void setAppleTVOn(bool on) {
    Preferences::current().setBoolean("sourceOn.appleTV", on);
}

bool notifyAtEnd() {
    return Preferences::current().boolean("notifyAtEnd").value_or(true);
}

void setNotifyAtEnd(bool on) {
    Preferences::current().setBoolean("notifyAtEnd", on);
}

std::string localModel() {
    return Preferences::current().text("localModel").value_or("");
}

void setLocalModel(const std::string& address) {
    setOrRemove("localModel", address);
}

std::string localModelName() {
    return Preferences::current().text("localModelName").value_or("");
}

void setLocalModelName(const std::string& name) {
    setOrRemove("localModelName", name);
}

}  // namespace marlet::Settings
