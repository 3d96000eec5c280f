#include "foundation/run_mode.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>

namespace marlet::RunMode {

namespace {

struct State {
    std::mutex lock;
    std::vector<std::string> arguments;
    std::optional<bool> automated;
};

State& state() {
    static State instance;
    return instance;
}

}  // namespace

void setArguments(std::vector<std::string> arguments) {
    State& current = state();
    const std::lock_guard guard(current.lock);
    current.arguments = std::move(arguments);
    current.automated.reset();
}

const std::vector<std::string>& arguments() {
    return state().arguments;
}

bool hasArgument(const std::string& name) {
    State& current = state();
    const std::lock_guard guard(current.lock);
    return std::ranges::any_of(current.arguments, [&](const std::string& argument) {
        return std::string_view(argument).substr(0, argument.find('=')) == name;
    });
}

bool automated() {
    State& current = state();
    const std::lock_guard guard(current.lock);
    if (!current.automated) {
        const char* noKeychain = std::getenv("MARLET_NO_KEYCHAIN");
        current.automated = (noKeychain != nullptr && std::string_view(noKeychain) == "1") ||
                            std::ranges::any_of(current.arguments, [](const std::string& it) {
                                return it.starts_with("--");
                            });
    }
    return *current.automated;
}

}  // namespace marlet::RunMode
