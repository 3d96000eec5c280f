#include "foundation/line_log.h"

#include <fcntl.h>

#include <exception>

#include "foundation/durable.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"

namespace marlet {

namespace {

void makeFolderOf(const std::filesystem::path& file) {
    try {
        Durable::makeFolders(file.parent_path());
    } catch (const std::exception&) {
        // The opening that follows tells whether it matters.
    }
}

}  // namespace

void appendToLog(const std::filesystem::path& file, const std::string& line) noexcept {
    try {
        makeFolderOf(file);
        const std::string text = line + "\n";
        const ByteView bytes = viewOf(text);
        // In append mode the offset is always the end, also with several programs writing.
        const FileHandle log(Sys::open(file, O_WRONLY | O_APPEND | O_CREAT, 0644));
        if (log.isOpen())
            FileOps::writeAll(log.get(), bytes, 0);
        else
            Durable::writeFile(file, bytes);
    } catch (const std::exception&) {
        return;
    }
}

}  // namespace marlet
