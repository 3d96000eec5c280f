// marlet-audio: what Marlet needs of GPAC's gpac, for where that is missing: decoding sound and
// encoding it, by FFmpeg.

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "helpers/sound_command.h"

namespace {

using namespace marlet;

/// Becomes ffmpeg, so that whoever watches this process watches the one that works. Comes back
/// only when that couldn't be started.
void become(const std::vector<std::string>& arguments) {
    std::vector<char*> words;
    std::string name = "ffmpeg";
    words.push_back(name.data());
    std::vector<std::string> own = arguments;
    for (std::string& word : own) words.push_back(word.data());
    words.push_back(nullptr);
    ::execvp(name.c_str(), words.data());
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        become(SoundCommand::forFFmpeg(SoundCommand::parse(arguments)));
        std::fprintf(stderr, "marlet-audio: ffmpeg could not be started: %s\n",
                     std::strerror(errno));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "marlet-audio: %s\n", failure.what());
    }
    return 1;
}
