#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <optional>

#include "screens/desktop/buses.h"

namespace marlet {

/// The bar on the program's symbol in the task bar (com.canonical.Unity.LauncherEntry, which most
/// task bars read).
class LauncherEntry : public QObject {
public:
    explicit LauncherEntry(Buses buses, QObject* parent = nullptr);
    /// At most one update in so long a time; of those between, the latest comes at its end.
    void setPause(std::chrono::milliseconds pause) { pause_.setInterval(pause); }
    void show(double fraction);
    void clear();

private:
    void send(double fraction, bool visible);

    Buses buses_;
    QTimer pause_;
    std::optional<double> shown_;  ///< what the task bar was told
    std::optional<double> next_;
};

}  // namespace marlet
