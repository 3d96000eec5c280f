#include "helpers/sound_command.h"

#include <algorithm>
#include <string_view>

#include "foundation/errors.h"

namespace marlet::SoundCommand {

namespace {

using Words = std::vector<std::string>;

struct Form {
    Kind kind;
    Words filters;            // of gpac
    std::string_view ending;  // of gpac's output
    Words options;            // of ffmpeg
};

const std::vector<Form>& forms() {
    // Without metadata and versions of itself, the same sound gives the same file.
    static const std::vector<Form> table{
        {Kind::decode,
         {"ffdec", "resample:osfmt=s16"},
         "",
         {"-c:a", "pcm_s16le", "-fflags", "+bitexact", "-f", "wav"}},
        {Kind::resample,
         {"ffdec", "resample:osfmt=s16:osr=48000"},
         "",
         {"-c:a", "pcm_s16le", "-ar", "48000", "-fflags", "+bitexact", "-f", "wav"}},
        {Kind::ac3,
         {"ffdec", "ffenc:c=ac3:b=640k"},
         "",
         {"-c:a", "ac3", "-b:a", "640k", "-f", "ac3"}},
        {Kind::aac,
         {"ffenc:c=aac:b=192k"},
         ":store=flat",
         {"-c:a", "aac", "-b:a", "192k", "-f", "ipod"}},
        {Kind::aacMono,
         {"ffenc:c=aac:b=128k"},
         ":store=flat",
         {"-c:a", "aac", "-b:a", "128k", "-f", "ipod"}},
    };
    return table;
}

/// FFmpeg reads what stands before a colon as a protocol.
std::string asFile(const std::filesystem::path& path) {
    return "file:" + path.string();
}

}  // namespace

Command parse(std::span<const std::string> arguments) {
    constexpr std::size_t around = 4;  // -i IN ... -o OUT
    const std::size_t count = arguments.size();
    if (count > around && arguments[0] == "-i" && arguments[count - 2] == "-o") {
        const std::span<const std::string> filters = arguments.subspan(2, count - around);
        const std::string& output = arguments[count - 1];
        for (const Form& form : forms())
            if (std::ranges::equal(form.filters, filters) && output.ends_with(form.ending))
                return {form.kind, arguments[1],
                        output.substr(0, output.size() - form.ending.size())};
    }
    throw MFError(
        "this program takes -i IN ffdec resample:osfmt=s16[:osr=48000] -o OUT, -i IN ffdec "
        "ffenc:c=ac3:b=640k -o OUT, or -i IN ffenc:c=aac:b=192k|128k -o OUT:store=flat");
}

std::vector<std::string> forFFmpeg(const Command& command) {
    // What Marlet gives in; a list of other files is none of it.
    Words words{"-nostdin",
                "-hide_banner",
                "-v",
                "error",
                "-y",
                "-protocol_whitelist",
                "file",
                "-format_whitelist",
                "matroska,flac,wav",
                "-i",
                asFile(command.input),
                "-map",
                "0:a:0",
                "-map_metadata",
                "-1",
                "-map_chapters",
                "-1"};
    const Form& form = *std::ranges::find(forms(), command.kind, &Form::kind);
    words.insert(words.end(), form.options.begin(), form.options.end());
    words.push_back(asFile(command.output));
    return words;
}

}  // namespace marlet::SoundCommand
