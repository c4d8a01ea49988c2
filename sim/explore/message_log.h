// A run's messages (child_run.h gives their lines), in memory that the explorer shares with
// every process it forks. The run appends each message there without a system call, so a
// step costs the run no write and the explorer no wake-up; the explorer reads the messages
// once the run has ended, whichever way it ended, a crash or a watchdog's kill included,
// since they are in the shared memory as soon as they are appended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace explore {

class MessageLog {
  public:
    // Room for a run's messages; a run that writes more ends with them cut there.
    static constexpr size_t kCapacity = size_t{64} << 20;

    // Maps the shared memory; to be made before the processes that use it are forked.
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    bool ready() const { return mHeader != nullptr; }
    // Before each run, in the explorer.
    void clear();
    // In the run: `message` and its end of line. No heap memory is taken.
    void append(const std::string& message);
    // In the explorer, once the run has ended: every message it appended.
    std::string_view text() const;
    bool cut() const;

  private:
    struct Header {
        uint64_t size;
        uint64_t cut;
    };
    Header* mHeader = nullptr;
    char* mData = nullptr;
};

}  // namespace explore
