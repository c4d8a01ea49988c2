// Concurrent blocks of a scenario: reading `parallel` / `branch` / `end` and playing the
// branches at the same time, each on its own thread.
#pragma once

#include <string>
#include <vector>

#include "lexer.h"
#include "scenario.h"

namespace sim {

// Whether the line opens, divides or closes a block, or declares an expected finding.
bool isBlockKeyword(const std::string& head);

// Reads the block keywords in order. A scenario feeds every line to accept() while a
// block is open (and the keyword lines that open it), then takes the finished step.
class BlockReader {
  public:
    bool open() const { return mBlock != nullptr; }
    // `parallel`, `branch` or `end` (command null), or a command inside the block.
    bool accept(const Line& line, const Step* command, std::string* error);
    // The line of the `parallel` that opened the block still open.
    const Line& opening() const { return mOpening; }
    // The block step closed by the last `end`, once.
    bool takeClosed(Step* step);

  private:
    std::shared_ptr<Block> mBlock;
    Line mOpening;
    bool mClosed = false;
    Step mStep;
};

// `expect-finding KIND` after a block's `end`.
bool addExpectedFinding(const Line& line, Step* blockStep, std::string* error);

// Runs one command of a branch on the calling thread. A world command that the world
// refuses in its state of the moment (the daemon died first, say) prints
// `refused COMMAND: REASON`, and the branch goes on: in a concurrent block that is an
// outcome, not a malformed scenario. A call does not wait for the runtime's deliveries;
// the block waits for them at its end.
void runBranchStep(const Step& step);
// Runs one branch's commands in order on the calling thread.
void runBranch(const std::vector<Step>& steps);
// The command as written, without its indentation.
std::string commandText(const Step& step);

// The tag of branch `index` (from 0) in the transcript's listener.
inline int branchTag(size_t index) {
    return static_cast<int>(index) + 1;
}

// Plays the block on real threads, one per branch, started together; each branch thread
// delivers the world's calls into the library itself, as a hwbinder thread would.
void runBlockConcurrently(const Block& block);

}  // namespace sim
