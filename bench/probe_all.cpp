// Probes every video file below a folder, one after the other: the work that a scan spreads over
// its probes at a time. Prints the files and the milliseconds of the probes alone.
#include <chrono>
#include <cstddef>
#include <iostream>
#include <utility>

#include "identify/probe.h"
#include "identify/scanner.h"

int main(int count, char** arguments) {
    using Clock = std::chrono::steady_clock;
    if (count != 2) {
        std::cerr << "usage: probe_all FOLDER\n";
        return 2;
    }
    const auto files = marlet::Scanner::videoFiles({arguments[1]});
    const auto began = Clock::now();
    std::size_t lengths = 0;
    for (const auto& file : files)
        if (marlet::Probe::read(file).duration) lengths++;
    const std::chrono::duration<double, std::milli> took = Clock::now() - began;
    std::cout << files.size() << ' ' << took.count() << '\n';
    // Files without a length were not really read, and the time would say nothing.
    return lengths == files.size() ? 0 : 1;
}
