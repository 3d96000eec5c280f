#include <atomic>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/catalogue.h"
#include "demo_library/maker.h"
#include "demo_library/plan.h"

namespace {

namespace fs = std::filesystem;
using namespace marlet;

constexpr const char* help =
    R"(make_demo_library FOLDER [options]: fills a folder with a small library.

  --with-trouble   adds a film whose sound lies in one long stretch
  --only REGEX     makes only the files whose path the expression is found in
  --list           prints the paths with their lengths in seconds and makes nothing

The films and episodes are those of the sample catalogue with their true lengths; picture and
sound are test signals. Files that stand there already are replaced.
)";

struct Options {
    fs::path folder;
    std::string only;
    bool trouble = false;
    bool list = false;
    bool help = false;
};

Options parse(const std::vector<std::string>& arguments) {
    Options out;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::string& word = arguments[i];
        if (word == "--with-trouble") {
            out.trouble = true;
        } else if (word == "--list") {
            out.list = true;
        } else if (word == "--help") {
            out.help = true;
        } else if (word == "--only") {
            if (i + 1 >= arguments.size()) throw std::runtime_error("--only needs a value");
            out.only = arguments[++i];
        } else if (word.starts_with("--") || !out.folder.empty()) {
            throw std::runtime_error("unknown argument " + word);
        } else {
            out.folder = word;
        }
    }
    if (out.folder.empty() && !out.list && !out.help) throw std::runtime_error("no folder given");
    return out;
}

std::vector<demo::Item> chosen(const Options& options) {
    const catalogue::Catalogue catalogue = catalogue::load(catalogue::defaultFolder());
    std::vector<demo::Item> items = demo::tidyLibrary(catalogue);
    if (options.trouble)
        for (const demo::Item& item : demo::trouble(catalogue)) items.push_back(item);
    const std::regex only(options.only);
    std::erase_if(items,
                  [&](const demo::Item& item) { return !std::regex_search(item.path, only); });
    return items;
}

/// Makes the files in as many threads as there are processors; the first failure ends all.
class Work {
public:
    Work(const demo::Maker& maker, const std::vector<demo::Item>& items, const fs::path& folder)
        : maker_(maker), items_(items), folder_(folder) {}

    void run() {
        std::vector<std::jthread> threads;
        const unsigned count = std::max(1U, std::thread::hardware_concurrency());
        for (unsigned i = 0; i < count; i++) threads.emplace_back([this] { takeItems(); });
        threads.clear();  // waits
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    void takeItems() {
        for (std::size_t i = next_++; i < items_.size(); i = next_++) {
            try {
                maker_.make(items_[i]);
                report(items_[i]);
            } catch (...) {
                const std::lock_guard hold(lock_);
                if (!failure_) failure_ = std::current_exception();
                next_ = items_.size();
            }
        }
    }

    void report(const demo::Item& item) {
        const double megabytes = static_cast<double>(fs::file_size(folder_ / item.path)) / 1e6;
        const std::lock_guard hold(lock_);
        std::printf("[%2zu/%zu] %3d min  %4.1f MB  %s\n", ++done_, items_.size(),
                    (item.seconds + 30) / 60, megabytes, item.path.c_str());
        std::fflush(stdout);
    }

    const demo::Maker& maker_;
    const std::vector<demo::Item>& items_;
    const fs::path& folder_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex lock_;
    std::size_t done_ = 0;        ///< guarded by lock_
    std::exception_ptr failure_;  ///< guarded by lock_
};

void run(const Options& options) {
    const std::vector<demo::Item> items = chosen(options);
    if (options.list) {
        for (const demo::Item& item : items) std::cout << item.seconds << "\t" << item.path << "\n";
        return;
    }
    const demo::Maker maker(options.folder);
    Work(maker, items, options.folder).run();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const Options options = parse({argv + 1, argv + argc});
        if (options.help)
            std::cout << help;
        else
            run(options);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "make_demo_library: " << error.what() << "\n";
        return 1;
    }
}
