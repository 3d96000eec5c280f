#include "mp4/file_info.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "mp4/box_cursor.h"
#include "mp4/sound_layout.h"
#include "mp4/tags.h"

namespace marlet {

namespace {

struct TagRow {
    BoxCode type;
    void (*take)(FileTags&, ByteView value);
};

/// Big-endian, of the first 8 bytes at most; 0 for an empty value.
std::int64_t numberIn(ByteView value) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : value.first(std::min<std::size_t>(value.size(), 8)))
        number = number << 8 | byte;
    return static_cast<std::int64_t>(number);
}

constexpr BoxCode titleTag = 0xA96E616D;  // "©nam"

constexpr std::array<TagRow, 4> tagRows = {{
    {titleTag, [](FileTags& tags, ByteView value) { tags.title = Text::repairUtf8(value); }},
    {boxCode("tvsh"), [](FileTags& tags, ByteView value) { tags.show = Text::repairUtf8(value); }},
    {boxCode("tvsn"), [](FileTags& tags, ByteView value) { tags.season = numberIn(value); }},
    {boxCode("tves"), [](FileTags& tags, ByteView value) { tags.episode = numberIn(value); }},
}};

void takeItem(ByteView moov, const BoxSpan& item, FileTags& tags) {
    constexpr std::int64_t valueHeader = 8;  // type and locale
    const auto* const row = std::ranges::find(tagRows, item.code, &TagRow::type);
    if (row == tagRows.end()) return;
    const auto data = findSpan(moov, item, {boxCode("data")});
    if (data) row->take(tags, slice(moov, data->start + valueHeader, data->end));
}

/// Text of a name on disk, whose bytes may be anything.
std::string nameText(const std::filesystem::path& name) {
    return Text::repairUtf8(viewOf(name.native()));
}

/// Nothing for a text without digits, and for more than a number can hold.
std::optional<std::int64_t> numberOf(std::string_view digits) {
    std::int64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

std::optional<std::int64_t> digitsIn(const std::string& text) {
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits),
                         [](char c) { return c >= '0' && c <= '9'; });
    return numberOf(digits);
}

/// What the folders above a file say.
struct Folders {
    std::string own;
    std::string parent;  ///< of the own one
    bool isSeason = false;
    bool isBelowShows = false;

    explicit Folders(const std::filesystem::path& url) {
        static const Regex season(R"(^(Season|Series|Specials?)\b)", Regex::Case::Insensitive);
        const std::filesystem::path folder = url.parent_path();
        own = nameText(folder.filename());
        parent = nameText(folder.parent_path().filename());
        isSeason = season.matchesIn(own);
        isBelowShows =
            std::ranges::any_of(url, [](const auto& part) { return part.native() == "TV Shows"; });
    }
};

/// A file's name without what tells its resolution, parted from the episode number it begins with.
struct NameParts {
    std::string title;
    std::optional<std::int64_t> number;

    explicit NameParts(const std::string& stem) {
        static const Regex resolution(R"(\s*\((1080p|720p|4K|SD|HD)[^)]*\))");
        static const Regex leadingNumber(R"(^(\d+)[\s.\-]+)");
        title = resolution.replaceAll(stem, "");
        if (const auto match = leadingNumber.firstMatch(title)) {
            number = numberOf(match->groups.at(0));
            title.erase(0, match->end);
        }
    }
};

const std::string& firstFilled(const std::string& wanted, const std::string& otherwise) {
    return wanted.empty() ? otherwise : wanted;
}

FileInfo describeMovie(const Folders& folders, const FileTags& tags) {
    FileInfo info;
    info.isMovie = true;
    info.show = firstFilled(tags.title, folders.own);
    info.title = "Movie";
    return info;
}

FileInfo describeEpisode(const Folders& folders, const NameParts& name, const FileTags& tags) {
    FileInfo info;
    info.season = tags.season;
    if (!info.season && folders.isSeason) info.season = digitsIn(folders.own);
    info.episode = tags.episode ? tags.episode : name.number;
    info.show = firstFilled(tags.show, folders.isSeason ? folders.parent : folders.own);
    info.title = firstFilled(tags.title, name.title);
    return info;
}

std::string twoDigits(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return digits.size() < 2 ? "0" + digits : digits;
}

}  // namespace

std::optional<std::string> FileInfo::episodeLabel() const {
    if (!season || !episode) return std::nullopt;
    return "S" + twoDigits(*season) + "E" + twoDigits(*episode);
}

std::string FileInfo::displayName() const {
    if (isMovie) return show;
    const auto label = episodeLabel();
    return label ? *label + " " + title : title;
}

FileTags parseTags(ByteView moov) {
    FileTags tags;
    for (const Box& block : tagBlocks(moov)) {
        BoxCursor items(moov, block.start, block.end);
        while (const auto item = items.next()) takeItem(moov, *item, tags);
    }
    return tags;
}

FileInfo describe(const std::filesystem::path& url, const FileTags& tags) {
    const Folders folders(url);
    const bool isEpisode = !tags.show.empty() || folders.isSeason || folders.isBelowShows;
    if (!isEpisode) return describeMovie(folders, tags);
    return describeEpisode(folders, NameParts(nameText(url.stem())), tags);
}

std::optional<FileInfo> readInfo(const std::filesystem::path& url) {
    try {
        return describe(url, parseTags(loadMoov(url)));
    } catch (const MFError&) {
        return std::nullopt;
    }
}

FileInfo scanFile(const std::filesystem::path& url) {
    const Bytes moov = loadMoov(url);
    FileInfo info = describe(url, parseTags(moov));
    info.measure = measure(parseSummary(moov, url, Detail::No));
    return info;
}

}  // namespace marlet
