#include "screens/picker/picker_asker.h"

#include "app/app_model.h"
#include "sources/tmdb_client.h"

namespace marlet {

namespace {
/// What comes sooner is an answer at once; a spinner would only flicker.
constexpr int patienceMs = 300;
}  // namespace

PickerAsker::PickerAsker(AppModel& model, QObject* parent) : QObject(parent), model_(model) {
    patience_.setSingleShot(true);
    connect(&patience_, &QTimer::timeout, this, [this] {
        waiting_ = true;
        Q_EMIT changed();
    });
}

QString PickerAsker::failureHelp() const {
    return tr("Nothing has been changed. Try again in a moment.");
}

CancelToken PickerAsker::renew(CancelToken& token) {
    const CancelToken old = std::exchange(token, CancelToken());
    old.cancel();
    return token;
}

PickerAsker::Waiting::Waiting(PickerAsker& asker) : asker_(asker) {
    if (asker_.asked_++ == 0) asker_.patience_.start(patienceMs);
}

PickerAsker::Waiting::~Waiting() {
    if (--asker_.asked_ > 0) return;
    asker_.patience_.stop();
    if (std::exchange(asker_.waiting_, false)) Q_EMIT asker_.changed();
}

Task<> PickerAsker::choose(std::function<Task<bool>()> taking, CancelToken cancel) {
    const Waiting waiting(*this);
    try {
        clearFailure();
        auto asked = taking();
        const bool done = co_await asked;
        if (cancel.isCancelled()) co_return;
        if (!done) throw MFError("not taken");
    } catch (const std::exception& error) {
        if (!cancel.isCancelled()) fail(error);
        co_return;
    }
    Q_EMIT taken();
}

void PickerAsker::fail(const std::exception& error) {
    const auto* told = dynamic_cast<const TMDBError*>(&error);
    if (told != nullptr && told->kind() == TMDBError::Kind::noKey) {
        failure_ = tr("Add your TMDB key in Settings first.");
    } else {
        failure_ = tr("Couldn't reach the database.");
        model_.say("Couldn't reach the database.");
    }
    Q_EMIT changed();
}

}  // namespace marlet
