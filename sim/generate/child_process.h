// A piece of work in a process of its own, forked from a parent that has started no
// thread, so that the library starts fresh in it: what it writes on its pipe, what it
// wrote on standard error, and how it ended.
#pragma once

#include <functional>
#include <string>

namespace gen {

struct ChildOutput {
    std::string messages;  // what the work wrote on the pipe it was given
    std::string errors;    // its standard error
    int exitCode = 0;
    int signal = 0;  // the signal that ended it, if any (SIGALRM: it ran out of time)
};

// Runs `work(fd)` in a forked child that exits with work's result when it returns, with
// an alarm after `seconds`.
ChildOutput runInChild(const std::function<int(int fd)>& work, unsigned seconds);

// Writes `line` and a line feed on `fd`, whole.
void writeLine(int fd, const std::string& line);

}  // namespace gen
