#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "foundation/text.h"
#include "foundation/work_area.h"
#include "write/journal.h"
#include "write/outcome_wording.h"
#include "write/tag_writer.h"
#include "write/write_turn.h"

namespace marlet::TagWriter {

namespace fs = std::filesystem;

namespace {

/// Whether it is a folder that this program made for a job. A damaged journal may name any folder
/// of the person's, and such a one is neither locked nor removed.
bool isJobFolder(const fs::path& folder) {
    const fs::path place = Paths::standardised(folder);
    return std::ranges::any_of(WorkArea::folders(), [&](const fs::path& each) {
        return Paths::standardised(each) == place;
    });
}

/// Holds the job folder's lock for as long as the recovery works on it.
class FolderLock {
public:
    explicit FolderLock(const fs::path& folder) {
        lock_ = FileHandle(Sys::open(folder / ".lock", O_RDWR | O_CREAT, 0644));
        // A lock that can't be made at all keeps nobody out and is no reason to lose the write.
        isHeldByOther_ = lock_.isOpen() && Sys::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 &&
                         errno == EWOULDBLOCK;
    }
    bool isHeldByOther() const { return isHeldByOther_; }

private:
    FileHandle lock_;
    bool isHeldByOther_ = false;
};

class Recovery {
public:
    explicit Recovery(WriteJournal journal)
        : journal_(std::move(journal)),
          folder_(journal_.temp.parent_path()),
          ownsFolder_(isJobFolder(folder_)) {}

    std::optional<std::string> run() {
        if (!ownsFolder_) return finishOrTell();
        // Its job is still at work in another running copy of the program.
        const FolderLock lock(folder_);
        if (lock.isHeldByOther()) return std::nullopt;
        return finishOrTell();
    }

private:
    std::optional<std::string> finishOrTell() {
        const bool hasCopy = journal_.hasCopy();
        // A job that ended well since the journal was read has taken the journal away, and then
        // its folder.
        if (WriteJournal::load() != journal_) return std::nullopt;
        if (!hasCopy) {
            removeJournal();
            return sentence("its verified copy is gone. Check the file by playing it.", " and ");
        }
        try {
            finish();
        } catch (const std::exception& failure) {
            return sentence("finishing it failed (" + std::string(failure.what()) +
                                "). The verified copy is at " + journal_.temp.string() + ".",
                            " and ");
        }
        // The folder goes last: a crash in between must not report a lost copy.
        if (removeJournal() && ownsFolder_) WorkArea::discard(folder_);
        return sentence("It has been finished and checked byte for byte.", ". ");
    }

    void finish() {
        RunControl control;
        const CriticalSection critical(control);
        if (FileOps::size(journal_.temp) != journal_.size) throw MFError(Wording::copyUnreadable);
        // The program may have been killed between its last write and its flush.
        if (FileOps::filesEqual(journal_.temp, journal_.file, control))
            return Durable::flushFile(journal_.file);
        FileOps::overwriteInPlace(journal_.file, journal_.temp);
        if (!FileOps::filesEqual(journal_.temp, journal_.file, control))
            throw MFError("compare failed");
    }

    bool removeJournal() {
        try {
            WriteJournal::remove();
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

    std::string sentence(const std::string& end, const std::string& join) const {
        const std::string text = "A previous write to " + journal_.file.filename().string() +
                                 " was interrupted" + join + end;
        return Text::repairUtf8(viewOf(text));
    }

    WriteJournal journal_;
    fs::path folder_;
    bool ownsFolder_;
};

}  // namespace

std::optional<std::string> recoverInterruptedWrite() {
    try {
        const auto journal = WriteJournal::load();
        if (!journal) return std::nullopt;
        // Another running copy is changing a file: the journal may be that one's, or its job may
        // be about to look whether there is one.
        const WriteTurn turn;
        return turn.isOthers() ? std::nullopt : Recovery(*journal).run();
    } catch (const std::exception&) {
        // Nothing of this may keep the program from starting.
        return std::nullopt;
    }
}

}  // namespace marlet::TagWriter
