// Host HIDL runtime: the value types that hidl-gen's C++ headers use, with the
// same API and semantics as libhidl's for what this project needs.
#pragma once

#include <cutils/native_handle.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {
struct IBase;
}  // namespace V1_0
}  // namespace base
}  // namespace hidl

namespace hardware {

namespace details {
// Marks generated interface classes.
struct i_tag {};

// Specialised by hidl-gen for every enum it declares.
template <typename T>
constexpr std::array<T, 0> hidl_enum_values = {};

std::string toHexString(uint64_t value, bool prefix = true);

template <typename T, typename = std::enable_if_t<std::is_integral<T>::value>>
std::string toHexString(T value, bool prefix = true) {
    return toHexString(static_cast<uint64_t>(static_cast<std::make_unsigned_t<T>>(value)), prefix);
}
}  // namespace details

template <typename Enum>
using hidl_bitfield = typename std::underlying_type<Enum>::type;

// Receives the death of a remote service that it was linked to.
struct hidl_death_recipient : public virtual RefBase {
    virtual void serviceDied(uint64_t cookie,
                             const ::android::wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

class hidl_string {
  public:
    hidl_string();
    ~hidl_string();
    hidl_string(const hidl_string& other);
    hidl_string(hidl_string&& other) noexcept;
    hidl_string(const char* s);  // NOLINT: implicit like libhidl
    hidl_string(const char* s, size_t length);
    hidl_string(const std::string& s);  // NOLINT: implicit like libhidl

    hidl_string& operator=(const hidl_string& other);
    hidl_string& operator=(hidl_string&& other) noexcept;
    hidl_string& operator=(const char* s);
    hidl_string& operator=(const std::string& s);

    const char* c_str() const { return mBuffer; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    operator std::string() const { return std::string(mBuffer, mSize); }  // NOLINT

    void clear();

  private:
    void copyFrom(const char* data, size_t size);
    void moveFrom(hidl_string& other);

    // Same 16-byte layout as on a device: records embed hidl_string by value.
    const char* mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
};

bool operator==(const hidl_string& a, const hidl_string& b);
bool operator!=(const hidl_string& a, const hidl_string& b);

template <typename T>
class hidl_vec {
  public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    hidl_vec() = default;
    explicit hidl_vec(size_t size) { resize(size); }
    hidl_vec(std::initializer_list<T> list) { assign(list.begin(), list.size()); }
    hidl_vec(const std::vector<T>& v) { assign(v.data(), v.size()); }  // NOLINT
    hidl_vec(const hidl_vec& other) { assign(other.mBuffer, other.mSize); }
    hidl_vec(hidl_vec&& other) noexcept { moveFrom(other); }
    ~hidl_vec() { clear(); }

    hidl_vec& operator=(const hidl_vec& other) {
        if (this != &other) {
            clear();
            assign(other.mBuffer, other.mSize);
        }
        return *this;
    }
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this != &other) {
            clear();
            moveFrom(other);
        }
        return *this;
    }
    hidl_vec& operator=(const std::vector<T>& v) {
        clear();
        assign(v.data(), v.size());
        return *this;
    }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }  // NOLINT

    size_t size() const { return mSize; }
    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    T& operator[](size_t i) { return mBuffer[i]; }
    const T& operator[](size_t i) const { return mBuffer[i]; }
    iterator begin() { return mBuffer; }
    iterator end() { return mBuffer + mSize; }
    const_iterator begin() const { return mBuffer; }
    const_iterator end() const { return mBuffer + mSize; }

    void resize(size_t size) {
        T* fresh = size ? new T[size]() : nullptr;
        for (size_t i = 0; i < std::min(size, static_cast<size_t>(mSize)); ++i) {
            fresh[i] = std::move(mBuffer[i]);
        }
        clear();
        mBuffer = fresh;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }

  private:
    void clear() {
        if (mOwnsBuffer) delete[] mBuffer;
        mBuffer = nullptr;
        mSize = 0;
        mOwnsBuffer = true;
    }
    void assign(const T* data, size_t size) {
        mBuffer = size ? new T[size]() : nullptr;
        for (size_t i = 0; i < size; ++i) mBuffer[i] = data[i];
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }
    void moveFrom(hidl_vec& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mBuffer = nullptr;
        other.mSize = 0;
        other.mOwnsBuffer = true;
    }

    T* mBuffer = nullptr;
    uint32_t mSize = 0;
    bool mOwnsBuffer = true;
};

template <typename T>
bool operator==(const hidl_vec<T>& a, const hidl_vec<T>& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}
template <typename T>
bool operator!=(const hidl_vec<T>& a, const hidl_vec<T>& b) {
    return !(a == b);
}

// Fixed-size array as HIDL lays it out: plain storage, no header.
template <typename T, size_t SIZE1, size_t... SIZES>
struct hidl_array;

template <typename T, size_t SIZE1>
struct hidl_array<T, SIZE1> {
    using value_type = T;

    hidl_array() = default;
    hidl_array(const T (&source)[SIZE1]) {  // NOLINT
        for (size_t i = 0; i < SIZE1; ++i) mBuffer[i] = source[i];
    }

    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    T& operator[](size_t i) { return mBuffer[i]; }
    const T& operator[](size_t i) const { return mBuffer[i]; }
    static constexpr size_t size() { return SIZE1; }

    // No begin()/end(): libhidl's hidl_array has none, so code here must not either.
    bool operator==(const hidl_array& other) const {
        return std::equal(mBuffer, mBuffer + SIZE1, other.mBuffer);
    }
    bool operator!=(const hidl_array& other) const { return !(*this == other); }

  private:
    T mBuffer[SIZE1];
};

// Owns a copy of a native handle; only the pieces the generated headers use.
class hidl_handle {
  public:
    hidl_handle() = default;
    hidl_handle(const native_handle_t* handle);  // NOLINT
    hidl_handle(const hidl_handle& other);
    hidl_handle(hidl_handle&& other) noexcept;
    ~hidl_handle();
    hidl_handle& operator=(const hidl_handle& other);
    hidl_handle& operator=(hidl_handle&& other) noexcept;
    const native_handle_t* getNativeHandle() const { return mHandle; }
    operator const native_handle_t*() const { return mHandle; }  // NOLINT

  private:
    void reset();
    const native_handle_t* mHandle = nullptr;
    [[maybe_unused]] bool mOwnsHandle = true;  // keeps the device's 16-byte layout
};

// toString helpers the generated code calls for fields and arguments.
std::string toString(bool value);
std::string toString(int8_t value);
std::string toString(uint8_t value);
std::string toString(int16_t value);
std::string toString(uint16_t value);
std::string toString(int32_t value);
std::string toString(uint32_t value);
std::string toString(int64_t value);
std::string toString(uint64_t value);
std::string toString(float value);
std::string toString(double value);
std::string toString(const hidl_string& value);
std::string toString(const hidl_handle& value);
std::string toString(const sp<hidl_death_recipient>& value);
std::string toString(const void* value);

template <typename T>
std::string toString(const hidl_vec<T>& vec) {
    std::string out = "[" + std::to_string(vec.size()) + "]{";
    for (size_t i = 0; i < vec.size(); ++i) {
        if (i > 0) out += ", ";
        out += toString(vec[i]);
    }
    return out + "}";
}

template <typename T, size_t SIZE1>
std::string toString(const hidl_array<T, SIZE1>& array) {
    std::string out = "[" + std::to_string(SIZE1) + "]{";
    for (size_t i = 0; i < SIZE1; ++i) {
        if (i > 0) out += ", ";
        out += toString(array[i]);
    }
    return out + "}";
}

}  // namespace hardware
}  // namespace android
