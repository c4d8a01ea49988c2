#include "launcher.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "line_channel.h"

namespace explore {

namespace {

RunResult failed(const std::string& detail) {
    RunResult result;
    result.stopKind = "error";
    result.stopDetail = detail;
    return result;
}

void closeBoth(const int fds[2]) {
    close(fds[0]);
    close(fds[1]);
}

// What the root is asked to fork, with the descriptors that come with it: a whole run (its
// request to read, its messages to write), or a block's server (its control socket, twice).
struct Order {
    char kind = 'W';  // W a whole run, S a server for the settings below
    bool checkExpectations = false;
    uint32_t watchdogSeconds = 0;
    uint64_t block = 0;
    uint64_t stepBound = 0;
};

// The root: forks what each order asks for. It waits for a whole run and answers its wait
// status; it waits for a server until the server ends, which it does when the launcher
// closes its control socket. It takes nothing of the heap.
[[noreturn]] void root(const sim::Scenario& scenario, int socket, int errorFd, MessageLog* log) {
    for (;;) {
        int fds[2];
        Order order;
        if (!receivePair(socket, fds, &order, sizeof(order))) _exit(0);
        const pid_t pid = fork();
        if (pid == 0) {
            close(socket);
            if (order.kind == 'S') {
                close(fds[1]);
                RunRequest first;
                first.block = order.block;
                first.stepBound = order.stepBound;
                first.checkExpectations = order.checkExpectations;
                first.watchdogSeconds = order.watchdogSeconds;
                serveBlock(scenario, first, fds[0], errorFd, log);
            }
            if (errorFd >= 0) dup2(errorFd, STDERR_FILENO);
            runRequested(scenario, fds[0], log);
        }
        closeBoth(fds);
        int status = 0;
        if (pid < 0 || waitpid(pid, &status, 0) != pid) status = -1;
        if (order.kind == 'W' && !writeAll(socket, &status, sizeof(status))) _exit(0);
    }
}

}  // namespace

Launcher::Launcher(const sim::Scenario& scenario) : mErrors(tmpfile()) {
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0) return;
    fflush(stdout);
    fflush(stderr);
    mRoot = fork();
    if (mRoot == 0) {
        close(sockets[0]);
        root(scenario, sockets[1], mErrors != nullptr ? fileno(mErrors) : -1, &mLog);
    }
    close(sockets[1]);
    mRootSocket = mRoot > 0 ? sockets[0] : -1;
    if (mRootSocket < 0) close(sockets[0]);
}

Launcher::~Launcher() {
    stopServer();
    if (mRootSocket >= 0) close(mRootSocket);
    if (mRoot > 0) waitpid(mRoot, nullptr, 0);
    if (mErrors != nullptr) fclose(mErrors);
}

bool Launcher::serves(const RunRequest& request) const {
    return mServer.control >= 0 && mServer.block == request.block &&
           mServer.stepBound == request.stepBound &&
           mServer.checkExpectations == request.checkExpectations;
}

void Launcher::startServer(const RunRequest& request) {
    stopServer();
    int sockets[2];
    if (mRootSocket < 0 || socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0) return;
    Order order;
    order.kind = 'S';
    order.checkExpectations = request.checkExpectations;
    order.watchdogSeconds = request.watchdogSeconds;
    order.block = request.block;
    order.stepBound = request.stepBound;
    const int theirs[2] = {sockets[1], sockets[1]};
    const bool sent = sendPair(mRootSocket, theirs, &order, sizeof(order));
    close(sockets[1]);
    mServer.control = sockets[0];
    mServer.block = request.block;
    mServer.stepBound = request.stepBound;
    mServer.checkExpectations = request.checkExpectations;
    char ready = 0;
    mServer.atBlock = sent && read(mServer.control, &ready, 1) == 1 && ready == 'R';
}

void Launcher::stopServer() {
    if (mServer.control >= 0) close(mServer.control);
    mServer = Server{};
}

namespace {
Launcher::Counts gCounts;
}  // namespace

Launcher::Counts Launcher::counts() {
    return gCounts;
}

RunResult Launcher::run(const RunRequest& request) {
    if (!serves(request)) startServer(request);
    if (mServer.atBlock) {
        ++gCounts.atBlock;
        return runOn(mServer.control, request, false);
    }
    ++gCounts.fromStart;
    return runOn(mRootSocket, request, true);
}

RunResult Launcher::runOn(int socket, const RunRequest& request, bool whole) {
    if (socket < 0 || !mLog.ready()) return failed("no process to fork the run");
    clearErrors();
    mLog.clear();
    // The run's request to write, and the end that tells that the run has ended.
    int ours[2] = {-1, -1};
    const bool ready = whole ? orderWholeRun(socket, ours) : receivePair(socket, ours);
    if (ready) {
        const std::string text = formatRequest(request);
        writeAll(ours[0], text.data(), text.size());
        close(ours[0]);
        readAll(ours[1]);
        close(ours[1]);
    }
    RunResult result;
    readMessages(mLog.text(), &result);
    int status = -1;
    if (!ready || read(socket, &status, sizeof(status)) != sizeof(status) || status == -1) {
        if (!whole) stopServer();
        return failed("the process that forks the runs did not answer");
    }
    finish(status, &result);
    if (mLog.cut()) {
        result.stopKind = "error";
        result.stopDetail = "the run's messages passed the log's room and were cut";
    }
    return result;
}

// The root forks a whole run on the pipe ends it is sent; `ours` gets the other two.
bool Launcher::orderWholeRun(int socket, int ours[2]) {
    int requests[2];
    int ended[2];
    if (pipe(requests) != 0) return false;
    if (pipe(ended) != 0) {
        closeBoth(requests);
        return false;
    }
    const int theirs[2] = {requests[0], ended[1]};
    const Order order;  // a whole run
    const bool sent = sendPair(socket, theirs, &order, sizeof(order));
    closeBoth(theirs);
    ours[0] = requests[1];
    ours[1] = ended[0];
    if (!sent) closeBoth(ours);
    return sent;
}

void Launcher::clearErrors() {
    if (mErrors != nullptr && ftruncate(fileno(mErrors), 0) == 0) {
        lseek(fileno(mErrors), 0, SEEK_SET);
    }
}

void Launcher::finish(int status, RunResult* result) {
    if (WIFSIGNALED(status)) result->signal = WTERMSIG(status);
    if (WIFEXITED(status)) result->exitCode = WEXITSTATUS(status);
    if (mErrors != nullptr) {
        lseek(fileno(mErrors), 0, SEEK_SET);
        result->errorOutput = readAll(fileno(mErrors));
    }
}

}  // namespace explore
