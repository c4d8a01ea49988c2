// Host HIDL runtime: call status and Return<T>, with libhidl's checking rules.
// A failed Return that is destroyed (or move-assigned onto) without its status
// having been checked aborts the process, and so does reading its value.
#pragma once

#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <string>
#include <utility>

namespace android {
namespace hardware {

class Status final {
  public:
    enum Exception : int32_t {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        EX_TRANSACTION_FAILED = -129,
    };

    static Status ok() { return Status(); }
    static Status fromExceptionCode(int32_t exceptionCode, const char* message = nullptr);
    static Status fromStatusT(status_t status);

    Status() = default;

    int32_t exceptionCode() const { return mException; }
    status_t transactionError() const { return mErrorCode; }
    bool isOk() const { return mException == EX_NONE; }
    std::string description() const;

  private:
    int32_t mException = EX_NONE;
    status_t mErrorCode = OK;
    std::string mMessage;
};

// What happens to a successful Return that nobody checked.
enum class HidlReturnRestriction {
    NONE,
    ERROR_IF_UNCHECKED,
    FATAL_IF_UNCHECKED,
};
void setProcessHidlReturnRestriction(HidlReturnRestriction restriction);

namespace details {

class return_status {
  public:
    return_status() = default;
    return_status(const Status& status) : mStatus(status) {}  // NOLINT
    return_status(const return_status&) = delete;
    return_status& operator=(const return_status&) = delete;
    return_status(return_status&& other) noexcept;
    return_status& operator=(return_status&& other);
    ~return_status();

    bool isOkUnchecked() const { return mStatus.isOk(); }
    bool isOk() const {
        mCheckedStatus = true;
        return mStatus.isOk();
    }
    // Never marks the status checked.
    std::string description() const { return mStatus.description(); }

  protected:
    void assertOk() const;

  private:
    void onUncheckedDestruction() const;

    Status mStatus;
    mutable bool mCheckedStatus = false;
};

}  // namespace details

template <typename T>
class Return : public details::return_status {
  public:
    Return(T value) : details::return_status(), mVal(std::move(value)) {}     // NOLINT
    Return(const Status& status) : details::return_status(status), mVal() {}  // NOLINT
    Return(Return&& other) noexcept = default;
    Return& operator=(Return&& other) = default;
    ~Return() = default;

    operator T() const {  // NOLINT
        assertOk();
        return mVal;
    }
    T withDefault(T defaultValue) { return isOk() ? mVal : defaultValue; }

  private:
    T mVal;
};

template <typename T>
class Return<sp<T>> : public details::return_status {
  public:
    Return(sp<T> value) : details::return_status(), mVal(std::move(value)) {}  // NOLINT
    Return(T* value) : details::return_status(), mVal(value) {}                // NOLINT
    template <typename U>
    Return(const sp<U>& value) : details::return_status(), mVal(value) {}  // NOLINT
    Return(const Status& status) : details::return_status(status) {}       // NOLINT
    Return(Return&& other) noexcept = default;
    Return& operator=(Return&& other) = default;
    ~Return() = default;

    operator sp<T>() const {  // NOLINT
        assertOk();
        return mVal;
    }
    sp<T> withDefault(sp<T> defaultValue) { return isOk() ? mVal : defaultValue; }

  private:
    sp<T> mVal;
};

template <>
class Return<void> : public details::return_status {
  public:
    Return() : details::return_status() {}
    Return(const Status& status) : details::return_status(status) {}  // NOLINT
    Return(Return&& other) noexcept = default;
    Return& operator=(Return&& other) = default;
    ~Return() = default;
};

inline Return<void> Void() {
    return Return<void>();
}

}  // namespace hardware
}  // namespace android
