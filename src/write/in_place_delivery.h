#pragma once

#include <optional>
#include <string>

#include "write/candidate.h"
#include "write/journal.h"
#include "write/write_job.h"

namespace marlet {

/// Brings the proved candidate into the person's file, the only place where that file is changed.
/// It runs in a critical section and under a journal, and each way of writing has its way back:
/// at every moment the file holds the original, or the result, or a whole copy of one of the two
/// lies in a work folder that the journal names.
class InPlaceDelivery {
public:
    InPlaceDelivery(WriteJob& job, const Candidate& candidate) : job_(job), candidate_(candidate) {}

    /// Ends with the outcome `done`, or throws.
    void run();

private:
    void requireUnchanged() const;
    /// Neither changed nor open for writing in another program.
    void requireUntouched() const;
    void write();
    void editRegion();
    void applyEdit();
    void takeBackEdit(const WriteJournal& journal);
    void overwrite();
    bool tryOverwrite(std::string& failure);
    void checkLayout();
    void putOriginalBack(double after);
    std::filesystem::path keptOriginal(const WriteJournal& journal);

    void open(const WriteJournal& journal);
    void takeBack(const WriteJournal& journal);
    void close(const WriteJournal& journal);
    void standAgain(const WriteJournal& journal);
    [[noreturn]] void keep(const WriteJournal& journal, const std::string& failure);
    bool fileEquals(const std::filesystem::path& copy) const;
    bool restoreOriginalBytes() const;
    WriteJournal journalOf(const std::filesystem::path& copy) const;

    WriteJob& job_;
    const Candidate& candidate_;
};

}  // namespace marlet
