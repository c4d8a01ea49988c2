// Runs each run in a process of its own, so that every run begins with the library freshly
// loaded and no state of an earlier run. The runs are forked by a server process that the
// launcher forks once, before it has started any thread, and that does nothing between
// runs: every run begins from the very same memory, so the objects a run makes have the
// same addresses in every run that takes the same steps, and a step of one run can be
// compared with a step of another.
#pragma once

#include <sys/types.h>

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
    FILE* mErrors;  // the runs' standard error, read back after each run
    pid_t mServer = -1;
    int mControl = -1;  // to the server: each run's pipes go over it, the run's status comes back
};

}  // namespace explore
