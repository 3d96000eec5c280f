#include "helpers/laid_out.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "foundation/errors.h"
#include "mp4/sound_layout.h"
#include "support/box_reader.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

struct Found {
    std::string type;
    ByteView whole;
    std::size_t header = 8;
    ByteView payload() const { return whole.subspan(header); }
};

std::vector<Found> boxesOf(ByteView data) {
    std::vector<Found> found;
    while (data.size() >= 8) {
        std::uint64_t size = BigEndian::u32(data, 0);
        std::size_t header = 8;
        if (size == 1) {
            size = BigEndian::u64(data, 8);
            header = 16;
        }
        if (size == 0) size = data.size();
        if (size < header || size > data.size()) throw std::runtime_error("a broken box");
        found.push_back({BigEndian::fourCC(data, 4), data.first(size), header});
        data = data.subspan(size);
    }
    return found;
}

bool isContainer(const std::string& type) {
    static constexpr std::array types = {"moov", "trak", "mdia", "minf", "stbl"};
    return std::find(types.begin(), types.end(), type) != types.end();
}

bool isChunkTable(const std::string& type) {
    return type == "stsc" || type == "stco" || type == "co64";
}

void compare(const std::string& path, const Found& before, const Found& after,
             std::vector<std::string>& changed) {
    if (isChunkTable(before.type) && isChunkTable(after.type)) return;
    if (before.type != after.type || before.header != after.header) return changed.push_back(path);
    if (!isContainer(before.type)) {
        if (!std::equal(before.whole.begin(), before.whole.end(), after.whole.begin(),
                        after.whole.end()))
            changed.push_back(path);
        return;
    }
    const auto old = boxesOf(before.payload());
    const auto now = boxesOf(after.payload());
    if (old.size() != now.size()) return changed.push_back(path + " (number of boxes)");
    std::size_t children = 0;
    std::map<std::string, int> seen;
    for (std::size_t i = 0; i < old.size(); i++) {
        const int nth = seen[old[i].type]++;
        const std::string index = nth > 0 ? "[" + std::to_string(nth) + "]" : "";
        compare(path + "/" + old[i].type + index, old[i], now[i], changed);
        children += old[i].whole.size();
    }
    // What stands behind the last child, too.
    std::size_t nowChildren = 0;
    for (const Found& child : now) nowChildren += child.whole.size();
    const ByteView tail = before.payload().subspan(children);
    const ByteView nowTail = after.payload().subspan(nowChildren);
    if (!std::equal(tail.begin(), tail.end(), nowTail.begin(), nowTail.end()))
        changed.push_back(path + " (behind the last box)");
}

Relayout::Request inFolder(const TempFolder& folder, ByteView file, Relayout::Request request) {
    request.input = folder.write("in.mp4", file);
    request.output = folder / "out.mp4";
    return request;
}

}  // namespace

Bytes laidOut(ByteView file, Relayout::Request request) {
    const TempFolder folder;
    request = inFolder(folder, file, request);
    Relayout::run(request);
    return readFile(request.output);
}

std::string refusal(ByteView file, Relayout::Request request) {
    const TempFolder folder;
    request = inFolder(folder, file, request);
    std::string sentence;
    try {
        Relayout::run(request);
        ADD_FAILURE() << "the file was laid out";
    } catch (const MFError& failure) {
        sentence = failure.description();
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        EXPECT_EQ(entry.path().filename(), "in.mp4") << "something was left behind";
    EXPECT_EQ(readFile(request.input), Bytes(file.begin(), file.end()));
    return sentence;
}

std::vector<std::string> topTypes(ByteView file) {
    std::vector<std::string> types;
    for (const Found& box : boxesOf(file)) types.push_back(box.type);
    return types;
}

ByteView topBox(ByteView file, std::string_view type, int nth) {
    for (const Found& box : boxesOf(file))
        if (box.type == type && nth-- == 0) return box.whole;
    throw std::runtime_error("no box " + std::string(type));
}

std::vector<std::string> changedBoxes(ByteView before, ByteView after) {
    std::vector<std::string> changed;
    compare("moov", boxesOf(topBox(before, "moov")).front(), boxesOf(topBox(after, "moov")).front(),
            changed);
    return changed;
}

bool samplesEqual(ByteView before, ByteView after, int tracks) {
    for (int t = 0; t < tracks; t++)
        if (samplesOf(before, t) != samplesOf(after, t)) return false;
    return true;
}

double soundLayout(ByteView file) {
    return measure(parseSummary(payloadOf(file, "moov"), Detail::No));
}

Movie badlyLaidOut(std::uint32_t seconds) {
    Movie movie;
    movie.layout = Movie::Layout::TrackByTrack;
    movie.tracks = {evenTrack("vide", seconds * 25, 90, 40, 5),
                    evenTrack("soun", seconds * 50, 20, 20, 7)};
    movie.tags = {textItem("©nam", "A Film")};
    movie.tagRoom = 100;
    return movie;
}

}  // namespace marlet::test
