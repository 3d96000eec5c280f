#pragma once

#include <functional>
#include <string>

namespace marlet {

class AppModel;

/// Tells on standard error what a scripted run is doing, a line each time something new begins;
/// on a terminal the line is written over. Listens to the model for as long as it lives, along with
/// whoever listened before.
class ConsoleProgress {
public:
    explicit ConsoleProgress(AppModel& model);
    ~ConsoleProgress();
    ConsoleProgress(const ConsoleProgress&) = delete;
    ConsoleProgress& operator=(const ConsoleProgress&) = delete;

    /// Whether standard error is a terminal.
    static bool isWanted();

private:
    void tell();
    std::string now() const;

    AppModel& model_;
    std::function<void()> before_;
    std::string last_;
    bool overwrites_ = false;
};

}  // namespace marlet
