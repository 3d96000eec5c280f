#include "helpers/mux_options.h"

#include <charconv>
#include <cstdint>

#include "foundation/errors.h"

namespace marlet::MuxOptions {

namespace {

constexpr std::uint32_t longestSlice = 60'000;
/// More than any tag block with its pictures.
constexpr std::uint32_t mostPadding = std::uint32_t{256} << 20;

/// Takes the arguments one place after the other.
class Places {
public:
    explicit Places(std::span<const std::string> arguments) : left_(arguments) {}

    bool comes(const char* option) const { return !left_.empty() && left_.front() == option; }
    std::size_t left() const { return left_.size(); }
    const std::string& take() {
        if (left_.empty()) throw MFError("the command line is incomplete");
        const std::string& value = left_.front();
        left_ = left_.subspan(1);
        return value;
    }
    void expect(const char* option) {
        const std::string& value = take();
        if (value != option)
            throw MFError("unknown option \"" + value + "\" where \"" + option + "\" stands");
    }
    std::uint32_t number(const char* option, std::uint32_t least, std::uint32_t most) {
        const std::string& text = take();
        std::uint32_t value = 0;
        const char* end = text.data() + text.size();
        const auto parsed = std::from_chars(text.data(), end, value);
        if (parsed.ec != std::errc() || parsed.ptr != end || value < least || value > most)
            throw MFError("\"" + text + "\" is no number for \"" + option + "\"");
        return value;
    }

private:
    std::span<const std::string> left_;
};

BuildMovie::Request build(Places places, const std::string& scratch) {
    BuildMovie::Request request;
    request.scratch = scratch;
    while (places.comes("-add")) {
        places.take();
        request.tracks.push_back(TrackRequests::parse(places.take()));
    }
    if (places.comes("-chap")) {
        places.take();
        request.chapters = places.take();
    }
    places.expect("-inter");
    request.sliceMilliseconds = places.number("-inter", 1, longestSlice);
    places.expect("-moovpad");
    request.padding = places.number("-moovpad", 0, mostPadding);
    places.expect("-new");
    request.output = places.take();
    if (places.left() > 0) throw MFError("there is more behind the output's name");
    return request;
}

Relayout::Request relayout(Places places) {
    constexpr std::size_t inputOutput = 3;  // IN -out OUT
    Relayout::Request request;
    places.expect("-inter");
    request.sliceMilliseconds = places.number("-inter", 1, longestSlice);
    places.expect("-moovpad");
    request.padding = places.number("-moovpad", 0, mostPadding);
    while (places.left() > inputOutput) {
        places.expect("-rem");
        request.removedTracks.insert(places.number("-rem", 1, UINT32_MAX));
    }
    request.input = places.take();
    places.expect("-out");
    request.output = places.take();
    return request;
}

}  // namespace

Command parse(std::span<const std::string> arguments) {
    if (arguments.size() == 1 && arguments[0] == "-version") return ShowVersion{};
    if (arguments.size() == 2 && arguments[0] == "-info") return ShowInfo{arguments[1]};
    if (!arguments.empty() && arguments[0] == "-tmp") {
        Places places(arguments.subspan(1));
        const std::string scratch = places.take();
        if (places.comes("-add")) return build(places, scratch);
        return relayout(places);  // it needs no scratch files
    }
    throw MFError(
        "this program takes -version, -info FILE, -tmp DIR -inter MS -moovpad N [-rem ID]... IN "
        "-out OUT, or -tmp DIR -add TRACK [-add TRACK]... [-chap FILE] -inter MS -moovpad N -new "
        "OUT");
}

}  // namespace marlet::MuxOptions
