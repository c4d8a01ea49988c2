#include "message_log.h"

#include <sys/mman.h>

#include <cstring>

namespace explore {

namespace {
constexpr size_t kMapped = sizeof(uint64_t) * 2 + MessageLog::kCapacity;
}  // namespace

MessageLog::MessageLog() {
    // Shared and not reserved: only the pages a run writes take memory, and a fork copies
    // no page table entry of a shared mapping.
    void* memory = mmap(nullptr, kMapped, PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) return;
    mHeader = static_cast<Header*>(memory);
    mData = static_cast<char*>(memory) + sizeof(Header);
    clear();
}

MessageLog::~MessageLog() {
    if (mHeader != nullptr) munmap(mHeader, kMapped);
}

void MessageLog::clear() {
    if (mHeader == nullptr) return;
    mHeader->size = 0;
    mHeader->cut = 0;
}

void MessageLog::append(const std::string& message) {
    if (mHeader == nullptr || mHeader->cut != 0) return;
    const size_t size = mHeader->size;
    if (message.size() + 1 > kCapacity - size) {
        mHeader->cut = 1;
        return;
    }
    memcpy(mData + size, message.data(), message.size());
    mData[size + message.size()] = '\n';
    mHeader->size = size + message.size() + 1;
}

std::string_view MessageLog::text() const {
    if (mHeader == nullptr) return {};
    return std::string_view(mData, mHeader->size);
}

bool MessageLog::cut() const {
    return mHeader != nullptr && mHeader->cut != 0;
}

}  // namespace explore
