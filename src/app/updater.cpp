#include "app/updater.h"

#include "foundation/run_mode.h"

namespace marlet {

namespace {

class PackagedUpdater : public Updater {
public:
    bool canCheck() const override { return false; }
    void check() override {}
    std::string words() const override { return "Updates come with those of your system."; }
};

struct Current {
    std::unique_ptr<Updater> updater = std::make_unique<PackagedUpdater>();
    bool started = false;
};

Current& current() {
    static Current instance;
    return instance;
}

}  // namespace

Updater& Updater::shared() {
    return *current().updater;
}

void Updater::start() {
    if (RunMode::automated() || current().started) return;
    current().started = true;
    shared().begin();
}

bool Updater::isStarted() {
    return current().started;
}

void Updater::install(std::unique_ptr<Updater> updater) {
    current().updater = updater ? std::move(updater) : std::make_unique<PackagedUpdater>();
    current().started = false;
}

}  // namespace marlet
