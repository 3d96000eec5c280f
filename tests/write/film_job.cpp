#include "write/film_job.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "foundation/work_area.h"
#include "write/tag_writer.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t room = 8000;

Movie shaped(FilmJob::Shape shape) {
    using Shape = FilmJob::Shape;
    Movie movie = smallMovie();
    const bool isFront = shape == Shape::FrontWithRoom || shape == Shape::FrontWithoutRoom;
    movie.index = isFront ? Movie::Index::First : Movie::Index::Last;
    const bool hasRoom = shape == Shape::FrontWithRoom || shape == Shape::LastWithRoom;
    movie.padding = hasRoom ? room : 0;
    return movie;
}

}  // namespace

Movie smallMovie() {
    Movie movie;
    movie.tracks = {evenTrack("vide", 40, 60, 100), evenTrack("soun", 40, 20, 100)};
    movie.tags = {textItem("©nam", "Old"), tagItem("apID", 1, viewOf("buyer@example.org")),
                  tagItem("hdvd", 21, Bytes{0, 0, 0, 2})};
    return movie;
}

Movie laidOut(unsigned tenthsOfSeconds) {
    Movie movie = smallMovie();
    movie.padding = room;
    for (MovieTrack& track : movie.tracks) track.samplesPerChunk = tenthsOfSeconds;
    return movie;
}

FilmJob::FilmJob(Shape shape, const std::string& name) : original_(buildMovie(shaped(shape))) {
    request.file = folder_.write(name, original_);
    request.mode = WriteRequest::WriteDetails{newDetails()};
}

void FilmJob::storeSoundTogether(unsigned tenthsOfSeconds) {
    setFilm(buildMovie(laidOut(tenthsOfSeconds)));
}

void FilmJob::setFilm(const Bytes& film) {
    original_ = film;
    writeFile(request.file, original_);
}

void FilmJob::useTool(const std::string& script) {
    fs::remove(helpers_ / "MP4Box");  // it may be a link to a real tool
    const fs::path tool =
        helpers_.write("MP4Box",
                       "#!/bin/sh\nwhile [ $# -gt 3 ] || [ \"$2\" != -out ]; do\n"
                       "  [ \"$1\" = -inter ] && slice=$2\n  shift\ndone\nin=$1 out=$3\n" +
                           script + "\n");
    fs::permissions(tool, fs::perms::owner_all);
}

namespace {

/// A line of a shell script that writes these bytes; in octal, as every shell's printf reads it.
std::string making(const Bytes& bytes) {
    std::string line = "printf '";
    for (const std::uint8_t byte : bytes) {
        line += '\\';
        for (const unsigned shift : {6U, 3U, 0U})
            line += static_cast<char>('0' + ((byte >> shift) & 7U));
    }
    return line + "' > \"$out\"";
}

}  // namespace

void FilmJob::toolMakes(const std::map<int, Bytes>& bySlice) {
    std::string script = "case $slice in\n";
    for (const auto& [slice, bytes] : bySlice)
        if (slice != 0) script += std::to_string(slice) + ") " + making(bytes) + " ;;\n";
    if (const auto others = bySlice.find(0); others != bySlice.end())
        script += "*) " + making(others->second) + " ;;\n";
    useTool(script + "esac");
}

void FilmJob::useOwnTool() {
    fs::remove(helpers_ / "MP4Box");
    fs::create_symlink(builtProgram("marlet-mux"), helpers_ / "MP4Box");
}

WriteOutcome FilmJob::write() {
    labels.clear();
    fractions.clear();
    return TagWriter::write(request, control, [this](const std::string& label, double fraction) {
        if (labels.empty() || labels.back() != label) {
            labels.push_back(label);
            if (const auto action = actions_.find(label); action != actions_.end())
                action->second();
        }
        fractions.push_back(fraction);
    });
}

WriteOutcome FilmJob::restore() {
    request.mode = WriteRequest::RestoreOriginal{};
    return write();
}

void FilmJob::at(const std::string& label, std::function<void()> action) {
    actions_[label] = std::move(action);
}

fs::path FilmJob::workFolder() const {
    return WorkArea::folders().at(0);
}
bool FilmJob::hasWorkFolders() const {
    return !WorkArea::folders().empty();
}
bool FilmJob::hasJournal() const {
    return fs::exists(Paths::journalFile());
}

void flipByte(const fs::path& file, std::uint64_t at, Date date) {
    const auto before = Sys::stat(file);
    Bytes bytes = readFile(file);
    bytes.at(at) ^= 0xFF;
    {
        const FileHandle handle = FileHandle::open(file, O_WRONLY, "test");
        if (Sys::pwrite(handle.get(), &bytes[at], 1, at) != 1) throw std::runtime_error("flip");
    }
    // Another date for certain, however coarse the file system's clock.
    Sys::setModified(file,
                     date == Date::Keep ? before->mtime : before->mtime + std::chrono::seconds(5));
}

namespace {

void holdFile(const fs::path& file, OtherProgram::Holds holds) {
    using Holds = OtherProgram::Holds;
    const int fd = ::open(file.c_str(), holds == Holds::ForReading ? O_RDONLY : O_RDWR);
    if (fd < 0) ::_exit(1);
    if (holds != Holds::MappedForWriting) return;
    if (::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0) == MAP_FAILED) ::_exit(1);
    ::close(fd);
}

}  // namespace

OtherProgram::OtherProgram(const fs::path& file, Holds holds) {
    int toChild[2];
    int fromChild[2];
    if (::pipe2(toChild, O_CLOEXEC) != 0 || ::pipe2(fromChild, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    pid_ = ::fork();
    if (pid_ == 0) {
        ::prctl(PR_SET_NAME, name);
        ::close(toChild[1]);
        holdFile(file, holds);
        char byte = 0;
        const bool isTold =
            ::write(fromChild[1], &byte, 1) == 1 && ::read(toChild[0], &byte, 1) == 0;
        ::_exit(isTold ? 0 : 1);
    }
    ::close(toChild[0]);
    ::close(fromChild[1]);
    input_ = toChild[1];
    char ready = 0;
    const bool isReady = ::read(fromChild[0], &ready, 1) == 1;
    ::close(fromChild[0]);
    if (!isReady) throw std::runtime_error("the other program didn't start");
}

OtherProgram::~OtherProgram() {
    ::close(input_);
    ::waitpid(pid_, nullptr, 0);
}

std::vector<Atom> newDetails() {
    return {IlstEditor::text("©nam", "A much longer title than the file had"),
            IlstEditor::text("desc", std::string(300, 'd')), IlstEditor::integer("stik", 9, 1)};
}

}  // namespace marlet::test
