// Runs each run in a process of its own, so that every run begins from the same state and
// keeps nothing of an earlier run. The launcher forks a root process once, before it has
// started any thread, that does nothing but fork on request: a block's server, which plays
// the scenario up to the block once and forks the block's runs there (see serveBlock), or,
// where no server reaches the block, a run that plays the whole scenario. Neither the root
// nor a server changes its memory between two forks, so every run of a block begins from
// the very same memory: the objects a run makes have the same addresses in every run that
// takes the same steps, and a step of one run can be compared with a step of another.
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

    // How the runs of every launcher of this process were started, for measurements.
    struct Counts {
        size_t atBlock = 0;    // forked by a block's server
        size_t fromStart = 0;  // forked by the root, playing the whole scenario
    };
    static Counts counts();

  private:
    // A server plays the scenario up to one block under one step bound and one choice of
    // expectation checks; a run that asks for others needs another server.
    struct Server {
        int control = -1;  // each run's pipes go over it, the run's status comes back
        bool atBlock = false;
        size_t block = 0;
        size_t stepBound = 0;
        bool checkExpectations = false;
    };
    bool serves(const RunRequest& request) const;
    void startServer(const RunRequest& request);
    void stopServer();
    // Runs `request` on `socket`: the block's server, or the root for a whole run.
    RunResult runOn(int socket, const RunRequest& request, bool whole);
    bool orderWholeRun(int socket, int ours[2]);
    void clearErrors();
    void finish(int status, RunResult* result);

    MessageLog mLog;  // each run's messages, read back after the run
    FILE* mErrors;    // the runs' standard error, read back after each run
    pid_t mRoot = -1;
    int mRootSocket = -1;
    Server mServer;
};

}  // namespace explore
