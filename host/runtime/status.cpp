#include <hidl/Status.h>
#include <log/log.h>

#include <atomic>
#include <cstdlib>

namespace android {
namespace hardware {

namespace {
std::atomic<HidlReturnRestriction> gRestriction{HidlReturnRestriction::NONE};

const char* exceptionName(int32_t code) {
    switch (code) {
        case Status::EX_NONE: return "EX_NONE";
        case Status::EX_SECURITY: return "EX_SECURITY";
        case Status::EX_BAD_PARCELABLE: return "EX_BAD_PARCELABLE";
        case Status::EX_ILLEGAL_ARGUMENT: return "EX_ILLEGAL_ARGUMENT";
        case Status::EX_NULL_POINTER: return "EX_NULL_POINTER";
        case Status::EX_ILLEGAL_STATE: return "EX_ILLEGAL_STATE";
        case Status::EX_NETWORK_MAIN_THREAD: return "EX_NETWORK_MAIN_THREAD";
        case Status::EX_UNSUPPORTED_OPERATION: return "EX_UNSUPPORTED_OPERATION";
        case Status::EX_HAS_REPLY_HEADER: return "EX_HAS_REPLY_HEADER";
        case Status::EX_TRANSACTION_FAILED: return "EX_TRANSACTION_FAILED";
        default: return "EX_UNKNOWN";
    }
}

const char* statusName(status_t status) {
    switch (status) {
        case OK: return "OK";
        case DEAD_OBJECT: return "DEAD_OBJECT";
        case FAILED_TRANSACTION: return "FAILED_TRANSACTION";
        case UNKNOWN_ERROR: return "UNKNOWN_ERROR";
        case BAD_VALUE: return "BAD_VALUE";
        default: return "UNKNOWN";
    }
}
}  // namespace

void setProcessHidlReturnRestriction(HidlReturnRestriction restriction) {
    gRestriction = restriction;
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    Status s;
    s.mException = exceptionCode;
    s.mErrorCode = exceptionCode == EX_TRANSACTION_FAILED ? UNKNOWN_ERROR : OK;
    if (message != nullptr) s.mMessage = message;
    return s;
}

Status Status::fromStatusT(status_t status) {
    Status s;
    if (status != OK) {
        s.mException = EX_TRANSACTION_FAILED;
        s.mErrorCode = status;
    }
    return s;
}

// Same shape as libhidl's text: Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '
std::string Status::description() const {
    if (mException == EX_NONE) return "No error";
    std::string out = std::string("Status(") + exceptionName(mException) + "): '";
    if (mException == EX_TRANSACTION_FAILED) out += std::string(statusName(mErrorCode)) + ": ";
    return out + mMessage + "'";
}

namespace details {

return_status::return_status(return_status&& other) noexcept
    : mStatus(std::move(other.mStatus)), mCheckedStatus(other.mCheckedStatus) {
    // The source is left ok and checked, safe to destroy.
    other.mStatus = Status::ok();
    other.mCheckedStatus = true;
}

return_status& return_status::operator=(return_status&& other) {
    if (!mCheckedStatus && !isOkUnchecked()) assertOk();
    onUncheckedDestruction();
    mStatus = std::move(other.mStatus);
    mCheckedStatus = other.mCheckedStatus;
    other.mStatus = Status::ok();
    other.mCheckedStatus = true;
    return *this;
}

return_status::~return_status() {
    if (!mCheckedStatus && !isOkUnchecked()) assertOk();
    onUncheckedDestruction();
}

void return_status::assertOk() const {
    mCheckedStatus = true;
    if (!isOkUnchecked()) {
        LOG_ALWAYS_FATAL("Failed HIDL return status not checked: %s", description().c_str());
    }
}

void return_status::onUncheckedDestruction() const {
    if (mCheckedStatus) return;
    switch (gRestriction.load()) {
        case HidlReturnRestriction::NONE:
            return;
        case HidlReturnRestriction::ERROR_IF_UNCHECKED:
            ALOGE("Unchecked HIDL return status: %s", description().c_str());
            return;
        case HidlReturnRestriction::FATAL_IF_UNCHECKED:
            LOG_ALWAYS_FATAL("Unchecked HIDL return status: %s", description().c_str());
    }
}

}  // namespace details
}  // namespace hardware
}  // namespace android
