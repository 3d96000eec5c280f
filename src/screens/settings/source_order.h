#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>

#include "screens/base/row_list.h"

namespace marlet {

/// A source of details at its place.
struct SourceRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(bool switchable MEMBER switchable)
    Q_PROPERTY(bool on MEMBER on)
    Q_PROPERTY(QString spoken MEMBER spoken)  ///< "TMDB, 2 of 3, Always on"

public:
    QString key;  ///< the place: a row stays where it is, sources come and go in it
    QString title;
    bool switchable = false;  ///< others are always on
    bool on = true;
    QString spoken;
    bool operator==(const SourceRow&) const = default;
};

/// The person's order of sources, and the switch of the one that has a switch.
class SourceOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.settings has it")
    Q_PROPERTY(marlet::RowListBase* rows READ rows CONSTANT)

public:
    using QObject::QObject;
    void refresh();

    RowListBase* rows() { return &rows_; }
    /// Puts the source at one place to another; false, and nothing is stored, for no such place.
    Q_INVOKABLE bool move(int from, int to);
    Q_INVOKABLE void switchOn(int place, bool on);

Q_SIGNALS:
    void stored();

private:
    RowList<SourceRow> rows_;
};

}  // namespace marlet
