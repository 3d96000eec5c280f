#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "foundation/preferences.h"
#include "foundation/records.h"

namespace marlet {

/// The person's stored settings, each with its default, read at the time they are needed.
namespace Settings {

/// The store on disk (Paths::preferencesFile()). A change holds at once and is written a moment
/// later.
std::unique_ptr<Preferences> open();

/// Whether a write lays a file out anew whose sound is over the limit. Absent or odd means yes.
bool fixForAppleTV();
void setFixForAppleTV(bool on);
bool allowLibraryWrites();
void setAllowLibraryWrites(bool on);
bool outputSameFolder();
void setOutputSameFolder(bool on);
/// Where new files go: the stored folder, or "Desktop" in the home folder.
std::filesystem::path outputFolder();
/// An empty path is the default again.
void setOutputFolder(const std::filesystem::path& folder);
ArtworkStyle artworkStyle();
void setArtworkStyle(ArtworkStyle style);
/// A comma list such as "English, French".
std::string keepLanguages();
/// Stored as it was typed; an emptied field is the default again.
void setKeepLanguages(const std::string& list);
/// Whether the question that "Allow changes to my Media Library" asks first was answered once.
bool libraryWritesExplained();
void setLibraryWritesExplained(bool answered);
enum class Appearance { automatic, light, dark };
Appearance appearance();
void setAppearance(Appearance look);
/// The look of this run: "--appearance dark" is the dark one and any other value the light one;
/// without the option it is the stored choice.
Appearance effectiveAppearance();
/// The switch of the Apple TV source, stored as "sourceOn.appleTV"; absent, it is on. The order
/// stands in SourceSettings.
bool appleTVOn();
void setAppleTVOn(bool on);
/// Whether the end of a long run is told by the desktop when the window isn't in front. Absent, it
/// is.
bool notifyAtEnd();
void setNotifyAtEnd(bool on);
/// The address of the model on this computer as the person typed it, "" for none, and which of its
/// models to ask, "" for its first. LocalModel reads them.
std::string localModel();
void setLocalModel(const std::string& address);
std::string localModelName();
void setLocalModelName(const std::string& name);

}  // namespace Settings
}  // namespace marlet
