#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <map>
#include <string>
#include <vector>

#include "screens/base/row_list.h"
#include "sources/async.h"

namespace marlet {

/// A program or library of others that Marlet uses.
struct CreditRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString version MEMBER version)
    Q_PROPERTY(QString use MEMBER use)
    Q_PROPERTY(QString license MEMBER license)
    Q_PROPERTY(QString source MEMBER source)
    Q_PROPERTY(QString spoken MEMBER spoken)

public:
    QString key;      ///< its name
    QString version;  ///< the one in use; empty when it isn't known
    QString use;
    QString license;
    QString source;  ///< the address of the source of that version
    QString spoken;
    bool operator==(const CreditRow&) const = default;
};

/// "Open-source software" and the notices that its licences want to be shown.
class Credits : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.settings has it")
    Q_PROPERTY(marlet::RowListBase* rows READ rows CONSTANT)
    Q_PROPERTY(QString notices READ notices CONSTANT)

public:
    explicit Credits(QObject* parent = nullptr);
    /// What a tool still tells is dropped.
    ~Credits() override;

    RowListBase* rows() { return &rows_; }
    QString notices() const;
    /// About comes up: asks the tools for their versions, once, on a worker.
    Q_INVOKABLE void open();

    struct Told {
        std::string version;
        std::string commit;
        bool operator==(const Told&) const = default;
    };
    /// What a tool says about itself behind these words: 26.07 and 0a1b of "26.07-rev0-g0a1b-HEAD
    /// ...", 5.1.9 of "5.1.9-0+deb12u1 Copyright ...", N-113007 and 8d24a28d06 of
    /// "N-113007-g8d24a28d06-20231205 ...". Empty where it says none.
    static Told toldIn(const std::string& text, const std::string& before);

private:
    using Versions = std::map<std::string, Told>;  ///< by the row's name

    static Versions askTools();
    void show(const Versions& tools);
    Task<> look();

    CancelToken life_;
    bool looked_ = false;
    RowList<CreditRow> rows_;
};

/// The texts of the licences whose terms ask for it, each after the names that it holds for.
extern const char* const thirdPartyNotices;

}  // namespace marlet
