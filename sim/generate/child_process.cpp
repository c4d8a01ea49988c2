#include "child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "line_channel.h"

namespace gen {

void writeLine(int fd, const std::string& line) {
    const std::string text = line + "\n";
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written <= 0) _exit(4);
        done += static_cast<size_t>(written);
    }
}

ChildOutput runInChild(const std::function<int(int fd)>& work, unsigned seconds) {
    ChildOutput output;
    FILE* errors = tmpfile();
    int fds[2];
    if (errors == nullptr || pipe(fds) != 0) {
        if (errors != nullptr) fclose(errors);
        output.exitCode = -1;
        output.errors = "no pipe or file for the child";
        return output;
    }
    fflush(stdout);
    fflush(stderr);
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        dup2(fileno(errors), STDERR_FILENO);
        alarm(seconds);
        _exit(work(fds[1]));
    }
    close(fds[1]);
    output.messages = explore::readAll(fds[0]);
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFSIGNALED(status)) output.signal = WTERMSIG(status);
    if (WIFEXITED(status)) output.exitCode = WEXITSTATUS(status);
    rewind(errors);
    output.errors = explore::readAll(fileno(errors));
    fclose(errors);
    return output;
}

}  // namespace gen
