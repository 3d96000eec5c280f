#pragma once

#include <QDBusConnection>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/private_bus.h"
#include "support/process.h"
#include "system/x_hand.h"

namespace marlet::test {

/// One thing that a screen reader finds in a window.
struct Seen {
    std::string role;  ///< as AT-SPI calls it: "push button", "list item", "label", ...
    std::string name;  ///< where it has none, its description
    int x = 0;         ///< on the screen, in points, as what follows
    int y = 0;
    int width = 0;
    int height = 0;
    bool focused = false;
    int depth = 0;

    Point centre() const { return {x + width / 2, y + height / 2}; }
    bool operator==(const Seen&) const = default;
};

/// What programs tell screen readers, over AT-SPI on buses of its own. Programs that are to be
/// heard need its environment.
class ScreenReader {
public:
    /// Shows itself on that X display.
    explicit ScreenReader(const std::string& display);
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    std::map<std::string, std::string> environment() const;
    /// All that is shown at this moment in the windows of the one program, parents first. Nothing
    /// as long as there is none.
    std::vector<Seen> look();

private:
    struct Place {
        QString service;
        QString path;
    };
    QDBusMessage ask(const Place& place, const char* interface, const char* method,
                     const QVariantList& arguments = {}) const;
    std::string told(const Place& place, const char* property) const;
    std::vector<Place> childrenOf(const Place& place) const;
    void walk(const Place& place, int depth, std::vector<Seen>& found) const;
    QString addressOfBus() const;

    /// Starts the bus and the registry of AT-SPI, and ends them with itself.
    struct Launcher {
        explicit Launcher(const std::map<std::string, std::string>& environment);
        ~Launcher();
        Process process;
    };
    PrivateBus session_;
    TempFolder runtime_;
    std::unique_ptr<Launcher> launcher_;
    std::optional<QDBusConnection> bus_;
};

}  // namespace marlet::test
