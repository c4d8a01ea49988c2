#include "launcher.h"

#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace explore {

namespace {

std::string readAll(int fd) {
    std::string text;
    char buffer[65536];
    for (;;) {
        ssize_t got = read(fd, buffer, sizeof(buffer));
        if (got <= 0) break;
        text.append(buffer, static_cast<size_t>(got));
    }
    return text;
}

}  // namespace

Launcher::Launcher(const sim::Scenario& scenario) : mScenario(scenario), mErrors(tmpfile()) {}

Launcher::~Launcher() {
    if (mErrors != nullptr) fclose(mErrors);
}

RunResult Launcher::run(const RunRequest& request) {
    RunResult result;
    int pipeFds[2];
    const int errorFd = mErrors != nullptr ? fileno(mErrors) : -1;
    if (pipe(pipeFds) != 0) {
        result.stopKind = "error";
        result.stopDetail = "no pipe for the run";
        return result;
    }
    if (errorFd >= 0 && ftruncate(errorFd, 0) == 0) lseek(errorFd, 0, SEEK_SET);
    fflush(stdout);
    fflush(stderr);
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipeFds[0]);
        if (errorFd >= 0) dup2(errorFd, STDERR_FILENO);
        runChild(mScenario, request, pipeFds[1]);
    }
    close(pipeFds[1]);
    readMessages(readAll(pipeFds[0]), &result);
    close(pipeFds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (errorFd >= 0) {
        lseek(errorFd, 0, SEEK_SET);
        result.errorOutput = readAll(errorFd);
    }
    return result;
}

}  // namespace explore
