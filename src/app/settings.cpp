#include "app/settings.h"

#include "app/headless.h"
#include "app/stored_preferences.h"
#include "foundation/paths.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"

namespace marlet::Settings {

namespace {

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
