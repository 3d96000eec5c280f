#include "app/history_turn.h"

#include <thread>

#include "foundation/paths.h"

namespace marlet {

HistoryTurn::HistoryTurn(HistoryPatience& patience) : lock_(Paths::historyFile()) {
    constexpr std::chrono::milliseconds pause{1};
    constexpr std::chrono::milliseconds afterATimeOut{100};
    for (std::chrono::milliseconds waited{0};; waited += pause) {
        if (lock_.take() != CopyLock::Holder::Others) return;
        if (waited >= patience.longest) break;
        if (patience.sleep)
            patience.sleep(pause);
        else
            std::this_thread::sleep_for(pause);
    }
    patience.longest = afterATimeOut;
}

}  // namespace marlet
