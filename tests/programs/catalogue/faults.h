#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "catalogue/answer.h"

namespace marlet::catalogue {

/// Where a connection is cut.
enum class Cut { none, beforeAnswer, inAnswer };

/// What is made of the true answer.
enum class Spoil {
    none,
    html,   ///< a page in its place, as the gate of a hotel's network gives
    half,   ///< its first half, with a matching length
    types,  ///< numbers as texts, and texts as numbers
};

/// One thing that goes wrong, for requests whose target its pattern finds.
struct Fault {
    std::regex target;
    int after = 0;  ///< so many matching requests pass first
    int times = 1;  ///< so many requests are hit; 0: every one
    std::chrono::milliseconds delay{0};
    std::optional<int> status;
    std::optional<std::string> body;
    std::optional<std::string> type;
    std::map<std::string, std::optional<std::string>> headers;  ///< no value: left out
    Spoil spoil = Spoil::none;
    Cut cut = Cut::none;
};

/// Reads the JSON form, told in main.cpp's help. Throws std::runtime_error for what it doesn't
/// know, so that a misspelt fault can't pass for a service in good health.
Fault parseFault(const std::string& json);

/// The answer as the fault leaves it; delay, cut and headers are the server's to do.
Answer apply(const Fault& fault, Answer answer);

/// The faults that wait, in the order they were set. Any thread may use it.
class Faults {
public:
    void add(Fault fault);
    void clear();
    /// The first fault that hits a request for this target; counts it.
    std::optional<Fault> take(const std::string& target);

private:
    std::mutex lock_;
    std::vector<Fault> faults_;  ///< guarded by lock_
};

}  // namespace marlet::catalogue
