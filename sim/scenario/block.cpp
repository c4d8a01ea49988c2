#include "block.h"

#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "calls.h"
#include "transcript.h"

namespace sim {

bool isBlockKeyword(const std::string& head) {
    return head == "parallel" || head == "branch" || head == "end";
}

bool BlockReader::accept(const Line& line, const Step* command, std::string* error) {
    const std::string& head = line.tokens[0].text;
    if (command != nullptr) {
        if (mBlock->branches.empty()) {
            *error = "a command of a concurrent block needs a `branch` line before it";
            return false;
        }
        mBlock->branches.back().push_back(*command);
        return true;
    }
    if (line.tokens.size() != 1) {
        *error = "`" + head + "` takes no arguments";
        return false;
    }
    if (head == "parallel") {
        if (open()) {
            *error = "concurrent blocks do not nest";
            return false;
        }
        mBlock = std::make_shared<Block>();
        mOpening = line;
        return true;
    }
    if (head == "branch") {
        mBlock->branches.emplace_back();
        return true;
    }
    for (const auto& branch : mBlock->branches) {
        if (branch.empty()) {
            *error = "every branch of a concurrent block needs a command";
            return false;
        }
    }
    if (mBlock->branches.size() < 2) {
        *error = "a concurrent block needs at least two branches";
        return false;
    }
    mStep = Step();
    mStep.source = mOpening;
    mStep.block = mBlock;
    mStep.run = [block = mBlock](std::string*) {
        runBlockConcurrently(*block);
        return true;
    };
    mBlock = nullptr;
    mClosed = true;
    return true;
}

bool BlockReader::takeClosed(Step* step) {
    if (!mClosed) return false;
    mClosed = false;
    *step = std::move(mStep);
    return true;
}

bool addExpectedFinding(const Line& line, Step* blockStep, std::string* error) {
    ExpectedFinding expected;
    if (blockStep == nullptr || blockStep->block == nullptr) {
        *error = "expect-finding belongs right after a concurrent block's `end`";
        return false;
    }
    const size_t n = line.tokens.size();
    int64_t count = 0;
    std::string ignored;
    if ((n != 2 && n != 3) || !parseFindingKind(line.tokens[1].text, &expected.kind) ||
        (n == 3 &&
         (!parseInt64(line.tokens[2], &count, &ignored) || count < 1 || count > 100000))) {
        *error =
            "usage: expect-finding "
            "crash|deadlock|step-bound|hang|non-serial|lock-across-call|refused [COUNT]";
        return false;
    }
    if (n == 3) expected.count = static_cast<int>(count);
    Block* block = blockStep->block.get();
    for (const ExpectedFinding& known : block->expectedFindings) {
        if (known.kind == expected.kind) {
            *error = std::string("expect-finding ") + findingName(expected.kind) +
                     " is declared already";
            return false;
        }
    }
    block->expectedFindings.push_back(expected);
    return true;
}

std::string commandText(const Step& step) {
    const std::string& text = step.source.text;
    const size_t start = text.find_first_not_of(" \t");
    return text.substr(start == std::string::npos ? 0 : start);
}

void runBranchStep(const Step& step) {
    std::string error;
    bool ran = true;
    runWithoutWaiting([&] { ran = step.run(&error); });
    if (!ran) Transcript::get().emit("refused " + commandText(step) + ": " + error);
}

void runBranch(const std::vector<Step>& steps) {
    for (const Step& step : steps) runBranchStep(step);
}

void runBlockConcurrently(const Block& block) {
    std::mutex lock;
    std::condition_variable go;
    bool started = false;
    std::vector<std::thread> threads;
    for (size_t i = 0; i < block.branches.size(); ++i) {
        threads.emplace_back([&, i] {
            {
                std::unique_lock<std::mutex> guard(lock);
                go.wait(guard, [&] { return started; });
            }
            zdhost::schedule::setThreadTag(branchTag(i));
            zdhost::pool::runAsPoolThread([&] { runBranch(block.branches[i]); });
        });
    }
    {
        std::lock_guard<std::mutex> guard(lock);
        started = true;
    }
    go.notify_all();
    for (auto& thread : threads) thread.join();
}

}  // namespace sim
