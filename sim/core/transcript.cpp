// The run's transcript.
#include "transcript.h"

#include <zdhost/schedule.h>

#include <cstdio>

namespace sim {

Transcript& Transcript::get() {
    // Never destroyed: the library and the runtime may still log during static destruction.
    static Transcript* transcript = new Transcript;
    return *transcript;
}

std::atomic<bool> Transcript::sKept{true};

void Transcript::setKept(bool kept) {
    sKept = kept;
}

void Transcript::emit(const std::string& line) {
    if (!kept()) return;
    zdhost::schedule::wroteLine();
    std::lock_guard<std::mutex> lock(mLock);
    mSegment.push_back(line);
    if (mListener) mListener(zdhost::schedule::threadTag(), line);
    if (mEcho) {
        fwrite(line.data(), 1, line.size(), stdout);
        fputc('\n', stdout);
        fflush(stdout);
    }
}

std::vector<std::string> Transcript::takeSegment() {
    std::lock_guard<std::mutex> lock(mLock);
    std::vector<std::string> segment;
    segment.swap(mSegment);
    return segment;
}

void Transcript::setListener(Listener listener) {
    std::lock_guard<std::mutex> lock(mLock);
    mListener = std::move(listener);
}

void Transcript::setEcho(bool echo) {
    std::lock_guard<std::mutex> lock(mLock);
    mEcho = echo;
}

}  // namespace sim
