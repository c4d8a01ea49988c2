// Forks one process per run from the explorer, which has started no thread, so that every
// run begins with the library freshly loaded and no state of an earlier run.
#pragma once

#include <cstdio>

#include "child_run.h"
#include "run_result.h"

namespace explore {

class Launcher {
  public:
    explicit Launcher(const sim::Scenario& scenario);
    ~Launcher();
    RunResult run(const RunRequest& request);

  private:
    const sim::Scenario& mScenario;
    FILE* mErrors;  // the runs' standard error, read back after each run
};

}  // namespace explore
