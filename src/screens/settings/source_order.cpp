#include "screens/settings/source_order.h"

#include <algorithm>

#include "app/settings.h"
#include "screens/base/qt_text.h"
#include "sources/source_settings.h"

namespace marlet {

namespace {

constexpr SourceID switched = SourceID::appleTV;

}  // namespace

void SourceOrder::refresh() {
    const std::vector<SourceID> order = SourceSettings::order();
    std::vector<SourceRow> rows;
    for (const SourceID id : order) {
        SourceRow row;
        const auto place = static_cast<int>(rows.size());
        row.key = QString::number(place);
        row.switchable = id == switched;
        row.title = row.switchable ? tr("Apple TV (unofficial)") : toQt(displayName(id));
        row.on = !row.switchable || Settings::appleTVOn();
        const QString state = !row.switchable ? tr("Always on") : row.on ? tr("On") : tr("Off");
        row.spoken =
            tr("%1, %2 of %3, %4").arg(row.title).arg(place + 1).arg(order.size()).arg(state);
        rows.push_back(row);
    }
    rows_.set(std::move(rows));
}

bool SourceOrder::move(int from, int to) {
    std::vector<SourceID> order = SourceSettings::order();
    const auto count = static_cast<int>(order.size());
    if (from < 0 || to < 0 || from >= count || to >= count || from == to) return false;
    const SourceID moved = order[static_cast<std::size_t>(from)];
    order.erase(order.begin() + from);
    order.insert(order.begin() + to, moved);
    SourceSettings::setOrder(order);
    Q_EMIT stored();
    return true;
}

void SourceOrder::switchOn(int place, bool on) {
    if (place < 0 || place >= rows_.count() || !rows_.at(place).switchable) return;
    Settings::setAppleTVOn(on);
    Q_EMIT stored();
}

}  // namespace marlet
