// Files of any size and shape, in little memory.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "foundation/syscalls.h"
#include "helpers/laid_out.h"
#include "helpers/new_layout.h"
#include "support/box_reader.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool sanitized = false;
#endif

constexpr std::uint64_t gibibyte = 1ULL << 30;

/// A film of `seconds`: a sample of picture and two of sound a second, one track behind the other,
/// whose media is a hole of that size in the file.
fs::path sparseFilm(const TempFolder& folder, std::uint32_t seconds, std::uint32_t pictureBytes) {
    constexpr std::uint32_t soundBytes = 1000;
    const std::uint64_t media = std::uint64_t{seconds} * (pictureBytes + 2 * soundBytes);
    const Bytes ftyp = ftypBox();
    const std::uint64_t mediaAt = ftyp.size() + 16;
    const auto trak = [&](std::uint32_t id, std::string_view handler, std::uint32_t perSecond,
                          std::uint32_t size, std::uint64_t at) {
        return box(
            "trak",
            {tkhdBox(id),
             mdiaBox(handler, 1000, seconds * 1000,
                     {stsdBox("abcd"), sttsBox({{seconds * perSecond, 1000 / perSecond}}),
                      stscBox({{1, seconds * perSecond}}), stszBox(size, seconds * perSecond),
                      stcoBox({static_cast<std::uint32_t>(at)})})});
    };
    const Bytes moov =
        box("moov",
            {mvhdBox(1000, seconds * 1000), trak(1, "soun", 2, soundBytes, mediaAt),
             trak(2, "vide", 1, pictureBytes, mediaAt + std::uint64_t{seconds} * 2 * soundBytes)});
    const fs::path file =
        folder.write("film.mp4", joined({ftyp, boxHeader("mdat", 1), be64(media + 16)}));
    fs::resize_file(file, mediaAt + media);
    const FileHandle handle = FileHandle::open(file, O_WRONLY, "cannot write the film");
    EXPECT_EQ(Sys::pwrite(handle.get(), moov.data(), moov.size(), mediaAt + media),
              static_cast<ssize_t>(moov.size()));
    return file;
}

/// A process that has no more than this much address space; gives its exit status.
int statusOfLimited(std::uint64_t most, const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit{most, most};
        ::setrlimit(RLIMIT_AS, &limit);
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

}  // namespace

TEST(LargeFiles, AreStreamedInLessMemoryThanTheyHaveBytes) {
    if (sanitized) GTEST_SKIP() << "a sanitizer keeps terabytes of addresses";
    const TempFolder folder;
    const fs::path film = sparseFilm(folder, 1000, 200'000);
    const fs::path out = folder / "out.mp4";
    ASSERT_EQ(statusOfLimited(std::uint64_t{96} << 20,
                              {builtProgram("marlet-mux").string(), "-tmp", "/tmp", "-inter", "500",
                               "-moovpad", "4096", film.string(), "-out", out.string()}),
              0);
    EXPECT_GT(fs::file_size(out), 200'000'000U);
}

TEST(LargeFiles, GetWideOffsetsOnlyInTheTracksThatPass4GiB) {
    const TempFolder folder;
    // 4.5 GiB of media: the old chunk offsets lie below 4 GiB, the last new ones don't.
    const SourceFile file = SourceFiles::open(sparseFilm(folder, 4608, 1 << 20));
    const MovieMap map = MovieMaps::read(file.moov, {});
    const NewLayout layout = NewLayouts::make(file, map, 500, 4096);
    ASSERT_GT(layout.places.mediaBytes, 4 * gibibyte);
    EXPECT_EQ(layout.places.mediaHeader, 16U);
    for (const NewIndex::Offsets& table : layout.index.offsets) {
        EXPECT_TRUE(table.wide);
        const auto at = static_cast<std::int64_t>(table.at);
        EXPECT_EQ(BigEndian::fourCC(layout.index.moov, at - 12), "co64");
        const std::uint32_t chunks = BigEndian::u32(layout.index.moov, at - 4);
        EXPECT_GT(BigEndian::u64(layout.index.moov, at + 8 * (std::int64_t{chunks} - 1)),
                  4 * gibibyte);
    }
}

TEST(LargeFiles, KeepNarrowOffsetsUpToTheLastByteThatTheyReach) {
    // The last chunk starts at exactly 0xFFFFFFFF; with a byte more of padding it would not.
    Bytes trak[2];
    for (std::uint32_t i = 0; i < 2; i++)
        trak[i] = box("trak", {tkhdBox(i + 1),
                               mdiaBox(i == 0 ? "vide" : "text", 1000, 1000,
                                       {stsdBox("abcd"), sttsBox({{1, 1000}}), stscBox({{1, 1}}),
                                        stszBox(i == 0 ? 0xFFFF0000U : 5U, 1), stcoBox({100})})});
    SourceFile file;
    file.moov = box("moov", {mvhdBox(1000, 1000), trak[0], trak[1]});
    file.media = {{100, 0x100000000}};
    const MovieMap map = MovieMaps::read(file.moov, {});
    const std::uint32_t front = static_cast<std::uint32_t>(file.moov.size()) + 8;
    const auto padding = static_cast<std::uint32_t>(0xFFFFFFFFU - 0xFFFF0000U - front);
    const NewLayout fits = NewLayouts::make(file, map, 500, padding);
    EXPECT_FALSE(fits.index.offsets[1].wide);
    EXPECT_EQ(BigEndian::u32(fits.index.moov, static_cast<std::int64_t>(fits.index.offsets[1].at)),
              0xFFFFFFFFU);
    const NewLayout passes = NewLayouts::make(file, map, 500, padding + 1);
    EXPECT_FALSE(passes.index.offsets[0].wide);
    ASSERT_TRUE(passes.index.offsets[1].wide);
    // The entry that became longer by four bytes moved the media by as many.
    EXPECT_EQ(
        BigEndian::u64(passes.index.moov, static_cast<std::int64_t>(passes.index.offsets[1].at)),
        0x100000004ULL);
}

TEST(LargeFiles, OfTenThousandTracksAreLaidOut) {
    constexpr std::uint32_t tracks = 10'000;
    const Bytes ftyp = ftypBox();
    const Bytes tables =
        joined({stsdBox("mp4a"), sttsBox({{2, 500}}), stscBox({{1, 2}}), stszBox(3, 2)});
    const std::uint32_t mediaAt = static_cast<std::uint32_t>(ftyp.size()) + 8;
    Bytes traks;
    for (std::uint32_t i = 0; i < tracks; i++)
        append(traks, box("trak", {tkhdBox(i + 1), mdiaBox("soun", 1000, 1000,
                                                           {tables, stcoBox({mediaAt + i * 6})})}));
    Bytes media(tracks * 6);
    for (std::size_t i = 0; i < media.size(); i++) media[i] = static_cast<std::uint8_t>(i % 251);
    const Bytes file =
        joined({ftyp, box("mdat", media), box("moov", {mvhdBox(1000, 1000), traks})});
    const Bytes result = laidOut(file);
    EXPECT_TRUE(changedBoxes(file, result).empty());
    for (const int track : {0, 9'999})
        EXPECT_EQ(samplesOf(result, track), samplesOf(file, track)) << track;
}

TEST(LargeFiles, OfDeeplyNestedBoxesDontExhaustTheStack) {
    Bytes inner;
    constexpr std::uint32_t depth = 100'000;
    for (std::uint32_t i = 0; i < depth; i++) append(inner, boxHeader("udta", (depth - i) * 8));
    const Bytes plain = buildMovie(badlyLaidOut(1));
    Movie movie = badlyLaidOut(1);
    movie.index = Movie::Index::Last;
    const Bytes last = buildMovie(movie);
    const ByteView moov = topBox(last, "moov");
    const Bytes file =
        joined({Bytes(last.begin(), last.end() - static_cast<std::ptrdiff_t>(moov.size())),
                box("moov", joined({Bytes(moov.begin() + 8, moov.end()), inner}))});
    EXPECT_TRUE(samplesEqual(file, laidOut(file), 2));
}

}  // namespace marlet::test
