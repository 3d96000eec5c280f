#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <vector>

#include "screens/base/row_list.h"
#include "screens/inspector/inspected.h"

namespace marlet {

/// One picture on offer.
struct ArtRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString picture MEMBER picture)
    Q_PROPERTY(QString label MEMBER label)  ///< under it; empty for most
    Q_PROPERTY(QString spoken MEMBER spoken)
    Q_PROPERTY(bool chosen MEMBER chosen)

public:
    QString key;
    QString picture;
    QString label;
    QString spoken;
    bool chosen = false;
    ArtworkOption option;
    bool operator==(const ArtRow&) const = default;
};

/// The pictures that a file can get, of one shape.
class InspectorArtwork : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.inspector has it")
    Q_PROPERTY(QAbstractItemModel* options READ options CONSTANT)
    Q_PROPERTY(QString line READ line NOTIFY changed)      ///< in place of the grid
    Q_PROPERTY(bool failed READ hasFailed NOTIFY changed)  ///< nothing could be asked
    Q_PROPERTY(bool fromApple READ fromApple NOTIFY changed)
    Q_PROPERTY(bool wide READ isWide NOTIFY changed)
    Q_PROPERTY(QStringList shapes READ shapes NOTIFY changed)
    Q_PROPERTY(int shape READ shape NOTIFY changed)
    Q_PROPERTY(bool canShare READ canShare NOTIFY changed)
    Q_PROPERTY(bool shared READ isShared NOTIFY changed)
    Q_PROPERTY(int chosen READ chosen NOTIFY changed)  ///< its place; -1: none

public:
    explicit InspectorArtwork(AppModel& model, QObject* parent = nullptr);
    void refresh(const Inspected& now);

    Q_INVOKABLE void pick(int row);
    /// 0 the setting's choice, 1 wide, 2 tall.
    Q_INVOKABLE void setShape(int shape);
    Q_INVOKABLE void share(bool on);

    RowListBase* options() { return &options_; }
    QString line() const { return shown_.line; }
    bool hasFailed() const { return shown_.failed; }
    bool fromApple() const { return shown_.fromApple; }
    bool isWide() const { return shown_.wide; }
    QStringList shapes() const { return shown_.shapes; }
    int shape() const { return shown_.shape; }
    bool canShare() const { return shown_.canShare; }
    bool isShared() const { return shown_.shared; }
    int chosen() const { return shown_.chosen; }

Q_SIGNALS:
    void changed();

private:
    struct Shown {
        QString line;
        QStringList shapes;
        bool failed = false;
        bool fromApple = false;
        bool wide = false;
        bool canShare = false;
        bool shared = false;
        int shape = 0;
        int chosen = -1;
        bool operator==(const Shown&) const = default;
    };
    std::vector<ArtRow> rowsOf(const Inspected& now, ArtworkStyle style, Shown& shown) const;

    AppModel& model_;
    std::filesystem::path file_;
    std::string seasonKey_;
    Shown shown_;
    RowList<ArtRow> options_;
};

}  // namespace marlet
