#include "support/temp_folder.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace marlet::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string name = (fs::temp_directory_path() / "marlet-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path TempFolder::write(const std::string& name, ByteView content) const {
    const fs::path file = path_ / name;
    fs::create_directories(file.parent_path());
    writeFile(file, content);
    return file;
}

fs::path TempFolder::write(const std::string& name, std::string_view content) const {
    return write(name, viewOf(content));
}

namespace {
constexpr std::streamsize readBlock = 1 << 20;
constexpr std::array<const char*, 4> homeVariables = {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                                                      "XDG_CONFIG_HOME"};
}  // namespace

OwnHome::OwnHome() {
    constexpr std::array<const char*, 4> places = {"", "data", "cache", "config"};
    for (std::size_t i = 0; i < homeVariables.size(); i++) {
        const char* old = std::getenv(homeVariables[i]);
        old_[i] = old == nullptr ? "" : old;
        setenv(homeVariables[i], (folder_.path() / places[i]).lexically_normal().c_str(), 1);
    }
}

OwnHome::~OwnHome() {
    for (std::size_t i = 0; i < homeVariables.size(); i++) {
        if (old_[i].empty())
            unsetenv(homeVariables[i]);
        else
            setenv(homeVariables[i], old_[i].c_str(), 1);
    }
}

ScopedEnv::ScopedEnv(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) {
        old_ = old;
        wasSet_ = true;
    }
    setenv(name_.c_str(), value.c_str(), 1);
}

ScopedEnv::~ScopedEnv() {
    if (wasSet_)
        setenv(name_.c_str(), old_.c_str(), 1);
    else
        unsetenv(name_.c_str());
}

Bytes readFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + file.string());
    Bytes content;
    // In blocks: by an iterator each byte costs dozens of calls in a test that isn't optimised.
    for (std::streamsize got = 1; got > 0; got = in.gcount()) {
        const std::size_t before = content.size();
        content.resize(before + readBlock);
        in.read(reinterpret_cast<char*>(content.data() + before), readBlock);
        content.resize(before + static_cast<std::size_t>(in.gcount()));
    }
    return content;
}

void writeFile(const fs::path& file, ByteView content) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(content.data()),
              static_cast<std::streamsize>(content.size()));
    if (!out) throw std::runtime_error("cannot write " + file.string());
}

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code failed;
    for (fs::directory_iterator each(folder, failed), end; !failed && each != end;
         each.increment(failed))
        names.push_back(each->path().filename().string());
    return names;
}

fs::path builtProgram(const std::string& name) {
    return fs::path(MARLET_BINARY_DIR) / name;
}

fs::path sourceTree() {
    return MARLET_SOURCE_DIR;
}

}  // namespace marlet::test
