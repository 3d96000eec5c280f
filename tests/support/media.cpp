#include "support/media.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "support/box_builder.h"
#include "support/temp_folder.h"

extern char** environ;

namespace marlet::test {

namespace {

std::string readAll(int fd) {
    std::string text;
    std::array<char, 65536> buffer{};
    for (ssize_t got = 0; (got = ::read(fd, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(got));
    return text;
}

pid_t start(const std::vector<std::string>& arguments, int output) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t pid = 0;
    const int error = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error("cannot start " + arguments.front());
    return pid;
}

void addInputs(const RealMovie& movie, std::vector<std::string>& arguments) {
    const std::string length = ":duration=" + std::to_string(movie.seconds);
    const auto add = [&](const std::string& source) {
        arguments.insert(arguments.end(), {"-f", "lavfi", "-i", source + length});
    };
    if (movie.video) add("testsrc2=size=64x36:rate=25");
    for (int i = 0; i < movie.soundTracks; i++)
        add("sine=sample_rate=16000:frequency=" + std::to_string(440 * (i + 1)));
}

void addTracks(const RealMovie& movie, std::vector<std::string>& arguments) {
    const int inputs = movie.soundTracks + (movie.video ? 1 : 0);
    for (int i = 0; i < inputs; i++) arguments.insert(arguments.end(), {"-map", std::to_string(i)});
    arguments.insert(arguments.end(),
                     {"-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-g", "25", "-pix_fmt",
                      "yuv420p", "-threads", "1", "-c:a", "aac", "-b:a", "16k"});
    for (std::size_t i = 0; i < movie.soundLanguages.size(); i++)
        arguments.insert(arguments.end(), {"-metadata:s:a:" + std::to_string(i),
                                           "language=" + movie.soundLanguages[i]});
}

/// FFmpeg can't write account items: a comment of the same length holds their place.
constexpr const char* placeholderStart = "PLACE OF THE ACCOUNT ITEMS ";
constexpr std::size_t itemHeaders = 24;  // item, data, type and locale

std::string placeholder(const Bytes& items) {
    std::string text = placeholderStart;
    text.resize(items.size() - itemHeaders, '.');
    return text;
}

void putAccountItems(const std::filesystem::path& file, const Bytes& items) {
    const Bytes comment = textItem("©cmt", placeholder(items));
    Bytes bytes = readFile(file);
    const auto at = std::search(bytes.begin(), bytes.end(), comment.begin(), comment.end());
    if (at == bytes.end()) throw std::runtime_error("FFmpeg wrote no comment item");
    std::copy(items.begin(), items.end(), at);
    writeFile(file, bytes);
}

void addMetadata(const RealMovie& movie, std::vector<std::string>& arguments) {
    std::string flags;
    if (movie.indexFirst && movie.padding == 0) flags = "+faststart";
    if (!flags.empty()) arguments.insert(arguments.end(), {"-movflags", flags});
    for (const auto& [key, value] : movie.tags)
        arguments.insert(arguments.end(), {"-metadata", key + "=" + value});
    if (movie.accountTags)
        arguments.insert(arguments.end(),
                         {"-metadata", "comment=" + placeholder(joined(accountItems()))});
}

void writeMovie(const std::filesystem::path& file, const RealMovie& movie, std::size_t moovSize) {
    std::vector<std::string> arguments;
    addInputs(movie, arguments);
    addTracks(movie, arguments);
    addMetadata(movie, arguments);
    if (moovSize > 0) arguments.insert(arguments.end(), {"-moov_size", std::to_string(moovSize)});
    arguments.insert(arguments.end(), movie.extraArguments.begin(), movie.extraArguments.end());
    arguments.push_back(file.string());
    ffmpeg(arguments);
}

/// A tool of mkvtoolnix, which aborts where the locale of the environment is missing, and ends with
/// 1 when it only warned.
void runMkvTool(std::vector<std::string> command, const std::vector<std::string>& arguments) {
    command.insert(command.begin(), {"sh", "-c", "LC_ALL=C.UTF-8 \"$0\" -q \"$@\"; [ $? -lt 2 ]"});
    command.insert(command.end(), arguments.begin(), arguments.end());
    runTool(command);
}

std::size_t moovSizeOf(const std::filesystem::path& file) {
    const Bytes bytes = readFile(file);
    std::int64_t at = 0;
    while (at + 8 <= static_cast<std::int64_t>(bytes.size())) {
        const std::uint32_t size = BigEndian::u32(bytes, at);
        if (BigEndian::fourCC(bytes, at + 4) == "moov") return size;
        if (size < 8) break;
        at += size;
    }
    throw std::runtime_error("no moov in " + file.string());
}

}  // namespace

std::string runTool(const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const pid_t pid = start(arguments, ends[1]);
    close(ends[1]);
    const std::string output = readAll(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(arguments.front() + " failed");
    return output;
}

std::string ffmpeg(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"ffmpeg", "-y", "-v", "error", "-nostdin"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runTool(command);
}

void mkvmerge(const std::filesystem::path& file, const std::vector<std::string>& arguments) {
    runMkvTool({"mkvmerge", "-o", file.string()}, arguments);
}

void mkvpropedit(const std::filesystem::path& file, const std::vector<std::string>& arguments) {
    runMkvTool({"mkvpropedit", file.string()}, arguments);
}

std::vector<Bytes> accountItems() {
    return {textItem("apID", "person@example.com"), textItem("ownr", "A Person"),
            textItem("purd", "2011-04-05 06:07:08"), tagItem("akID", 21, Bytes{0})};
}

void makeMovie(const std::filesystem::path& file, const RealMovie& movie) {
    writeMovie(file, movie, 0);
    if (movie.padding > 0) {
        // FFmpeg reserves a whole size for moov and fills what is left with a free box.
        const std::size_t size = moovSizeOf(file) + static_cast<std::size_t>(movie.padding);
        writeMovie(file, movie, size);
    }
    if (movie.accountTags) putAccountItems(file, joined(accountItems()));
}

std::vector<std::string> packetHashes(const std::filesystem::path& file) {
    std::istringstream lines(
        ffmpeg({"-i", file.string(), "-map", "0", "-c", "copy", "-f", "streamhash", "-"}));
    std::vector<std::string> hashes;
    for (std::string line; std::getline(lines, line);) hashes.push_back(line);
    return hashes;
}

std::string probeValue(const std::filesystem::path& file, const std::string& entry,
                       const std::string& stream) {
    std::vector<std::string> command = {
        "ffprobe", "-v", "error", "-show_entries", entry, "-of", "default=nw=1:nk=1"};
    if (!stream.empty()) command.insert(command.end(), {"-select_streams", stream});
    command.push_back(file.string());
    std::string text = runTool(command);
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

std::string shownLines(const std::filesystem::path& film, const std::string& stream) {
    std::string text = ffmpeg({"-i", film.string(), "-map", "0:" + stream, "-f", "srt", "-"});
    std::erase(text, '\r');
    return std::regex_replace(text, std::regex("</?font[^>]*>"), "");
}

}  // namespace marlet::test
