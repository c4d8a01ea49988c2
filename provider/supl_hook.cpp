// The framework's SUPL DNS hook: SUPL server names that the vendor GNSS HAL asks
// to resolve are handed to the first member of the framework's FdCallback record.
#include <log/log.h>

#include <atomic>

#include "module_state.h"

namespace {
void logNotRegistered() {
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: fusd_callback is null ,please register!",
                        kLogPrefix);
}

void loadHook(FdCallback* record) {
    g_sendAgpsRequestSuplDns = record->sendAgpsRequestSuplDns;
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: fusd_callback register successfully!",
                        kLogPrefix);
}
}  // namespace

void send_Agps_Supl_Request(const android::hardware::hidl_string& fqdn) {
    SuplDnsHook hook = g_sendAgpsRequestSuplDns;
    if (hook == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s:g_sendAgpsRequestSuplDns is null\n",
                            kLogPrefix);
        return;
    }
    hook(fqdn);
}

void registerFusdIfCb(FdCallback* cb) {
    // The first registration stays: the test and the store are one step, so that two
    // registrations racing never both find the place empty.
    FdCallback* empty = nullptr;
    if (!g_fdCallback.compare_exchange_strong(empty, cb)) return;
    if (cb == nullptr) {
        logNotRegistered();
        return;
    }
    loadHook(cb);
}

void set_fusd_callback() {
    FdCallback* record = g_fdCallback;
    if (record == nullptr) {
        logNotRegistered();
        return;
    }
    loadHook(record);
}
