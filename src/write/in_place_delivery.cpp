#include "write/in_place_delivery.h"

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "mp4/sound_layout.h"
#include "write/guards.h"
#include "write/job_end.h"
#include "write/outcome_wording.h"
#include "write/write_gate.h"
#include "write/write_turn.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr const char* comparing = "Comparing the result";

std::optional<std::uint64_t> fileNumber(const fs::path& file) {
    const auto found = Sys::stat(file);
    return found ? std::optional(found->inode) : std::nullopt;
}

}  // namespace

void InPlaceDelivery::run() {
    requireUntouched();
    job_.control.checkpoint();
    // Not paused from here on, or the others would wait, too. Looked at once more, since the wait
    // may have lasted for hours, by a pause or by another copy's rebuild.
    const WriteTurn turn(job_.control, [this] { requireUntouched(); });
    const CriticalSection critical(job_.control);
    const auto number = fileNumber(job_.file());
    write();
    if (number && fileNumber(job_.file()) != number) throw MFError(Wording::identityChanged);
    checkLayout();

    WriteOutcome& outcome = job_.outcome;
    outcome.status = WriteOutcome::Status::done;
    outcome.output = job_.file();
    outcome.size = FileOps::size(job_.file());
    outcome.message = Wording::written(job_.request, outcome);
    job_.report("Done", 1);
}

void InPlaceDelivery::requireUnchanged() const {
    if (FileMark::of(job_.file()) != job_.reference) throw MFError(Wording::changedWhileProcessed);
}

void InPlaceDelivery::requireUntouched() const {
    requireUnchanged();
    if (!TagWriter::openForWriting(job_.file()).empty())
        throw JobEnd::stopped(Wording::otherWriter);
}

void InPlaceDelivery::write() {
    if (candidate_.plan && !job_.outcome.rebuilt)
        editRegion();
    else
        overwrite();
}

// A small edit: the region alone is written. --------------------------------------------------

void InPlaceDelivery::editRegion() {
    const IlstEditor::Plan& plan = *candidate_.plan;
    if (TagWriter::readRange(job_.file(), plan.offset, plan.oldRegion.size()) != plan.oldRegion)
        throw MFError(Wording::regionChanged);
    const WriteJournal journal = journalOf(job_.candidate);
    open(journal);
    bool isVerified = false;
    try {
        applyEdit();
        // One reading instead of two: the candidate's digest was taken when it was proved.
        job_.report(comparing, 0.85);
        isVerified = FileOps::hashFile(job_.file(), FileOps::BypassCache::Yes, job_.control,
                                       job_.part(comparing, 0.85, 0.1)) == candidate_.digest;
    } catch (const std::exception& failure) {
        if (!fileEquals(job_.staged)) keep(journal, failure.what());
        close(journal);
        throw;
    }
    if (!isVerified) takeBackEdit(journal);
    close(journal);
}

void InPlaceDelivery::applyEdit() {
    job_.report("Writing details", 0.7);
    IlstEditor::apply(*candidate_.plan, job_.file());
    // The journal goes on the strength of it, so here a flush that fails is a failure.
    Durable::flushFile(job_.file());
}

void InPlaceDelivery::takeBackEdit(const WriteJournal& journal) {
    try {
        IlstEditor::apply(candidate_.plan->undo(), job_.file());
        Durable::flushFile(job_.file());
    } catch (const std::exception&) {
        // The comparison tells.
    }
    if (!fileEquals(job_.staged)) keep(journal, Wording::unlikeVerified);
    close(journal);
    throw MFError(Wording::unlikeVerifiedPutBack);
}

// The whole file, after a rebuild. ------------------------------------------------------------

void InPlaceDelivery::overwrite() {
    const WriteJournal journal = journalOf(job_.candidate);
    open(journal);
    constexpr int attempts = 3;
    std::string failure;
    for (int i = 0; i < attempts; i++)
        if (tryOverwrite(failure)) return close(journal);
    if (!restoreOriginalBytes()) keep(journal, failure);
    close(journal);
    throw MFError(Wording::writingFailedPutBack(failure));
}

bool InPlaceDelivery::tryOverwrite(std::string& failure) {
    constexpr const char* writing = "Writing the rebuilt file";
    try {
        job_.report(writing, 0.7);
        FileOps::overwriteInPlace(job_.file(), job_.candidate, job_.part(writing, 0.7, 0.18));
        Durable::flushFile(job_.file());
        job_.report(comparing, 0.88);
        if (FileOps::filesEqual(job_.candidate, job_.file(), job_.control,
                                job_.part(comparing, 0.88, 0.08)))
            return true;
        failure = Wording::unlikeRebuilt;
    } catch (const std::exception& error) {
        failure = error.what();
    }
    return false;
}

// What leaves here as done is never over the limit, whatever was asked for. --------------------

void InPlaceDelivery::checkLayout() {
    WriteOutcome& outcome = job_.outcome;
    try {
        outcome.after = measureInterleave(job_.file());
    } catch (const std::exception&) {
        // The candidate's measure stands: the file was just proved to be the candidate.
    }
    const double after = outcome.after.value_or(0);
    if (after > soundLayoutLimit ||
        (!outcome.rebuilt && isWorse(outcome.before.value_or(0), after)))
        putOriginalBack(after);
}

void InPlaceDelivery::putOriginalBack(double after) {
    const WriteJournal journal = journalOf(job_.staged);
    try {
        open(journal);
    } catch (const std::exception&) {
        // The file is whole, and without a way back it stays so.
        throw JobEnd::stopped(Wording::layoutNotPutBack(after, keptOriginal(journal)));
    }
    if (!restoreOriginalBytes()) {
        job_.folder.keep();
        throw JobEnd::stopped(Wording::layoutNotPutBack(after, job_.staged));
    }
    close(journal);
    throw MFError(Wording::layoutPutBack(after));
}

/// Where the original's copy stays: a journal that could not be taken back protects it, and else it
/// has to lie where no clean-up looks.
fs::path InPlaceDelivery::keptOriginal(const WriteJournal& journal) {
    job_.folder.keep();
    if (WriteJournal::load() == journal) return job_.staged;
    return job_.folder.setAside() / job_.staged.filename();
}

// The journal and the two copies. --------------------------------------------------------------

WriteJournal InPlaceDelivery::journalOf(const fs::path& copy) const {
    return {fs::absolute(job_.file()), copy, FileOps::size(copy)};
}

/// Nothing was written yet: a journal that failed halfway must not be left for a recovery.
void InPlaceDelivery::open(const WriteJournal& journal) {
    // A recovery would take a copy of no size for lost.
    if (journal.size == 0) throw MFError(Wording::copyUnreadable);
    WriteGate::requireNoPendingWrite();
    try {
        journal.save();
    } catch (const std::exception&) {
        if (WriteJournal::load() == journal) takeBack(journal);
        throw;
    }
}

void InPlaceDelivery::takeBack(const WriteJournal& journal) {
    try {
        WriteJournal::remove();
    } catch (const std::exception& failure) {
        if (WriteJournal::load() == journal) keep(journal, failure.what());
    }
}

void InPlaceDelivery::close(const WriteJournal& journal) {
    try {
        WriteJournal::remove();
    } catch (const std::exception& failure) {
        standAgain(journal);
        keep(journal, failure.what());
    }
}

/// A removal that wasn't flushed is none, and the next start is promised to finish the write: for
/// that the journal has to be there.
void InPlaceDelivery::standAgain(const WriteJournal& journal) {
    if (WriteJournal::load()) return;
    try {
        journal.save();
    } catch (const std::exception&) {
        // It stands, if not yet for a loss of power, or the disk takes nothing any more.
    }
}

void InPlaceDelivery::keep(const WriteJournal& journal, const std::string& failure) {
    job_.folder.keep();
    throw JobEnd::stopped(Wording::writingFailedKept(failure, journal.temp));
}

bool InPlaceDelivery::fileEquals(const fs::path& copy) const {
    try {
        return FileOps::filesEqual(copy, job_.file(), job_.control);
    } catch (const std::exception&) {
        return false;
    }
}

bool InPlaceDelivery::restoreOriginalBytes() const {
    try {
        FileOps::overwriteInPlace(job_.file(), job_.staged);
        Durable::flushFile(job_.file());
    } catch (const std::exception&) {
        return false;
    }
    return fileEquals(job_.staged);
}

}  // namespace marlet
