#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "foundation/preferences.h"
#include "foundation/records.h"

namespace marlet {

/// The person's stored settings, each with its default, read at the time they are needed.
namespace Settings {

/// The store on disk (Paths::preferencesFile()); every change is written through at once.
std::unique_ptr<Preferences> open();

/// Whether a write lays a file out anew whose sound is over the limit. Absent or odd means yes.
bool fixForAppleTV();
void setFixForAppleTV(bool on);
bool allowLibraryWrites();
bool outputSameFolder();
/// Where new files go: the stored folder, or "Desktop" in the home folder.
std::filesystem::path outputFolder();
ArtworkStyle artworkStyle();
/// A comma list such as "English, French".
std::string keepLanguages();
/// Whether the question that "Allow changes to my Media Library" asks first was answered once.
bool libraryWritesExplained();
enum class Appearance { automatic, light, dark };
Appearance appearance();
/// The switch of the Apple TV source, stored as "sourceOn.appleTV"; absent, it is on. The order
/// stands in SourceSettings.
bool appleTVOn();
void setAppleTVOn(bool on);
/// The address of the model on this computer as the person typed it, "" for none, and which of its
/// models to ask, "" for its first. LocalModel reads them.
std::string localModel();
void setLocalModel(const std::string& address);
std::string localModelName();
void setLocalModelName(const std::string& name);

}  // namespace Settings
}  // namespace marlet
