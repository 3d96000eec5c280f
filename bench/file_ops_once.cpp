// One bulk operation in a process of its own, for io_of to time beside cp, openssl and cmp.
//
//   file_ops_once stage FROM TO   prints the digest and the bytes
//   file_ops_once equal A B       prints "equal"; exit status 1 when they are not
//   file_ops_once forget FILE...  flushes the files and drops them from the page cache, for those
//                                 who may not empty all of it
#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace {

using namespace marlet;
constexpr int unusable = 2;

int stage(const std::string& from, const std::string& to) {
    RunControl control;
    const FileOps::Staged staged = FileOps::stage(from, to, control);
    std::cout << staged.digest << ' ' << staged.bytes << '\n';
    return 0;
}

int equal(const std::string& a, const std::string& b) {
    RunControl control;
    const bool same = FileOps::filesEqual(a, b, control);
    std::cout << (same ? "equal" : "different") << '\n';
    return same ? 0 : 1;
}

int forget(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        const FileHandle handle = FileHandle::open(file, O_RDONLY, "cannot open " + file);
        if (Sys::fsync(handle.get()) != 0) failWithErrno("cannot flush " + file);
        Sys::dropCache(handle.get(), 0, 0);
    }
    return 0;
}

int run(const std::vector<std::string>& words) {
    if (words.size() == 3 && words[0] == "stage") return stage(words[1], words[2]);
    if (words.size() == 3 && words[0] == "equal") return equal(words[1], words[2]);
    if (words.size() > 1 && words[0] == "forget") return forget({words.begin() + 1, words.end()});
    std::cerr << "usage: file_ops_once stage FROM TO | equal A B | forget FILE...\n";
    return unusable;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return run({arguments + 1, arguments + count});
    } catch (const std::exception& failure) {
        std::cerr << "file_ops_once: " << failure.what() << '\n';
        return unusable;
    }
}
