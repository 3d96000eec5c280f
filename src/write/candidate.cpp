#include "write/candidate.h"

#include <algorithm>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "mp4/sound_layout.h"
#include "write/guards.h"
#include "write/outcome_wording.h"
#include "write/rebuild.h"
#include "write/restore_points.h"
#include "write/tag_builder.h"
#include "write/write_gate.h"

namespace marlet {

namespace {

void refuseAccountTags(const std::vector<Atom>& atoms) {
    const bool hasOne = std::ranges::any_of(
        atoms, [](const Atom& atom) { return IlstEditor::personal.contains(atom.name); });
    if (hasOne) throw MFError(Wording::accountTag);
}

std::vector<Atom> wantedAtoms(const WriteRequest& request, const std::vector<Atom>& old) {
    if (request.isConvert()) throw MFError(Wording::notInPlace);
    if (request.isRestore()) return RestorePoints::originalAtoms(request.file, old);
    const auto& fresh = std::get<WriteRequest::WriteDetails>(request.mode).atoms;
    refuseAccountTags(fresh);
    return TagBuilder::merge(old, fresh);
}

/// No restore point, no write.
void saveRestorePoint(const WriteJob& job, const std::vector<Atom>& old) {
    try {
        const bool created = RestorePoints::saveIfMissing(job.file(), old, job.reference.size);
        RestorePoints::verifySaved(job.file(), old, created);
    } catch (const std::exception& failure) {
        throw MFError(Wording::noRestorePoint(failure.what()));
    }
}

/// Nothing when only a rebuild can make the room.
std::optional<IlstEditor::Plan> planEdit(const WriteJob& job, const Bytes& ilst) {
    try {
        IlstEditor::Plan plan = IlstEditor::plan(job.staged, ilst);
        job.report("Preparing the new details", 0.34);
        return plan;
    } catch (const NoRoom& failure) {
        if (!job.request.fixLayout && !job.request.copyTo)
            throw MFError(Wording::noRoomRemedies(failure.description()));
        WriteGate::requireSpace(job, WriteGate::Way::Rebuild);
        return std::nullopt;
    }
}

Candidate editCopy(const WriteJob& job, IlstEditor::Plan plan, const TagTarget& target) {
    FileOps::cloneOrCopy(job.staged, job.candidate, job.control);
    IlstEditor::apply(plan, job.candidate);
    // A recovery relies on it.
    Durable::flushFile(job.candidate);
    Durable::flushFolder(job.folder.path());
    job.report("Verifying", 0.45);
    TagWriter::RegionProof proof =
        TagWriter::proveRegionEdit(job.staged, job.candidate, plan, target.atoms, job.control);
    if (!proof.reasons.empty()) throw MFError(Wording::verificationFailed(proof.reasons));
    return {std::move(plan), std::move(proof.candidateDigest), measureInterleave(job.candidate)};
}

Candidate rebuild(WriteJob& job, const TagTarget& target, const TrackRemoval& removal) {
    const double after = Rebuild::build(job, target, removal);
    job.outcome.rebuilt = true;
    Rebuild::prove(job, target, removal);
    return {std::nullopt, {}, after};
}

bool needsRebuild(const WriteJob& job, const TrackRemoval& removal) {
    if (removal.isAny()) return true;
    return job.request.fixLayout && job.outcome.before.value_or(0) > soundLayoutLimit;
}

}  // namespace

TagTarget intendedTags(const WriteJob& job) {
    TagTarget target;
    target.old = IlstEditor::currentIlst(job.staged);
    target.atoms = wantedAtoms(job.request, target.old);
    if (!job.request.isRestore() && job.request.dropTracks.empty())
        saveRestorePoint(job, target.old);
    return target;
}

Candidate buildCandidate(WriteJob& job, const TagTarget& target, const TrackRemoval& removal) {
    if (needsRebuild(job, removal)) return rebuild(job, target, removal);
    auto plan = planEdit(job, IlstEditor::ilstBox(target.atoms));
    return plan ? editCopy(job, std::move(*plan), target) : rebuild(job, target, removal);
}

bool isWorse(double before, double after) {
    constexpr double tolerance = 0.05;
    return after > before + tolerance;
}

void judge(const WriteRequest& request, double before, double after, bool rebuilt) {
    const bool mustBeFine = !request.dropTracks.empty() || request.fixLayout;
    if (mustBeFine && after > soundLayoutLimit) throw MFError(Wording::stillOverLimit(after));
    if (!rebuilt && isWorse(before, after)) throw MFError(Wording::layoutWorse(before, after));
}

}  // namespace marlet
