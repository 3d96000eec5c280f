#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QGuiApplication>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/faults.h"
#include "catalogue/server.h"

namespace {

namespace fs = std::filesystem;
using namespace marlet;

constexpr const char* help = R"(marlet-catalogue [options]: serves the sample catalogue on loopback.

  --port N            listens on this port; 0, the default, takes a free one
  --port-file FILE    writes the port to a file, and removes it at the end
  --data FOLDER       reads another catalogue
  --require-token T   refuses requests without "Authorization: Bearer T"
  --fault JSON        sets a fault from the start; may be repeated
  --parent-watch      ends when the program that started it ends

It prints "listening on http://127.0.0.1:PORT" when it is ready, and ends on SIGTERM.

A fault is also set with POST /_control, and all are cleared with DELETE /_control:

  {"path": "^/3/movie/", "times": 2, "status": 429}

  path      a regular expression looked for in the path and query; without it, any request
  after     so many matching requests pass first (0)
  times     so many requests are hit (1); 0 hits every one
  delayMs   the answer comes so much later
  status    the service's refusal with this status
  body      this body in place of the answer's; type: its content type
  answer    "html" a page, "half" the first half of the answer, "types" numbers and texts swapped
  cut       "before" or "middle": the connection ends before or in the answer
  headers   sets headers of the answer; null leaves one out

GET /_stats tells what was asked how often, GET /_log in which order and when, and DELETE /_stats
forgets both.

Roots of the services: /3 and / (pictures) as TMDB, /uts/v3/ as Apple TV, /itunes/ as the iTunes
Store, all with the same titles.
)";

struct Options {
    int port = 0;
    fs::path portFile;
    fs::path data = catalogue::defaultFolder();
    std::string token;
    std::vector<std::string> faults;
    bool parentWatch = false;
    bool help = false;
};

Options parse(const std::vector<std::string>& arguments) {
    Options out;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::string& name = arguments[i];
        const auto value = [&]() -> const std::string& {
            if (i + 1 >= arguments.size()) throw std::runtime_error(name + " needs a value");
            return arguments[++i];
        };
        if (name == "--port")
            out.port = std::stoi(value());
        else if (name == "--port-file")
            out.portFile = value();
        else if (name == "--data")
            out.data = value();
        else if (name == "--require-token")
            out.token = value();
        else if (name == "--fault")
            out.faults.push_back(value());
        else if (name == "--parent-watch")
            out.parentWatch = true;
        else if (name == "--help")
            out.help = true;
        else
            throw std::runtime_error("unknown option " + name);
    }
    return out;
}

/// A parent that has gone before the watch was set leaves no signal behind.
void watchParent(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) std::_Exit(0);
}

/// A reader sees the whole number or no file.
void writePortFile(const fs::path& file, int port) {
    const fs::path temporary = file.string() + ".new";
    std::ofstream(temporary) << port << "\n";
    fs::rename(temporary, file);
}

sigset_t endSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    return set;
}

/// Waits for the end. Answers under way are dropped: nothing here needs to be kept.
void endOnSignal(const fs::path& portFile) {
    const sigset_t set = endSignals();
    int which = 0;
    sigwait(&set, &which);
    std::error_code ignored;
    if (!portFile.empty()) fs::remove(portFile, ignored);
    std::_Exit(0);
}

int run(int argc, char** argv) {
    const pid_t parent = getppid();
    const Options options = parse({argv + 1, argv + argc});
    if (options.help) {
        std::cout << help;
        return 0;
    }
    if (options.parentWatch) watchParent(parent);
    // Blocked before the first thread starts, so that the one that waits gets them.
    const sigset_t set = endSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);

    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Without a session Qt warns of a missing runtime folder, which nothing here uses.
    setenv("QT_LOGGING_RULES", "default.warning=false", 0);
    const QGuiApplication application(argc, argv);
    catalogue::Server server(catalogue::load(options.data), options.token);
    for (const std::string& fault : options.faults) server.addFault(catalogue::parseFault(fault));
    const int port = server.bind(options.port);
    std::thread(endOnSignal, options.portFile).detach();
    if (!options.portFile.empty()) writePortFile(options.portFile, port);
    std::cout << "listening on http://127.0.0.1:" << port << std::endl;
    server.serve();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "marlet-catalogue: " << error.what() << "\n";
        return 1;
    }
}
