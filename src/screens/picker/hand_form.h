#pragma once

#include <optional>
#include <string>
#include <vector>

#include "screens/picker/picker_asker.h"
#include "screens/picker/picker_file.h"

namespace marlet {

/// What a person types of a film or an episode that no source has. A show's or film's pictures
/// come from TMDB where that knows it.
class HandForm : public marlet::PickerAsker {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("the picker has it")
    Q_PROPERTY(bool open READ isOpen NOTIFY changed)
    Q_PROPERTY(bool tv READ isTV NOTIFY changed)
    Q_PROPERTY(QString intro READ intro NOTIFY changed)
    Q_PROPERTY(QString season MEMBER season_ NOTIFY edited)
    Q_PROPERTY(QString episode MEMBER episode_ NOTIFY edited)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY edited)
    Q_PROPERTY(QString description MEMBER description_ NOTIFY edited)
    Q_PROPERTY(QString date MEMBER date_ NOTIFY edited)
    Q_PROPERTY(bool dateWrong READ isDateWrong NOTIFY edited)
    Q_PROPERTY(bool canTag READ canTag NOTIFY edited)
    Q_PROPERTY(QString film READ film NOTIFY changed)  ///< a film of that name; empty: none

public:
    /// Where a person came from: the show that was found, or what was searched for.
    struct Start {
        bool tv = false;
        std::string title;        ///< the show, or the film
        std::int64_t tmdbID = 0;  ///< 0: not known
        std::optional<int> year;
        std::string poster;
        std::optional<int> season;
    };

    HandForm(AppModel& model, QObject* parent);
    ~HandForm() override;

    bool isOpen() const { return open_; }
    bool isTV() const { return start_.tv; }
    QString intro() const;
    const QString& title() const { return title_; }
    void setTitle(const QString& title);
    bool isDateWrong() const;
    bool canTag() const;
    QString film() const;

    void begin(const PickerFile& file, Start start);
    Q_INVOKABLE void back();
    /// Takes the film's title, story, date and cast for this episode.
    Q_INVOKABLE void useFilm();
    Q_INVOKABLE void tag();

Q_SIGNALS:
    void edited();

private:
    struct Film {
        std::int64_t id = 0;
        std::string title;
    };

    Task<> findShow(CancelToken cancel);
    Task<> findFilm(std::string title, CancelToken cancel);
    Task<> takeFilm(Film film, CancelToken cancel);

    PickerFile file_;
    Start start_;
    bool open_ = false;
    QString season_;
    QString episode_;
    QString title_;
    QString description_;
    QString date_;
    std::vector<std::string> cast_;
    std::optional<Film> film_;
    std::optional<std::int64_t> usedFilm_;
    QTimer pause_;
    CancelToken showSearch_;
    CancelToken filmSearch_;
};

}  // namespace marlet
