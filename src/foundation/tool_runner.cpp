#include "foundation/tool_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "foundation/child_process.h"
#include "foundation/errors.h"
#include "foundation/text.h"
#include "foundation/tool_log.h"
#include "foundation/tool_output.h"
#include "foundation/tool_sandbox.h"

namespace marlet::ToolRunner {

namespace {

/// How soon pause and cancel act on a tool.
constexpr std::chrono::milliseconds pollInterval{200};
/// Of a failed tool's output, what stands in the message.
constexpr std::size_t mostCharactersInMessage = 400;
/// What a listing of thousands of tracks takes, many times over.
constexpr std::size_t mostOfListing = std::size_t{4} * 1024 * 1024;

using Sink = std::function<void(std::string_view chunk)>;

/// Reads the pipe on a thread of its own for as long as it lives, and hands on what comes as it
/// comes.
class OutputReader {
public:
    OutputReader(int pipe, Sink sink)
        : pipe_(pipe), sink_(std::move(sink)), stop_(::eventfd(0, EFD_CLOEXEC)) {
        if (!stop_.isOpen()) throw std::system_error(errno, std::generic_category());
        thread_ = std::thread([this] { read(); });
    }
    ~OutputReader() {
        if (thread_.joinable()) stop();
    }
    OutputReader(const OutputReader&) = delete;
    OutputReader& operator=(const OutputReader&) = delete;

    /// After the tool's end: takes what still lies in the pipe, and nothing after it. (The pipe
    /// may stay open in a process that the tool has left behind.)
    void stop() {
        ::eventfd_write(stop_.get(), 1);
        thread_.join();
    }

private:
    void read() {
        pollfd events[] = {{pipe_, POLLIN, 0}, {stop_.get(), POLLIN, 0}};
        for (;;) {
            if (::poll(events, 2, -1) < 0) continue;
            if (events[1].revents != 0) break;
            if (!takeChunk()) return;
        }
        for (int left = ::fcntl(pipe_, F_GETPIPE_SZ); left > 0; left -= lastSize_) {
            if (!takeChunk() || lastSize_ == 0) return;
        }
    }

    /// False at the end of the output.
    bool takeChunk() {
        const ssize_t size = ::read(pipe_, buffer_.data(), buffer_.size());
        lastSize_ = size > 0 ? static_cast<int>(size) : 0;
        if (size > 0) sink_({buffer_.data(), static_cast<std::size_t>(size)});
        return size > 0 || (size < 0 && (errno == EAGAIN || errno == EINTR));
    }

    const int pipe_;
    const Sink sink_;
    FileHandle stop_;
    std::array<char, 1 << 16> buffer_;  // a pipe's usual capacity: all that is there
    int lastSize_ = 0;
    std::thread thread_;
};

/// Holds the tool while the job is paused: one signal for each change.
class PauseFollower {
public:
    void follow(const RunControl& control, const ChildProcess& child) {
        const bool paused = control.isPaused();
        if (paused == paused_) return;
        paused_ = paused;
        child.signal(paused ? SIGSTOP : SIGCONT);
    }

private:
    bool paused_ = false;
};

/// Runs a tool to its end; gives its status.
int carryOut(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
             const Confinement& confinement, RunControl& control, Sink sink) {
    ToolLog::noteOnce(tool);
    ChildProcess child(tool, arguments, ToolSandbox(tool, confinement));
    OutputReader reader(child.output(), std::move(sink));
    PauseFollower pause;
    do {
        if (control.isCancelled()) {
            child.terminate();
            throw CancelError();
        }
        pause.follow(control, child);
    } while (!child.waitForEnd(pollInterval));
    reader.stop();
    return child.status();
}

std::string withoutColours(const std::string& text) {
    static const Regex colour(R"(\x1B\[[0-9;]*m)");
    return colour.replaceAll(text, "");
}

}  // namespace

std::optional<std::filesystem::path> gpac() {
    const std::optional<std::filesystem::path> mp4box = MP4BoxLocator::find();
    if (!mp4box) return std::nullopt;
    return mp4box->parent_path() / "gpac";
}

Ended runToEnd(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
               const Confinement& confinement, RunControl& control, const Progress& progress) {
    ToolOutput output(progress);
    const int status = carryOut(tool, arguments, confinement, control,
                                [&output](std::string_view chunk) { output.take(chunk); });
    return {status, Text::replaceAll(output.tail(), "\x1B[0m", "")};
}

std::string listing(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
                    const Confinement& confinement, RunControl& control) {
    std::string text;
    carryOut(tool, arguments, confinement, control, [&text](std::string_view chunk) {
        text += chunk.substr(0, mostOfListing - std::min(mostOfListing, text.size()));
    });
    return withoutColours(Text::repairUtf8(viewOf(text)));
}

std::string run(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
                const Confinement& confinement, RunControl& control, const Progress& progress) {
    const Ended ended = runToEnd(tool, arguments, confinement, control, progress);
    if (ended.status == 0) return ended.tail;
    const std::string text = Text::trim(withoutColours(ended.tail));
    throw MFError(tool.filename().string() + " failed (exit " + std::to_string(ended.status) +
                  "): " + std::string(ToolOutput::lastCharacters(text, mostCharactersInMessage)));
}

}  // namespace marlet::ToolRunner
