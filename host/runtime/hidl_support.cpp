#include <hidl/HidlSupport.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace android {
namespace hardware {

namespace details {
std::string toHexString(uint64_t value, bool prefix) {
    char buf[32];
    snprintf(buf, sizeof(buf), prefix ? "0x%" PRIx64 : "%" PRIx64, value);
    return buf;
}
}  // namespace details

hidl_string::hidl_string() : mBuffer(""), mSize(0), mOwnsBuffer(false) {}

hidl_string::~hidl_string() {
    clear();
}

hidl_string::hidl_string(const hidl_string& other) : hidl_string() {
    copyFrom(other.mBuffer, other.mSize);
}

hidl_string::hidl_string(hidl_string&& other) noexcept : hidl_string() {
    moveFrom(other);
}

hidl_string::hidl_string(const char* s) : hidl_string() {
    if (s != nullptr) copyFrom(s, strlen(s));
}

hidl_string::hidl_string(const char* s, size_t length) : hidl_string() {
    copyFrom(s, length);
}

hidl_string::hidl_string(const std::string& s) : hidl_string() {
    copyFrom(s.data(), s.size());
}

hidl_string& hidl_string::operator=(const hidl_string& other) {
    if (this != &other) copyFrom(other.mBuffer, other.mSize);
    return *this;
}

hidl_string& hidl_string::operator=(hidl_string&& other) noexcept {
    if (this != &other) moveFrom(other);
    return *this;
}

hidl_string& hidl_string::operator=(const char* s) {
    if (s == nullptr) {
        clear();
    } else {
        copyFrom(s, strlen(s));
    }
    return *this;
}

hidl_string& hidl_string::operator=(const std::string& s) {
    copyFrom(s.data(), s.size());
    return *this;
}

void hidl_string::clear() {
    if (mOwnsBuffer) free(const_cast<char*>(mBuffer));
    mBuffer = "";
    mSize = 0;
    mOwnsBuffer = false;
}

void hidl_string::copyFrom(const char* data, size_t size) {
    char* copy = static_cast<char*>(malloc(size + 1));
    if (size > 0) memcpy(copy, data, size);
    copy[size] = '\0';
    clear();
    mBuffer = copy;
    mSize = static_cast<uint32_t>(size);
    mOwnsBuffer = true;
}

void hidl_string::moveFrom(hidl_string& other) {
    clear();
    mBuffer = other.mBuffer;
    mSize = other.mSize;
    mOwnsBuffer = other.mOwnsBuffer;
    other.mBuffer = "";
    other.mSize = 0;
    other.mOwnsBuffer = false;
}

static int compare(const char* a, size_t aSize, const char* b, size_t bSize) {
    int c = memcmp(a, b, std::min(aSize, bSize));
    if (c != 0) return c;
    return aSize < bSize ? -1 : (aSize > bSize ? 1 : 0);
}

bool operator==(const hidl_string& a, const hidl_string& b) {
    return compare(a.c_str(), a.size(), b.c_str(), b.size()) == 0;
}
bool operator!=(const hidl_string& a, const hidl_string& b) {
    return !(a == b);
}

hidl_handle::hidl_handle(const native_handle_t* handle) {
    if (handle != nullptr) mHandle = native_handle_clone(handle);
}

hidl_handle::hidl_handle(const hidl_handle& other) : hidl_handle(other.mHandle) {}

hidl_handle::hidl_handle(hidl_handle&& other) noexcept : mHandle(other.mHandle) {
    other.mHandle = nullptr;
}

hidl_handle::~hidl_handle() {
    reset();
}

hidl_handle& hidl_handle::operator=(const hidl_handle& other) {
    if (this != &other) {
        reset();
        if (other.mHandle != nullptr) mHandle = native_handle_clone(other.mHandle);
    }
    return *this;
}

hidl_handle& hidl_handle::operator=(hidl_handle&& other) noexcept {
    if (this != &other) {
        reset();
        mHandle = other.mHandle;
        other.mHandle = nullptr;
    }
    return *this;
}

void hidl_handle::reset() {
    if (mHandle != nullptr) {
        native_handle_t* h = const_cast<native_handle_t*>(mHandle);
        native_handle_close(h);
        native_handle_delete(h);
        mHandle = nullptr;
    }
}

std::string toString(bool value) {
    return value ? "true" : "false";
}
std::string toString(int8_t value) {
    return std::to_string(value);
}
std::string toString(uint8_t value) {
    return std::to_string(value);
}
std::string toString(int16_t value) {
    return std::to_string(value);
}
std::string toString(uint16_t value) {
    return std::to_string(value);
}
std::string toString(int32_t value) {
    return std::to_string(value);
}
std::string toString(uint32_t value) {
    return std::to_string(value);
}
std::string toString(int64_t value) {
    return std::to_string(value);
}
std::string toString(uint64_t value) {
    return std::to_string(value);
}
std::string toString(float value) {
    return std::to_string(value);
}
std::string toString(double value) {
    return std::to_string(value);
}
std::string toString(const hidl_string& value) {
    return "\"" + std::string(value) + "\"";
}
std::string toString(const hidl_handle& value) {
    return value.getNativeHandle() == nullptr ? "(null)" : "native_handle";
}
std::string toString(const sp<hidl_death_recipient>& value) {
    return toString(static_cast<const void*>(value.get()));
}
std::string toString(const void* value) {
    char buf[32];
    snprintf(buf, sizeof(buf), "%p", value);
    return buf;
}

}  // namespace hardware
}  // namespace android
