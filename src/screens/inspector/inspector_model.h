#pragma once

#include <QtQml/qqmlregistration.h>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

#include "screens/base/row_list.h"
#include "screens/base/screen_part.h"
#include "screens/inspector/inspected.h"
#include "screens/inspector/inspector_artwork.h"
#include "screens/inspector/inspector_compare.h"
#include "screens/inspector/inspector_details.h"
#include "screens/inspector/inspector_tracks.h"

namespace marlet {

class AppModel;

/// One file of a season.
struct EpisodeRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString state MEMBER state)
    Q_PROPERTY(QString verdict MEMBER verdict)  ///< the state in words

public:
    QString key;
    QString title;
    QString state;
    QString verdict;
    bool operator==(const EpisodeRow&) const = default;
};

/// The file or season in the inspector: its verdict, its details, tracks and artwork.
class InspectorModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(bool empty READ isEmpty NOTIFY changed)
    Q_PROPERTY(QString fileName READ fileName NOTIFY changed)
    Q_PROPERTY(QString state READ state NOTIFY changed)  ///< "ready", "look", "none"
    Q_PROPERTY(QString verdict READ verdict NOTIFY changed)
    Q_PROPERTY(QStringList reasons READ reasons NOTIFY changed)
    Q_PROPERTY(bool canConfirm READ canConfirm NOTIFY changed)
    Q_PROPERTY(QString match READ match NOTIFY changed)  ///< what the file is taken to be
    Q_PROPERTY(QString source READ source NOTIFY changed)
    Q_PROPERTY(QString apple READ apple NOTIFY changed)  ///< what comes from Apple; may be empty
    Q_PROPERTY(QString pickText READ pickText NOTIFY changed)
    Q_PROPERTY(bool loading READ isLoading NOTIFY changed)
    Q_PROPERTY(bool failed READ hasFailed NOTIFY changed)  ///< no details could be had
    Q_PROPERTY(bool hasDraft READ hasDraft NOTIFY changed)
    Q_PROPERTY(QAbstractItemModel* episodes READ episodes CONSTANT)
    Q_PROPERTY(int episode READ episode NOTIFY changed)  ///< the shown one's place
    Q_PROPERTY(int page READ page WRITE setPage NOTIFY changed)
    Q_PROPERTY(marlet::InspectorDetails* details READ details CONSTANT)
    Q_PROPERTY(marlet::InspectorTracks* tracks READ tracks CONSTANT)
    Q_PROPERTY(marlet::InspectorArtwork* artwork READ artwork CONSTANT)
    Q_PROPERTY(marlet::InspectorCompare* compare READ compare CONSTANT)

public:
    enum Page { detailsPage, tracksPage, artworkPage };
    Q_ENUM(Page)

    explicit InspectorModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

    Q_INVOKABLE void chooseEpisode(int row);
    Q_INVOKABLE void confirm();
    Q_INVOKABLE void openPicker();
    Q_INVOKABLE void loadAgain();

    bool isEmpty() const { return shown_.empty; }
    QString fileName() const { return shown_.fileName; }
    QString state() const { return shown_.state; }
    QString verdict() const { return shown_.verdict; }
    QStringList reasons() const { return shown_.reasons; }
    bool canConfirm() const { return shown_.canConfirm; }
    QString match() const { return shown_.match; }
    QString source() const { return shown_.source; }
    QString apple() const { return shown_.apple; }
    QString pickText() const { return shown_.pickText; }
    bool isLoading() const { return shown_.loading; }
    bool hasFailed() const { return shown_.failed; }
    bool hasDraft() const { return shown_.hasDraft; }
    RowListBase* episodes() { return &episodes_; }
    int episode() const { return shown_.episode; }
    int page() const { return shown_.page; }
    void setPage(int page);
    InspectorDetails* details() { return &details_; }
    InspectorTracks* tracks() { return &tracks_; }
    InspectorArtwork* artwork() { return &artwork_; }
    InspectorCompare* compare() { return &compare_; }

Q_SIGNALS:
    void changed();

private:
    struct Shown {
        bool empty = true;
        QString fileName, state, verdict, match, source, apple, pickText;
        QStringList reasons;
        bool canConfirm = false;
        bool loading = false;
        bool failed = false;
        bool hasDraft = false;
        int episode = -1;
        int page = 0;
        bool operator==(const Shown&) const = default;
    };
    Inspected inspected();
    Shown headOf(const Inspected& now) const;
    void showMatch(const ResolvedFile& file, Shown& shown) const;
    std::vector<EpisodeRow> episodesOf(const Inspected& now) const;
    EpisodeRow episodeOf(const ResolvedFile& file) const;

    AppModel& model_;
    PresentReader present_;
    std::optional<std::filesystem::path> file_;
    std::optional<std::string> itemID_;
    Shown shown_;
    RowList<EpisodeRow> episodes_;
    InspectorDetails details_;
    InspectorTracks tracks_;
    InspectorArtwork artwork_;
    InspectorCompare compare_;
};

}  // namespace marlet
