#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "foundation/run_control.h"
#include "foundation/tool_runner.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"
#include "write/write_request.h"

namespace marlet::test {

/// A film in a folder of its own, in a home of its own, and the verbs of a write.
class FilmJob {
public:
    enum class Shape { FrontWithRoom, FrontWithoutRoom, Last, LastWithRoom };
    explicit FilmJob(Shape shape = Shape::FrontWithRoom, const std::string& name = "Film.mp4");

    /// The film's sound is stored together for so long.
    void storeSoundTogether(unsigned tenthsOfSeconds);
    /// Another film in its place.
    void setFilm(const Bytes& film);
    const std::filesystem::path& file() const { return request.file; }
    Bytes original() const { return original_; }
    Bytes now() const { return readFile(request.file); }

    /// The media tool is missing unless one of these was called. A script
    /// knows $slice (milliseconds), $in (the private copy) and $out (the file to make).
    void useTool(const std::string& script);
    /// A tool that makes these files, whatever it is given: by slice, or for all others under 0.
    void toolMakes(const std::map<int, Bytes>& bySlice);
    /// The program that stands in for MP4Box.
    void useOwnTool();

    WriteOutcome write();
    WriteOutcome restore();

    /// Runs an action when the write reports this label, each time or the first time only.
    void at(const std::string& label, std::function<void()> action);
    /// The folder of the running job; only valid within an action.
    std::filesystem::path workFolder() const;
    bool hasWorkFolders() const;
    bool hasJournal() const;
    /// Neither a work folder nor a journal.
    bool isTidy() const { return !hasWorkFolders() && !hasJournal(); }

    WriteRequest request;
    RunControl control;
    std::vector<std::string> labels;  ///< as reported, without repeats in a row
    std::vector<double> fractions;

private:
    OwnHome home_;
    TempFolder folder_;
    TempFolder helpers_;
    MP4BoxLocator::HelpersAt tools_{helpers_.path()};
    Bytes original_;
    std::map<std::string, std::function<void()>> actions_;
};

/// The movie behind a FilmJob: a picture track and a sound track, tagged "Old".
Movie smallMovie();
/// The same as a media tool lays it out: the index first, room behind it, and the samples of so
/// many tenths of seconds together.
Movie laidOut(unsigned tenthsOfSeconds);

/// Changes one byte; the size stays, and with KeepDate the date too.
enum class Date { Keep, Change };
void flipByte(const std::filesystem::path& file, std::uint64_t at, Date date = Date::Change);

/// A program of another name that holds a file open until it is destroyed.
class OtherProgram {
public:
    static constexpr const char* name = "downloader";
    enum class Holds { ForReading, ForWriting, MappedForWriting };
    OtherProgram(const std::filesystem::path& file, Holds holds);
    ~OtherProgram();
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

private:
    int input_ = -1;
    int pid_ = -1;
};

/// Details that make a film's tag block longer by some hundred bytes.
std::vector<Atom> newDetails();

}  // namespace marlet::test
