#include "coverage_report.h"

#include <set>

#include "world/world.h"

namespace gen {

namespace {

void printList(std::ostream& out, const std::string& heading,
               const std::vector<std::string>& items) {
    out << heading << ": " << items.size() << "\n";
    for (const std::string& item : items) out << "  " << item << "\n";
}

size_t countShared(const GeneratedSet& set, const std::vector<size_t>& chosen) {
    size_t shared = 0;
    for (size_t index : chosen) shared += set.shared[index] ? 1 : 0;
    return shared;
}

}  // namespace

CoverageReport::CoverageReport(const GeneratedSet& set, const Selection& selection,
                               const std::vector<size_t>& chosen)
    : mSet(set), mSelection(selection), mChosen(chosen) {}

std::string CoverageReport::selectionLine() const {
    const size_t allShared = countShared(mSet, [&] {
        std::vector<size_t> all(mSet.blocks.size());
        for (size_t i = 0; i < all.size(); ++i) all[i] = i;
        return all;
    }());
    const size_t shared = countShared(mSet, mChosen);
    std::string line = "generated " + std::to_string(mSet.blocks.size()) + " blocks, " +
                       std::to_string(allShared) + " pairing operations that share state";
    if (!mSet.footprintsKnown) line += " (this build does not name the library's objects)";
    line += "; running " + std::to_string(mChosen.size()) + ": " + std::to_string(shared) +
            " sharing state and " + std::to_string(mChosen.size() - shared) + " of the rest";
    if (mSelection.rotation > 1 || mSelection.sharedRotation > 1) {
        line += " (day " + std::to_string(mSelection.day) + ": share " +
                std::to_string(mSelection.day % mSelection.rotation) + " of " +
                std::to_string(mSelection.rotation) + " of the rest";
        if (mSelection.sharedRotation > 1) {
            line += ", share " + std::to_string(mSelection.day % mSelection.sharedRotation) +
                    " of " + std::to_string(mSelection.sharedRotation) + " of those sharing state";
        }
        line += ")";
    }
    if (!mSelection.only.empty()) line += ", only ids holding \"" + mSelection.only + "\"";
    return line;
}

void CoverageReport::add(const GeneratedBlock& block, const explore::BlockResult& result,
                         double seconds, bool failed) {
    ++mExplored;
    mRuns += result.runs;
    mSeconds += seconds;
    if (result.broken) mBroken.push_back(block.id);
    if (!result.broken && !result.complete) mIncomplete.push_back(block.id);
    if (failed) mFailed.push_back(block.id);
    for (const explore::BlockFinding& f : result.findings) {
        mFindings[sim::findingName(f.kind)].push_back(block.id + " (schedule " + f.schedule +
                                                      (f.declared ? ", declared)" : ")"));
    }
}

void CoverageReport::print(std::ostream& out) const {
    out << "== coverage of the generated blocks\n" << selectionLine() << "\n";
    out << "explored: " << mExplored
        << ", to completion: " << mExplored - mIncomplete.size() - mBroken.size() << "\n";
    char figures[160];
    snprintf(figures, sizeof(figures),
             "runs: %zu in %.1f s (%.1f ms a run); at 1 ms a run the same runs take %.0f s\n",
             mRuns, mSeconds, mRuns == 0 ? 0.0 : 1000.0 * mSeconds / static_cast<double>(mRuns),
             static_cast<double>(mRuns) / 1000.0);
    out << figures;
    out << "findings by kind:";
    if (mFindings.empty()) out << " none";
    out << "\n";
    for (const auto& [kind, where] : mFindings) printList(out, "  " + kind, where);
    printList(out, "blocks failing the check", mFailed);
    printList(out, "blocks the explorer could not run", mBroken);
    printLeftOut(out);
}

void CoverageReport::printLeftOut(std::ostream& out) const {
    out << "== left out\n";
    printList(out, "stopped at the run budget", mIncomplete);
    std::vector<std::string> unselected;
    std::set<size_t> chosen(mChosen.begin(), mChosen.end());
    for (size_t i = 0; i < mSet.blocks.size(); ++i) {
        if (chosen.count(i) == 0) unselected.push_back(mSet.blocks[i].id);
    }
    printList(out, "not selected in this run (rotation or --only)", unselected);
    printList(out, "pairs of operations with no init state where both mean something",
              pairsWithoutState(mSet.table));
    std::vector<std::string> leftOut;
    for (const TableLeftOut& entry : mSet.table.leftOut) {
        leftOut.push_back(entry.command + ": " + entry.reason);
    }
    printList(out, "commands left out of the table", leftOut);
    std::set<std::string> made;
    for (const auto& [name, footprint] : mSet.footprints) {
        made.insert(footprint.calls.begin(), footprint.calls.end());
    }
    std::vector<std::string> neverMade;
    for (const auto& op : sim::World::get().remoteOperations()) {
        const std::string call = op.party + " " + op.iface + "." + op.operation.name;
        if (made.count(call) == 0) neverMade.push_back(call);
    }
    printList(out, "calls into a party that no operation makes (no nested event runs inside them)",
              neverMade);
    std::vector<std::string> problems;
    for (const auto& [name, footprint] : mSet.footprints) {
        if (!footprint.problem.empty()) problems.push_back(name + ": " + footprint.problem);
    }
    printList(out, "operations whose run alone did not end cleanly", problems);
}

}  // namespace gen
