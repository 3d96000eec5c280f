#pragma once

#include <QAbstractListModel>
#include <QStringList>
#include <optional>
#include <vector>

#include "screens/base/row_list.h"
#include "screens/picker/picker_asker.h"
#include "screens/picker/picker_file.h"
#include "screens/picker/picker_rows.h"
#include "screens/picker/picker_source.h"

namespace marlet {

/// The page of one show: its seasons, their episodes, a search through all of them, and whether
/// the choice is for one file or for all files of its season.
class PickerShow : public marlet::PickerAsker {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("a pane has it")
    Q_PROPERTY(bool open READ isOpen NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString facts READ facts NOTIFY changed)
    Q_PROPERTY(QString poster READ poster NOTIFY changed)
    Q_PROPERTY(QStringList seasons READ seasons NOTIFY seasonsChanged)
    Q_PROPERTY(int season READ season NOTIFY changed)  ///< index among seasons
    Q_PROPERTY(QAbstractListModel* episodes READ episodes CONSTANT)
    Q_PROPERTY(int episode READ episode WRITE setEpisode NOTIFY changed)  ///< -1: none
    Q_PROPERTY(QString note READ note NOTIFY changed)                     ///< above the episodes
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY changed)  ///< in place of the episodes
    Q_PROPERTY(bool searchesAll READ searchesAll CONSTANT)
    Q_PROPERTY(QString words READ words NOTIFY changed)        ///< searched for in all seasons
    Q_PROPERTY(int wholeCount READ wholeCount NOTIFY changed)  ///< 0: no choice for a season
    Q_PROPERTY(bool whole READ isWhole NOTIFY changed)
    Q_PROPERTY(QString wholeText READ wholeText NOTIFY changed)
    Q_PROPERTY(QString wholeNote READ wholeNote NOTIFY changed)
    Q_PROPERTY(bool canUse READ canUse NOTIFY changed)

public:
    PickerShow(AppModel& model, PickerSource& source, QObject* parent);
    ~PickerShow() override;

    bool isOpen() const { return show_.has_value(); }
    QString title() const;
    QString facts() const;
    QString poster() const;
    QStringList seasons() const;
    int season() const { return season_; }
    QAbstractListModel* episodes() { return &rows_; }
    int episode() const { return episode_; }
    void setEpisode(int row);
    QString note() const;
    QString emptyTitle() const;
    bool searchesAll() const { return source_.searchesAll(); }
    const QString& words() const { return words_; }
    int wholeCount() const;
    bool isWhole() const { return whole_ && words_.isEmpty() && wholeCount() > 0; }
    QString wholeText() const;
    QString wholeNote() const;
    bool canUse() const;

    void start(const PickerFile& file, const PickerTitle& show);
    Q_INVOKABLE void close();
    Q_INVOKABLE void pickSeason(int index);
    Q_INVOKABLE void search(const QString& words);
    Q_INVOKABLE void setWhole(bool whole);
    Q_INVOKABLE void use();
    /// Everything of this show anew, past what was saved.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void tryAgain();

    const std::optional<PickerTitle>& shown() const { return show_; }
    std::optional<int> seasonNumber() const;

Q_SIGNALS:
    void seasonsChanged();

private:
    using Fresh = PickerSource::Fresh;

    Task<> load(Fresh fresh, CancelToken cancel);
    Task<> loadSeason(Fresh fresh, CancelToken cancel);
    Task<> loadAll(Fresh fresh, CancelToken cancel);
    void take(std::vector<EpisodeChoice> files, int season, CancelToken cancel);
    void takeSeasons(std::vector<int> numbers);
    void chooseFirstSeason();
    void showRows();
    void preselect();
    QString fileFor(const PickerEpisode& episode) const;
    std::vector<PickerEpisode> hits() const;
    /// The files of the row whose numbers the season has.
    std::vector<EpisodeChoice> fittingRow() const;
    bool has(int episode) const;

    PickerSource& source_;
    PickerFile file_;
    std::optional<PickerTitle> show_;
    std::vector<int> numbers_;
    int season_ = -1;
    std::optional<std::vector<PickerEpisode>> inSeason_;  ///< absent until they are known
    std::optional<std::vector<PickerEpisode>> inAll_;
    std::vector<PickerEpisode> shownEpisodes_;  ///< as rows_ has them
    RowList<PickerEpisodeRow> rows_;
    int episode_ = -1;
    QString words_;
    bool whole_ = false;
    CancelToken loading_;  ///< the show and its season
    CancelToken searching_;
    CancelToken taking_;
};

}  // namespace marlet
