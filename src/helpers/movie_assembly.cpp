#include "helpers/movie_assembly.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "helpers/ac3_file.h"
#include "helpers/boxes.h"
#include "helpers/chunk_check.h"
#include "helpers/matroska_media.h"
#include "helpers/movie_track.h"
#include "helpers/picture_boxes.h"
#include "helpers/text_tracks.h"
#include "matroska/picture_shape.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mostTracks = 1000;
/// Of a file of subtitles or chapters.
constexpr std::size_t longestText = std::size_t{64} << 20;

enum class Kind { Matroska, Movie, Dolby, Subtitles };

Kind kindOf(const SourceFile& file) {
    constexpr std::array<std::uint8_t, 4> ebml = {0x1A, 0x45, 0xDF, 0xA3};
    constexpr std::array topBoxes = {boxCode("ftyp"), boxCode("moov"), boxCode("mdat"),
                                     boxCode("wide"), boxCode("free"), boxCode("skip")};
    std::array<std::uint8_t, 8> head{};
    const std::size_t got = FileOps::readFull(file.handle.get(), head, 0);
    if (got >= ebml.size() && std::equal(ebml.begin(), ebml.end(), head.begin()))
        return Kind::Matroska;
    if (got >= 2 && BigEndian::u16(head, 0) == 0x0B77) return Kind::Dolby;
    if (std::ranges::find(topBoxes, BigEndian::u32(head, 4)) != topBoxes.end()) return Kind::Movie;
    if (file.path.extension() == ".srt") return Kind::Subtitles;
    throw MFError("\"" + file.path.filename().string() + "\" is of no kind that can be added");
}

SourceFile openPlain(const fs::path& path) {
    SourceFile file;
    file.path = path;
    const std::string phrase = "cannot open \"" + path.filename().string() + "\"";
    // O_NONBLOCK: a pipe that is named like a film must not hold up the tool.
    file.handle = FileHandle::open(path, O_RDONLY | O_NONBLOCK, phrase);
    const auto stat = Sys::fstat(file.handle.get());
    if (!stat || !stat->isRegular) throw MFError("\"" + path.filename().string() + "\" is no file");
    file.size = stat->size;
    return file;
}

std::string readText(const fs::path& path) {
    const auto bytes = FileOps::readSmall(path, longestText);
    if (!bytes) throw MFError("\"" + path.filename().string() + "\" can't be read");
    return textOf(*bytes);
}

bool isPicture(const SourceFile& file, const MappedTrack& track) {
    const auto hdlr = RawBoxes::only(file.moov, track.trak, {boxCode("mdia"), boxCode("hdlr")});
    return hdlr &&
           BigEndian::u32(file.moov, static_cast<std::int64_t>(hdlr->start) + 8) == boxCode("vide");
}

/// A source that several tracks may come from.
struct OpenSource {
    Kind kind = Kind::Movie;
    std::size_t file = 0;
    std::unique_ptr<MKVFile> matroska;
    std::map<int, MatroskaFrames> frames;  // of Matroska
    std::size_t unpacked = 0;              // file of frames that were stored packed
    std::optional<MovieMap> movie;
};

class Assembler {
public:
    Assembler(const BuildMovie::Request& request, ScratchFolder& scratch)
        : request_(request), scratch_(scratch) {}

    AssembledMovie make() {
        if (request_.tracks.empty()) throw MFError("there is no track to build a film of");
        if (request_.tracks.size() > mostTracks) throw MFError("there are too many tracks");
        for (const TrackRequest& track : request_.tracks) open(track);
        for (auto& [path, source] : sources_) prepare(path, source);
        chooseScale();
        choosePicture();
        chooseIDs();
        if (request_.chapters) chapters_ = ChapterFile::parse(readText(*request_.chapters));
        for (std::size_t i = 0; i < request_.tracks.size(); i++) add(i);
        addChapters();
        if (texts_) texts_->finish();
        if (texts_) movie_.files[textFile_] = openPlain(textPath_);
        finishIndex();
        return std::move(movie_);
    }

private:
    void open(const TrackRequest& track) {
        if (sources_.contains(track.file)) return;
        OpenSource source;
        source.file = movie_.files.size();
        movie_.files.push_back(openPlain(track.file));
        source.kind = kindOf(movie_.files.back());
        if (source.kind == Kind::Movie) {
            movie_.files.back() = SourceFiles::open(track.file);
            source.movie = MovieMaps::read(movie_.files.back().moov, {});
        }
        if (source.kind == Kind::Matroska) {
            source.matroska = MKVFile::open(track.file);
            if (!source.matroska)
                throw MFError("\"" + track.file.filename().string() +
                              "\" isn't a Matroska file that can be read");
        }
        sources_.emplace(track.file, std::move(source));
    }

    /// Reads what all wanted tracks of a file need at once.
    void prepare(const fs::path& path, OpenSource& source) {
        std::set<int> numbers;
        std::set<std::uint32_t> ids;
        for (const TrackRequest& track : request_.tracks) {
            if (track.file != path) continue;
            if (source.kind == Kind::Matroska) {
                if (!track.track)
                    throw MFError("\"" + path.filename().string() +
                                  "\" has several tracks, and none was chosen");
                numbers.insert(static_cast<int>(*track.track));
            }
            if (source.kind == Kind::Movie)
                ids.insert(
                    MovieTracks::chosen(movie_.files[source.file], *source.movie, track.track));
        }
        if (source.kind == Kind::Matroska) {
            const fs::path unpacked = scratch_.next();
            source.frames = MatroskaFramesReader::read(*source.matroska, numbers, unpacked);
            const auto isThere = [](const auto& track) { return track.second.inScratch; };
            if (std::ranges::any_of(source.frames, isThere) && Sys::stat(unpacked)) {
                source.unpacked = movie_.files.size();
                movie_.files.push_back(openPlain(unpacked));
            }
        }
        if (source.kind == Kind::Movie) {
            MovieMap wanted = *source.movie;
            std::erase_if(wanted.tracks,
                          [&ids](const MappedTrack& track) { return !ids.contains(track.id); });
            ChunkCheck::run(wanted, movie_.files[source.file].media);
        }
    }

    /// A film that is only moved into another container keeps its clock, and with it its edit
    /// lists to the bit. Otherwise one that milliseconds and most frame rates divide.
    void chooseScale() {
        constexpr std::uint32_t usual = 90'000;
        const OpenSource& first = sources_.at(request_.tracks.front().file);
        scale_ = first.kind == Kind::Movie
                     ? MovieTracks::movieScale(movie_.files[first.file], *first.movie)
                     : usual;
    }

    /// Subtitles lie over the whole picture.
    void choosePicture() {
        for (const TrackRequest& track : request_.tracks) {
            const OpenSource& source = sources_.at(track.file);
            if (source.kind != Kind::Matroska) continue;
            const MKVTrack* const found = source.matroska->track(static_cast<int>(*track.track));
            if (found->type != 1 || found->pixelWidth <= 0 || found->pixelHeight <= 0) continue;
            const PictureShape::Size shown = PictureShape::shown(*found);
            const bool isOnItsSide = PictureBoxes::quarterTurns(*found) % 2 == 1;
            width_ = static_cast<std::uint32_t>(isOnItsSide ? shown.height : shown.width);
            height_ = static_cast<std::uint32_t>(isOnItsSide ? shown.width : shown.height);
            return;
        }
    }

    /// Tracks of an MP4 keep their numbers where those are free; all others get the next free one.
    void chooseIDs() {
        ids_.resize(request_.tracks.size());
        std::set<std::uint32_t> taken;
        for (std::size_t i = 0; i < ids_.size(); i++) {
            const TrackRequest& track = request_.tracks[i];
            const OpenSource& source = sources_.at(track.file);
            std::uint32_t id = 0;
            if (source.kind == Kind::Movie)
                id = MovieTracks::chosen(movie_.files[source.file], *source.movie, track.track);
            if (id == 0 || taken.contains(id))
                for (id = 1; taken.contains(id);) id++;
            taken.insert(id);
            ids_[i] = id;
        }
        while (taken.contains(chapterID_)) chapterID_++;
        nextID_ = std::max(*taken.rbegin(), request_.chapters ? chapterID_ : 0);
    }

    NewFile& texts() {
        if (!texts_) {
            textPath_ = scratch_.next();
            texts_ = std::make_unique<NewFile>(textPath_);
            textFile_ = movie_.files.size();
            movie_.files.emplace_back();
        }
        return *texts_;
    }

    void add(std::size_t number) {
        TrackRequest track = request_.tracks[number];
        OpenSource& source = sources_.at(track.file);
        TrackPlace place{ids_[number], scale_, 0};
        switch (source.kind) {
            case Kind::Matroska:
                return addMatroska(track, source, place);
            case Kind::Movie: {
                const SourceFile& file = movie_.files[source.file];
                const std::uint32_t id = MovieTracks::chosen(file, *source.movie, track.track);
                const auto found = std::ranges::find(source.movie->tracks, id, &MappedTrack::id);
                if (isPicture(file, *found)) nameChapters(place);
                return put(MovieTracks::make(file, *found, track, place), source.file, {});
            }
            case Kind::Dolby: {
                const SourceFile& file = movie_.files[source.file];
                return put(TrackBoxes::make(AC3File::read(file.handle, file.size), track, place),
                           source.file, {});
            }
            case Kind::Subtitles: {
                NewFile& texts = this->texts();
                const TrackMedia media = SubtitleTrack::fromSRT(
                    readText(track.file), track.textFlags.value_or(0), width_, height_, texts);
                return put(TrackBoxes::make(media, track, place), textFile_, {});
            }
        }
    }

    void addMatroska(const TrackRequest& request, OpenSource& source, TrackPlace place) {
        const auto number = static_cast<int>(*request.track);
        MatroskaFrames& frames = source.frames.at(number);
        const MKVTrack& track = *source.matroska->track(number);
        const std::size_t file = frames.inScratch ? source.unpacked : source.file;
        const TrackMedia media = MatroskaMedia::make(track, frames, movie_.files[file].handle);
        if (media.handler == boxCode("vide")) nameChapters(place);
        put(TrackBoxes::make(media, request, place), file, frames.prefix);
    }

    /// The first picture refers to the chapters.
    void nameChapters(TrackPlace& place) {
        if (!request_.chapters || isChaptered_) return;
        place.chapterTrack = chapterID_;
        isChaptered_ = true;
    }

    void addChapters() {
        if (chapters_.empty()) return;
        const double end = seconds_;
        const TrackMedia media = ChapterFile::track(chapters_, end, texts());
        TrackRequest request;
        request.disabled = true;
        request.delayMs = static_cast<std::uint32_t>(chapters_.front().startMs);
        put(TrackBoxes::make(media, request, {chapterID_, scale_, 0}), textFile_, {});
    }

    void put(const TrackBox& track, std::size_t file, const Bytes& prefix) {
        append(traks_, track.bytes);
        seconds_ = std::max(seconds_, track.seconds);
        movie_.media.push_back({file, prefix});
    }

    /// `moov` with `mvhd` (ISO/IEC 14496-12, 8.2.2), the tracks and the list of chapters.
    void finishIndex() {
        const auto length = static_cast<std::uint64_t>(std::llround(seconds_ * scale_));
        const bool isLong = length > std::numeric_limits<std::uint32_t>::max();
        Bytes clock(isLong ? 16 : 8);
        append(clock, Boxes::u32s({scale_}));
        if (isLong)
            BigEndian::put64(clock, length);
        else
            BigEndian::put32(clock, static_cast<std::uint32_t>(length));
        const Bytes header = Boxes::full(
            boxCode("mvhd"), isLong ? 1 : 0, 0,
            {clock, Boxes::u32s({0x10000}), Boxes::u16s({0x100, 0}), Boxes::u32s({0, 0}),
             Boxes::matrix(), Boxes::u32s({0, 0, 0, 0, 0, 0, nextID_ + 1})});
        Bytes userData;
        if (!chapters_.empty())
            userData = Boxes::box(boxCode("udta"), {ChapterFile::list(chapters_)});
        movie_.moov = Boxes::box(boxCode("moov"), {header, traks_, userData});
    }

    const BuildMovie::Request& request_;
    ScratchFolder& scratch_;
    AssembledMovie movie_;
    std::map<fs::path, OpenSource> sources_;
    std::vector<std::uint32_t> ids_;
    std::uint32_t chapterID_ = 1;
    std::uint32_t nextID_ = 1;
    bool isChaptered_ = false;
    std::uint32_t scale_ = 1;
    std::uint32_t width_ = 1280;
    std::uint32_t height_ = 720;
    std::vector<ChapterMark> chapters_;
    std::unique_ptr<NewFile> texts_;
    fs::path textPath_;
    std::size_t textFile_ = 0;
    Bytes traks_;
    double seconds_ = 0;
};

}  // namespace

ScratchFolder::~ScratchFolder() {
    for (const fs::path& file : files_) Sys::unlink(file);
}

fs::path ScratchFolder::next() {
    files_.push_back(folder_ / (".marlet-mux-" + std::to_string(files_.size() + 1)));
    return files_.back();
}

AssembledMovie MovieAssembly::make(const BuildMovie::Request& request, ScratchFolder& scratch) {
    return Assembler(request, scratch).make();
}

}  // namespace marlet
