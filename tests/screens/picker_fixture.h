#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/model_fixture.h"
#include "screens/base/qt_text.h"
#include "screens/picker/picker_model.h"

namespace marlet::test {

inline constexpr const char* charade = "Charade (1963).mp4";
inline constexpr int observatory = 201750;

inline ResolvedFile placed(const std::filesystem::path& path, Guess guess, double minutes) {
    ResolvedFile file;
    file.file.url = path;
    file.file.size = 1000;
    file.file.duration = minutes * 60;
    file.guess = std::move(guess);
    return file;
}

/// The picker's model over the real one and the sample catalogue; the iTunes Store is a script.
class Picker : public ModelTest {
protected:
    Picker() { picker = std::make_unique<PickerModel>(*model); }
    ~Picker() override { picker.reset(); }

    PickerPane& pane() { return *picker->pane(); }
    PickerShow& show() { return *pane().show(); }
    HandForm& hand() { return *picker->hand(); }

    void open(const std::string& name) {
        model->matchPickerURL = library / name;
        picker->refresh();
    }
    /// A film without a match, as a person sees it who is to say what it is.
    void openFilm(const std::string& title, double minutes = 113) {
        Guess guess;
        guess.title = title;
        model->place({placed(library / charade, guess, minutes)});
        open(charade);
    }
    static std::string episodeName(int number) {
        return "The Tin Observatory/tin " + std::to_string(number) + ".mp4";
    }
    ResolvedFile episode(int number, int season = 1, const std::string& title = "") {
        Guess guess;
        guess.kind = MediaKind::tv;
        guess.title = "The Tin Observatory";
        guess.season = season;
        guess.episode = number;
        if (!title.empty()) guess.episodeTitle = title;
        ResolvedFile file = placed(library / episodeName(number), guess, 22);
        Match match;
        match.tmdbID = observatory;
        match.kind = MediaKind::tv;
        match.title = "The Tin Observatory";
        match.season = season;
        match.episode = number;
        file.match = match;
        return file;
    }
    /// The page of the show of 2017 for one of these files.
    void openShow(const std::vector<ResolvedFile>& files, int number) {
        model->place(files);
        open(episodeName(number));
        untilIdle();
        choose(std::to_string(observatory));
        pane().use();
        untilIdle();
    }
    /// The result of that number in the database.
    void choose(const std::string& id) {
        for (int row = 0; row < pane().results()->rowCount(); ++row)
            if (cell(pane().results(), row, "key") == id) pane().setResult(row);
    }
    void untilIdle() {
        while (pane().isAsking() || show().isAsking() || hand().isAsking()) pause();
    }
    template <typename Done>
    static void until(const Done& done) {
        while (!done()) pause();
    }
    std::vector<std::string> titles(QAbstractListModel* list) const {
        std::vector<std::string> found;
        const int role = list->roleNames().key("title");
        for (int row = 0; row < list->rowCount(); ++row)
            found.push_back(fromQt(list->data(list->index(row), role).toString()));
        return found;
    }
    std::string cell(QAbstractListModel* list, int row, const char* role) const {
        return fromQt(list->data(list->index(row), list->roleNames().key(role)).toString());
    }
    std::vector<std::string> results() { return titles(pane().results()); }
    std::vector<std::string> episodes() { return titles(show().episodes()); }
    void useTab(const QString& name) {
        picker->setTab(static_cast<int>(picker->tabs().indexOf(name)));
    }

    std::unique_ptr<PickerModel> picker;
};

}  // namespace marlet::test
