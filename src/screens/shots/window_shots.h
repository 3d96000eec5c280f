#pragma once

#include <QQuickWindow>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/headless.h"
#include "screens/shots/picture_taker.h"

namespace marlet {

class Screens;

/// The pictures that a run's options ask for, of the real window: it is brought into each state,
/// and back when all are taken.
class WindowShots : public Headless::Shots {
public:
    WindowShots(AppModel& model, Screens& screens, QQuickWindow& window,
                const Headless::Options& options);
    Task<bool> take(Moment moment) override;

private:
    using Path = std::filesystem::path;

    // Sets of pictures.
    Task<> takeAbout();
    Task<> takeEmpty(Path folder);
    Task<> takeAll(Path folder, std::string base);
    Task<> takeForOthers(Path folder);
    Task<> takePosters(Path folder);
    Task<> takeDemo(Path folder);
    Task<> takeQueue(std::string name);

    // What they are made of.
    Task<> inBothLooks(Path file);
    Task<> one(Path file, QString sheet = {});
    Task<> inspect(int page);
    Task<> pick(Path file, Path picture, int shownEpisodes);
    Task<> underSheet(const char* sheet, std::function<void()> open, Path picture);
    Task<> shut(QString sheet);
    const LibraryItem* chosenItem() const;
    /// Selects the item and its file that the options name, or the first.
    Task<> select();
    void show(int tab);
    void putBack();

    AppModel& model_;
    Screens& screens_;
    QQuickWindow& window_;
    const ShotOptions options_;
    const bool scans_;
    PictureTaker taker_;
    std::vector<std::optional<bool>> looks_;  ///< dark or not; none: as it is
    bool allSaved_ = true;
};

}  // namespace marlet
