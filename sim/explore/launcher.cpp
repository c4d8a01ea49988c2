#include "launcher.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
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

bool writeAll(int fd, const void* data, size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(fd, at, size);
        if (written <= 0) return false;
        at += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// A one-byte message with room for two descriptors: two descriptors go over a local
// socket with no use of the heap on either side.
struct PairMessage {
    char byte = 'r';
    iovec data{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(2 * sizeof(int))] = {};
    msghdr message{};

    PairMessage() {
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
    }
    PairMessage(const PairMessage&) = delete;
    PairMessage& operator=(const PairMessage&) = delete;
};

bool sendPair(int socket, const int fds[2]) {
    PairMessage m;
    cmsghdr* header = CMSG_FIRSTHDR(&m.message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(2 * sizeof(int));
    memcpy(CMSG_DATA(header), fds, 2 * sizeof(int));
    return sendmsg(socket, &m.message, 0) == 1;
}

bool receivePair(int socket, int fds[2]) {
    PairMessage m;
    if (recvmsg(socket, &m.message, 0) != 1) return false;
    cmsghdr* header = CMSG_FIRSTHDR(&m.message);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS) return false;
    memcpy(fds, CMSG_DATA(header), 2 * sizeof(int));
    return true;
}

// A run's request, read without the heap: see PlannedPolicy.
char gRequest[1 << 22];

[[noreturn]] void runRequested(const sim::Scenario& scenario, int requestFd, int messageFd) {
    size_t size = 0;
    for (;;) {
        const ssize_t got = read(requestFd, gRequest + size, sizeof(gRequest) - size);
        if (got <= 0) break;
        size += static_cast<size_t>(got);
    }
    close(requestFd);
    RunRequest request;
    PlannedPolicy planned;
    if (size == sizeof(gRequest) || !parseRequest(gRequest, size, &request, &planned)) _exit(5);
    runChild(scenario, request, &planned, messageFd);
}

// The server: for each pair of descriptors (the run's request to read, its messages to
// write), forks the run, waits for it and answers its wait status. Between runs it uses
// no memory of the heap, so that each run is forked from the same state.
[[noreturn]] void serve(const sim::Scenario& scenario, int control, int errorFd) {
    for (;;) {
        int fds[2];
        if (!receivePair(control, fds)) _exit(0);
        const pid_t pid = fork();
        if (pid == 0) {
            close(control);
            if (errorFd >= 0) dup2(errorFd, STDERR_FILENO);
            runRequested(scenario, fds[0], fds[1]);
        }
        close(fds[0]);
        close(fds[1]);
        int status = 0;
        if (pid < 0 || waitpid(pid, &status, 0) != pid) status = -1;
        if (!writeAll(control, &status, sizeof(status))) _exit(0);
    }
}

}  // namespace

Launcher::Launcher(const sim::Scenario& scenario) : mErrors(tmpfile()) {
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0) return;
    fflush(stdout);
    fflush(stderr);
    mServer = fork();
    if (mServer == 0) {
        close(sockets[0]);
        serve(scenario, sockets[1], mErrors != nullptr ? fileno(mErrors) : -1);
    }
    close(sockets[1]);
    mControl = mServer > 0 ? sockets[0] : -1;
    if (mControl < 0) close(sockets[0]);
}

Launcher::~Launcher() {
    if (mControl >= 0) close(mControl);
    if (mServer > 0) waitpid(mServer, nullptr, 0);
    if (mErrors != nullptr) fclose(mErrors);
}

RunResult Launcher::run(const RunRequest& request) {
    RunResult result;
    int requests[2];
    int messages[2];
    if (mControl < 0 || pipe(requests) != 0) {
        result.stopKind = "error";
        result.stopDetail = "no server for the run";
        return result;
    }
    if (pipe(messages) != 0) {
        close(requests[0]);
        close(requests[1]);
        result.stopKind = "error";
        result.stopDetail = "no pipe for the run";
        return result;
    }
    const int errorFd = mErrors != nullptr ? fileno(mErrors) : -1;
    if (errorFd >= 0 && ftruncate(errorFd, 0) == 0) lseek(errorFd, 0, SEEK_SET);
    const int theirs[2] = {requests[0], messages[1]};
    const bool sent = sendPair(mControl, theirs);
    close(requests[0]);
    close(messages[1]);
    const std::string text = formatRequest(request);
    if (sent) writeAll(requests[1], text.data(), text.size());
    close(requests[1]);
    readMessages(readAll(messages[0]), &result);
    close(messages[0]);
    int status = -1;
    ssize_t got = 0;
    if (sent) got = read(mControl, &status, sizeof(status));
    if (got != static_cast<ssize_t>(sizeof(status)) || status == -1) {
        result.stopKind = "error";
        result.stopDetail = "the run's server did not answer";
        return result;
    }
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (errorFd >= 0) {
        lseek(errorFd, 0, SEEK_SET);
        result.errorOutput = readAll(errorFd);
    }
    return result;
}

}  // namespace explore
