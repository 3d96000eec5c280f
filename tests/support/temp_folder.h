#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"

namespace marlet::test {

/// A folder that deletes itself with all that is in it.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    /// Writes a file (with its parents) and gives its path.
    std::filesystem::path write(const std::string& name, ByteView content) const;
    std::filesystem::path write(const std::string& name, std::string_view content) const;

private:
    std::filesystem::path path_;
};

/// Points the XDG folders and HOME into a folder of its own, and back when it ends, so that no
/// test sees what another left.
class OwnHome {
public:
    OwnHome();
    ~OwnHome();
    OwnHome(const OwnHome&) = delete;
    OwnHome& operator=(const OwnHome&) = delete;
    const std::filesystem::path& path() const { return folder_.path(); }

private:
    TempFolder folder_;
    std::string old_[4];
};

/// Sets a variable of the environment for as long as it lives.
class ScopedEnv {
public:
    ScopedEnv(std::string name, const std::string& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::string old_;
    bool wasSet_ = false;
};

Bytes readFile(const std::filesystem::path& file);
void writeFile(const std::filesystem::path& file, ByteView content);
/// What a folder holds; nothing where it isn't there, or vanishes meanwhile.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

/// A program or folder of this build and this source tree.
std::filesystem::path builtProgram(const std::string& name);
std::filesystem::path sourceTree();

}  // namespace marlet::test
