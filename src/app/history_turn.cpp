#include "app/history_turn.h"

#include <algorithm>
#include <thread>

#include "foundation/paths.h"

namespace marlet {

HistoryTurn::HistoryTurn(HistoryPatience& patience) : lock_(Paths::historyFile()) {
    constexpr std::chrono::milliseconds pause{1};
    constexpr std::chrono::milliseconds afterATimeOut{100};
    const auto longest =
        patience.isAtItsEnd ? std::min(afterATimeOut, patience.longest) : patience.longest;
    for (std::chrono::milliseconds waited{0};; waited += pause) {
        if (lock_.take() != CopyLock::Holder::Others) {
            patience.isAtItsEnd = false;
            return;
        }
        if (waited >= longest) break;
        if (patience.sleep)
            patience.sleep(pause);
        else
            std::this_thread::sleep_for(pause);
    }
    patience.isAtItsEnd = true;
}

}  // namespace marlet
