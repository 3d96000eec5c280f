// marlet-mux: what Marlet needs of GPAC's MP4Box, for where that is missing.

#include <cstdio>
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include "foundation/errors.h"
#include "helpers/mux_info.h"
#include "helpers/mux_options.h"
#include "helpers/relayout.h"

namespace {

using namespace marlet;

/// "(37/100)" on a line of its own that is written over; at most once a percent.
class PercentLine {
public:
    void show(double fraction) {
        const int percent = static_cast<int>(fraction * 100);
        if (percent <= shown_) return;
        shown_ = percent;
        std::printf("Laying out: (%02d/100)\r", percent);
        std::fflush(stdout);
    }

private:
    int shown_ = -1;
};

void carryOut(const MuxOptions::ShowVersion& /*nothing to know*/) {
    std::puts("marlet-mux " MARLET_VERSION ", the part of MP4Box's work that Marlet does itself");
}

void carryOut(const MuxOptions::ShowInfo& info) {
    std::fputs(MuxInfo::text(info.file).c_str(), stdout);
}

void carryOut(const Relayout::Request& request) {
    PercentLine line;
    Relayout::run(request, [&line](double fraction) { line.show(fraction); });
    std::puts("");
}

void carryOut(const BuildMovie::Request& request) {
    PercentLine line;
    BuildMovie::run(request, [&line](double fraction) { line.show(fraction); });
    std::puts("");
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        std::visit([](const auto& command) { carryOut(command); }, MuxOptions::parse(arguments));
        return 0;
    } catch (const std::exception& failure) {
        // bad_alloc and the like, too: the caller reads this line and the status.
        std::fprintf(stderr, "marlet-mux: %s\n", failure.what());
        return 1;
    }
}
