#include "screens/base/row_list.h"

#include <QHash>
#include <QMetaProperty>

namespace marlet {

RowListBase::RowListBase(const QMetaObject& gadget, QObject* parent)
    : QAbstractListModel(parent), gadget_(gadget) {}

QVariant RowListBase::data(const QModelIndex& index, int role) const {
    const int property = role - Qt::UserRole;
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || property < 0 ||
        property >= gadget_.propertyCount())
        return {};
    return gadget_.property(property).readOnGadget(gadgetAt(index.row()));
}

QHash<int, QByteArray> RowListBase::roleNames() const {
    QHash<int, QByteArray> names;
    for (int property = 0; property < gadget_.propertyCount(); ++property)
        names.insert(Qt::UserRole + property, gadget_.property(property).name());
    return names;
}

namespace {

/// Which of the numbers belong to one longest rising row of them; those below 0 never do.
std::vector<bool> longestRise(const std::vector<int>& numbers) {
    std::vector<std::size_t> ends;  // ends[n]: where the lowest end of a rise of n + 1 stands
    std::vector<std::ptrdiff_t> before(numbers.size(), -1);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] < 0) continue;
        const auto place = std::ranges::lower_bound(ends, numbers[i], {},
                                                    [&](std::size_t at) { return numbers[at]; });
        if (place != ends.begin()) before[i] = static_cast<std::ptrdiff_t>(*std::prev(place));
        if (place == ends.end())
            ends.push_back(i);
        else
            *place = i;
    }
    std::vector<bool> chosen(numbers.size(), false);
    auto at = ends.empty() ? -1 : static_cast<std::ptrdiff_t>(ends.back());
    for (; at >= 0; at = before[static_cast<std::size_t>(at)])
        chosen[static_cast<std::size_t>(at)] = true;
    return chosen;
}

int runsOf(const std::vector<bool>& flags, bool wanted) {
    int runs = 0;
    for (std::size_t i = 0; i < flags.size(); ++i)
        if (flags[i] == wanted && (i == 0 || flags[i - 1] != wanted)) ++runs;
    return runs;
}

}  // namespace

RowListBase::Step RowListBase::stepBetween(const std::vector<QString>& before,
                                           const std::vector<QString>& after) {
    QHash<QString, int> places;
    places.reserve(static_cast<qsizetype>(after.size()));
    for (std::size_t i = 0; i < after.size(); ++i) places.insert(after[i], static_cast<int>(i));
    std::vector<int> numbers;
    numbers.reserve(before.size());
    for (const QString& key : before) numbers.push_back(places.value(key, -1));

    Step step{.stays = longestRise(numbers), .known = std::vector<bool>(after.size(), false)};
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (step.stays[i]) step.known[static_cast<std::size_t>(numbers[i])] = true;
    step.runs = runsOf(step.stays, false) + runsOf(step.known, false);
    return step;
}

}  // namespace marlet
