#include "screens/queue/time_left.h"

#include <QCoreApplication>
#include <cmath>

namespace marlet {

namespace {

/// Nobody waits for what takes longer, and no such figure is a good guess.
constexpr double longest = 100.0 * 24 * 3600;

QString hoursWords(int hours) {
    return hours == 1 ? QCoreApplication::translate("TimeLeft", "1 hour")
                      : QCoreApplication::translate("TimeLeft", "%1 hours").arg(hours);
}

QString minutesWords(int minutes) {
    return minutes == 1 ? QCoreApplication::translate("TimeLeft", "1 minute")
                        : QCoreApplication::translate("TimeLeft", "%1 minutes").arg(minutes);
}

}  // namespace

QString timeLeftWords(double seconds) {
    if (!(seconds >= 0 && seconds < longest)) return {};
    const int tens = std::max(1, static_cast<int>(std::ceil(seconds / 10)));
    if (tens < 6) return QCoreApplication::translate("TimeLeft", "%1 seconds").arg(10 * tens);
    const int minutes = static_cast<int>(std::lround(seconds / 60));
    if (minutes < 60) return minutesWords(minutes);
    // Beyond an hour nobody wants to see each minute go by.
    const int fives = static_cast<int>(std::lround(seconds / 300)) * 5;
    const QString hours = hoursWords(fives / 60);
    return fives % 60 == 0 ? hours : hours + QLatin1Char(' ') + minutesWords(fives % 60);
}

}  // namespace marlet
