// The coverage report of a generated run: blocks generated and selected, blocks explored
// to completion, findings by kind, runs and time, and everything left out with why.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "explorer.h"
#include "generation.h"

namespace gen {

class CoverageReport {
  public:
    CoverageReport(const GeneratedSet& set, const Selection& selection,
                   const std::vector<size_t>& chosen);

    // One line: how many blocks there are, how many share state, which ones run now.
    std::string selectionLine() const;
    void add(const GeneratedBlock& block, const explore::BlockResult& result, double seconds,
             bool failed);
    void print(std::ostream& out) const;

  private:
    void printLeftOut(std::ostream& out) const;

    const GeneratedSet& mSet;
    const Selection mSelection;
    std::vector<size_t> mChosen;
    size_t mExplored = 0;
    std::vector<std::string> mIncomplete;                       // stopped at the run budget
    std::vector<std::string> mBroken;                           // the explorer's own error
    std::vector<std::string> mFailed;                           // findings other than declared
    std::map<std::string, std::vector<std::string>> mFindings;  // kind -> "ID (declared)"
    size_t mRuns = 0;
    double mSeconds = 0;
};

}  // namespace gen
