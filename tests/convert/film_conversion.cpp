#include "convert/film_conversion.h"

#include <stdexcept>

#include "convert/mkv_files.h"
#include "convert/plan_builder.h"
#include "foundation/work_area.h"
#include "support/media.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* lines = "1\n00:00:00,500 --> 00:00:01,500\nHello\n";
constexpr const char* chapters =
    "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"
    "CHAPTER02=00:00:01.000\nCHAPTER02NAME=Two\n";

Bytes makePlainFilm() {
    const TempFolder folder;
    ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=2", "-c:v", "libx264",
            "-pix_fmt", "yuv420p", (folder / "v.mp4").string()});
    ffmpeg({"-f", "lavfi", "-i", "sine=440:duration=2:sample_rate=48000", "-c:a", "aac",
            (folder / "a.aac").string()});
    folder.write("s.srt", std::string_view(lines));
    folder.write("c.txt", std::string_view(chapters));
    merge(folder / "film.mkv",
          {"--chapters", (folder / "c.txt").string(), (folder / "v.mp4").string(), "--language",
           "0:eng", (folder / "a.aac").string(), "--language", "0:ger", (folder / "a.aac").string(),
           "--language", "0:eng", (folder / "s.srt").string(), "--language", "0:eng",
           "--forced-display-flag", "0:1", (folder / "s.srt").string()});
    return readFile(folder / "film.mkv");
}

}  // namespace

const Bytes& plainFilm() {
    static const Bytes film = makePlainFilm();
    return film;
}

Bytes builtFilm(int slice, const std::vector<std::string>& more) {
    const TempFolder folder;
    const std::string source = folder.write("s.mkv", plainFilm()).string();
    const std::string made = (folder / "b.mp4").string();
    std::vector<std::string> command = {builtProgram("marlet-mux").string(),
                                        "-tmp",
                                        folder.path().string(),
                                        "-add",
                                        source + "#1:name=Video",
                                        "-add",
                                        source + "#2:lang=eng:name=English:group=1"};
    command.insert(command.end(), more.begin(), more.end());
    command.insert(command.end(),
                   {"-inter", std::to_string(slice), "-moovpad", "9000", "-new", made});
    runTool(command);
    return readFile(made);
}

FilmConversion::FilmConversion(const std::string& name, const Bytes& film) : original_(film) {
    request.source = folder_.write(name, film);
    request.outputDir = output_.path();
    request.atoms = {IlstEditor::text("©nam", "Charade"), IlstEditor::integer("stik", 9, 1)};
    date_ = fs::last_write_time(request.source);
    if (const auto mkv = MKVFile::open(request.source))
        request.plan =
            PlanBuilder::make(request.source, *mkv, {"eng"}, {}, mkv->blockStats()).snapshot();
}

void FilmConversion::putTool(const std::string& script, const Bytes& behind) {
    fs::remove(helpers_ / "MP4Box");  // it may be a link to a real tool
    Bytes file = bytesOf(
        "#!/bin/sh\n"
        "if [ \"$1\" = -info ]; then printf '%b' '" +
        listing +
        "'; exit 0; fi\n"
        "for each; do [ \"$was\" = -inter ] && slice=$each; was=$each; done\n"
        "out=$was\nprintf '%s\\n' \"$@\" > \"${out%/*}/arguments\"\n" +
        script + "\nexit\n");
    append(file, behind);
    fs::permissions(helpers_.write("MP4Box", file), fs::perms::owner_all);
}

void FilmConversion::useTool(const std::string& script) {
    putTool(script);
}

/// The films stand behind the script: the tool can read nothing else of a test's.
void FilmConversion::toolMakes(const std::map<int, Bytes>& bySlice, const std::string& then) {
    Bytes films;
    std::string script = "case $slice in\n";
    std::string others;
    for (const auto& [slice, bytes] : bySlice) {
        (slice == 0 ? others : script) += (slice == 0 ? "*" : std::to_string(slice)) +
                                          ") from=" + std::to_string(films.size()) +
                                          " size=" + std::to_string(bytes.size()) + " ;;\n";
        append(films, bytes);
    }
    putTool(script + others + "esac\ntail -c " + std::to_string(films.size()) +
                " \"$0\" | tail -c +$((from + 1)) | head -c $size > \"$out\"\n" + then,
            films);
}

void FilmConversion::useOwnTools() {
    fs::remove(helpers_ / "MP4Box");
    fs::create_symlink(builtProgram("marlet-mux"), helpers_ / "MP4Box");
    fs::create_symlink(builtProgram("marlet-audio"), helpers_ / "gpac");
}

WriteOutcome FilmConversion::run() {
    labels.clear();
    return Converter::runAny(request, control, [this](const std::string& label, double fraction) {
        std::function<void()> act;
        {
            const std::lock_guard lock(mutex_);
            if (labels.empty() || labels.back() != label) labels.push_back(label);
            const auto action = actions_.find(label);
            if (action != actions_.end() && fraction >= action->second.from) {
                act = action->second.act;
                actions_.erase(action);
            }
        }
        if (act) act();
    });
}

std::string FilmConversion::arguments() {
    const ScopedEnv keep("MARLET_KEEP_WORK", "");
    run();
    const fs::path work = workFolder();
    const std::string text = textOf(readFile(work / "tool" / "arguments"));
    fs::remove_all(work);
    return text;
}

void FilmConversion::at(const std::string& label, std::function<void()> action, double from) {
    actions_[label] = {std::move(action), from};
}

std::vector<std::string> FilmConversion::delivered() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(output_.path()))
        names.push_back(entry.path().filename().string());
    return names;
}

bool FilmConversion::hasWorkFolders() const {
    return !WorkArea::folders().empty();
}
fs::path FilmConversion::workFolder() const {
    return WorkArea::folders().at(0);
}

bool FilmConversion::isUntouched() const {
    return readFile(request.source) == original_ && fs::last_write_time(request.source) == date_ &&
           !hasWorkFolders();
}

}  // namespace marlet::test
