#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

namespace marlet {

/// Which pictures of the windows a run is to take. Without windows all of it is ignored.
struct ShotOptions {
    using Path = std::filesystem::path;

    std::optional<Path> snapshots;      ///< folder: the empty window and the list of a scan
    std::optional<Path> shots;          ///< folder: every screen, light and dark
    std::optional<Path> websiteShots;   ///< folder: large pictures for others
    std::optional<Path> posterPicks;    ///< folder: the artwork page of every film
    std::optional<Path> pickerDemo;     ///< folder: the match picker on made-up titles
    std::optional<Path> emptyShots;     ///< folder: the screens with nothing in them
    std::optional<Path> about;          ///< file: About alone
    std::optional<Path> aboutWindow;    ///< file: About over the window
    std::optional<std::string> review;  ///< what names in `shots` begin with
    std::optional<std::string> window;  ///< "1200x800"
    std::optional<std::string> select;
    std::optional<std::string> inspectFile;
    bool shotsOnly = false;
    bool sampleFailure = false;
    bool keepOpen = false;
    bool watcher = false;

    bool ofAbout() const { return about || aboutWindow; }
    /// Whether windows are needed.
    bool any() const {
        return ofAbout() || snapshots || shots || websiteShots || posterPicks || pickerDemo ||
               emptyShots;
    }
};

/// Width and height in points, of "1200x800". Nothing for what is no size of a window.
std::optional<std::pair<int, int>> parseSize(const std::string& text);

}  // namespace marlet
