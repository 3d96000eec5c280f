#include "demo_library/maker.h"

#include <algorithm>
#include <stdexcept>

#include "support/box_builder.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::demo {

namespace fs = std::filesystem;
using test::runTool;

namespace {

/// What iTunes and others keep free for later tags.
constexpr std::uint64_t room = 16384;
/// Sizes and types of the item and of its data box, with the data's kind and locale.
constexpr std::size_t itemHeaders = 24;

/// FFmpeg writes no account tags: a comment of the same length holds their place.
std::string placeOfAccountTags() {
    std::string text = "room for account tags ";
    text.resize(test::joined(test::accountItems()).size() - itemHeaders, '.');
    return text;
}

void putAccountTags(const fs::path& file) {
    Bytes bytes = test::readFile(file);
    const Bytes comment = test::textItem("©cmt", placeOfAccountTags());
    const Bytes items = test::joined(test::accountItems());
    const auto at = std::search(bytes.begin(), bytes.end(), comment.begin(), comment.end());
    if (at == bytes.end()) throw std::runtime_error("no comment in " + file.string());
    std::copy(items.begin(), items.end(), at);
    test::writeFile(file, bytes);
}

void appendRoom(const fs::path& file) {
    Bytes bytes = test::readFile(file);
    append(bytes, test::box("free", Bytes(room - 8)));
    test::writeFile(file, bytes);
}

/// How much to set aside ahead of the media for this file's index and the room behind it.
std::uint64_t indexWithRoom(const fs::path& file) {
    return test::payloadOf(test::readFile(file), "moov").size() + 8 + room;
}

}  // namespace

Maker::Maker(const fs::path& library)
    : library_(library), work_(library / ".making"), piece_(work_ / "piece.mp4") {
    fs::create_directories(work_);
    // Two pictures a second make chunks of sound of half a second.
    runTool({"ffmpeg",
             "-y",
             "-v",
             "error",
             "-nostdin",
             "-f",
             "lavfi",
             "-i",
             "testsrc2=size=96x54:rate=2:duration=10",
             "-f",
             "lavfi",
             "-i",
             "sine=frequency=220:sample_rate=8000:duration=10",
             "-c:v",
             "libx264",
             "-preset",
             "veryslow",
             "-crf",
             "28",
             "-bf",
             "0",
             "-g",
             "20",
             "-pix_fmt",
             "yuv420p",
             "-threads",
             "1",
             "-c:a",
             "aac",
             "-b:a",
             "6k",
             "-ac",
             "1",
             piece_.string()});
}

Maker::~Maker() {
    std::error_code ignored;
    fs::remove_all(work_, ignored);
}

/// A size of moov other than 0 sets that much aside ahead of the media.
void Maker::write(const Item& item, const fs::path& file, std::uint64_t moovSize) const {
    std::vector<std::string> arguments = {"ffmpeg",
                                          "-y",
                                          "-v",
                                          "error",
                                          "-nostdin",
                                          "-stream_loop",
                                          "-1",
                                          "-i",
                                          piece_.string(),
                                          "-t",
                                          std::to_string(item.seconds),
                                          "-c",
                                          "copy"};
    const auto add = [&](const std::string& name, const std::string& value) {
        arguments.insert(arguments.end(), {name, value});
    };
    for (const auto& [name, value] : item.tags) add("-metadata", name + "=" + value);
    if (item.accountTags) add("-metadata", "comment=" + placeOfAccountTags());
    if (item.index == Index::first) add("-movflags", "+faststart");
    if (moovSize > 0) add("-moov_size", std::to_string(moovSize));
    arguments.push_back(file.string());
    runTool(arguments);
}

void Maker::make(const Item& item) const {
    const fs::path file = library_ / item.path;
    fs::create_directories(file.parent_path());
    write(item, file, 0);
    if (item.index == Index::firstWithRoom) write(item, file, indexWithRoom(file));
    if (item.accountTags) putAccountTags(file);
    if (item.sound == SoundLayout::oneStretch)
        test::writeFile(file, test::storedTrackByTrack(test::readFile(file)));
    if (item.index == Index::lastWithRoom) appendRoom(file);
}

}  // namespace marlet::demo
