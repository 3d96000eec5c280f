#include "verify/film_edits.h"

#include "support/box_reader.h"

namespace marlet::test {

ByteView payloadIn(ByteView file, const BoxPath& path) {
    ByteView inside = file;
    for (const Step& step : path) {
        inside = payloadOf(inside, step.type, step.nth);
        if (step.type == "meta") inside = inside.subspan(4);
        if (step.type == "stsd") inside = inside.subspan(8);
    }
    return inside;
}

std::size_t payloadAt(ByteView file, const BoxPath& path) {
    return static_cast<std::size_t>(payloadIn(file, path).data() - file.data());
}

Bytes edited(Bytes file, const BoxPath& path, std::size_t at, ByteView with) {
    const std::size_t place = payloadAt(file, path) + at;
    return patched(std::move(file), place, with);
}

Bytes flipped(Bytes file, std::size_t at) {
    file.at(at) ^= 0xFF;
    return file;
}

BoxPath trackPath(int nth, const BoxPath& below) {
    BoxPath path = {{"moov"}, {"trak", nth}};
    path.insert(path.end(), below.begin(), below.end());
    return path;
}

BoxPath mediaPath(int nth, const BoxPath& below) {
    BoxPath path = trackPath(nth, {{"mdia"}});
    path.insert(path.end(), below.begin(), below.end());
    return path;
}

BoxPath tablePath(int nth, std::string_view table) {
    return mediaPath(nth, {{"minf"}, {"stbl"}, {table}});
}

Movie film() {
    MovieTrack picture = evenTrack("vide", 40, 300, 100);
    picture.edits = {{4000, 0}};
    picture.tables = {cttsBox({{40, 200}}), stssBox({1, 21})};
    picture.boxes = {box("tref", {box("chap", be32(3))})};
    MovieTrack sound = evenTrack("soun", 80, 40, 50, 2);
    sound.language = "eng";
    sound.altGroup = 1;
    Movie movie;
    movie.tracks = {picture, sound, textTrack({"First", "Second"}, 2000)};
    movie.tags = {textItem("©nam", "A Film"), textItem("©ART", "A Person"),
                  tagItem("hdvd", 21, Bytes{1})};
    movie.userData = {chplBox({{0, "First"}, {2000, "Second"}})};
    movie.layout = Movie::Layout::TrackByTrack;
    return movie;
}

Movie interleaved(Movie movie) {
    movie.layout = Movie::Layout::Interleaved;
    movie.padding = 4096;
    return movie;
}

}  // namespace marlet::test
