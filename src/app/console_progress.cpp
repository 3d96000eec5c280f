#include "app/console_progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include "app/app_model.h"

namespace marlet {

namespace {

std::string counted(int done, int total) {
    return total == 0 ? "" : " (" + std::to_string(done) + " of " + std::to_string(total) + ")";
}

}  // namespace

bool ConsoleProgress::isWanted() {
    return isatty(STDERR_FILENO) != 0;
}

ConsoleProgress::ConsoleProgress(AppModel& model) : model_(model), overwrites_(isWanted()) {
    before_ = std::exchange(model_.onChanged, [this] {
        if (before_) before_();
        tell();
    });
}

ConsoleProgress::~ConsoleProgress() {
    model_.onChanged = std::move(before_);
    if (overwrites_) std::fputs("\r\033[K", stderr);
}

std::string ConsoleProgress::now() const {
    if (model_.isWorking()) {
        const AppModel::Phase& phase = model_.phase();
        return phase.message + counted(phase.done, phase.total);
    }
    const WriteQueue& queue = model_.queue();
    const WriteQueue::Job* job = queue.current();
    if (job == nullptr) return last_;
    int number = 0;
    for (const WriteQueue::Job& each : queue.jobs())
        if (each.state != WriteQueue::Job::State::waiting) number++;
    return job->label + counted(number, static_cast<int>(queue.jobs().size()));
}

void ConsoleProgress::tell() {
    const std::string line = now();
    if (line == last_) return;
    last_ = line;
    std::fputs((overwrites_ ? "\r\033[K" + line : line + "\n").c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace marlet
