// What the `call` binders share: reading a call's arguments, out-parameters, and
// printing a call's result.
#pragma once

#include <zdhost/runtime.h>

#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "calls.h"
#include "format.h"
#include "transcript.h"
#include "values.h"

namespace sim {

// The framework objects a call can take, by the names the scenario uses.
enum class FrameworkObject { Null, GnssCb, GeofenceCb, CorvaneCb, FdCallback };

// Reads a call's arguments in order. Every reader returns false on a bad or missing
// argument and leaves the reason in error().
class CallArgs {
  public:
    CallArgs(std::string function, std::vector<Token> args);

    bool hasMore() const { return mNext < mArgs.size(); }
    bool done();  // false when arguments are left over
    const std::string& error() const { return mError; }
    const Token* peek() const { return hasMore() ? &mArgs[mNext] : nullptr; }

    template <typename T>
    bool integer(T* out) {
        const Token* t = next("an integer");
        return t && check(parseInteger(*t, out, &mError));
    }
    bool real(double* out);
    bool boolean(bool* out);
    bool string(android::hardware::hidl_string* out);  // "TEXT" or a bare word
    bool cString(std::string* text, bool* isNull);     // "TEXT", a bare word, or null
    bool bytes(std::vector<uint8_t>* out, bool* isNull);
    bool object(FrameworkObject expected, FrameworkObject* out);  // that object or null
    bool outParam(bool* wanted);                                  // out, or null
    bool emptyWeakReference();                                    // null
    bool location(android::hardware::gnss::V1_0::GnssLocation* out);
    bool location2(android::hardware::gnss::V2_0::GnssLocation* out);
    bool svStatus(android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus* out);
    bool svList(
        android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>* out);

  private:
    const Token* next(const char* what);
    bool check(bool ok);
    bool fail(const std::string& reason);

    std::string mFunction;
    std::vector<Token> mArgs;
    size_t mNext = 0;
    std::string mError;
};

// The world's object, or an empty reference where the scenario wrote null.
template <typename T>
android::sp<T> unlessNull(FrameworkObject chosen, const android::sp<T>& object) {
    return chosen == FrameworkObject::Null ? nullptr : object;
}

// A binder reads the arguments of one function and returns the call, ready to run.
using CallAction = std::function<void()>;
using CallBinder = std::function<bool(CallArgs&, CallAction*)>;
using CallTable = std::map<std::string, CallBinder>;

void addLinkCalls(CallTable& table);      // fusion-daemon link, death, probes, callbacks
void addGeofenceCalls(CallTable& table);  // geofence requests
void addFeedCalls(CallTable& table);      // location-manager feed, satellite augmentation
void addHalCalls(CallTable& table);       // vendor HAL extension

// Runs a library call on this (the provider) thread. Its result is formatted at once,
// then the runtime's deliveries finish (unless runWithoutWaiting() runs it), then
// "ret VALUE" is the call's last line.
template <typename F>
void callAndReport(F&& call) {
    using Result = decltype(call());
    if constexpr (std::is_void<Result>::value) {
        call();
        if (callsWait()) zdhost::pool::drain();
    } else {
        const std::string value = fmt(call());
        if (callsWait()) zdhost::pool::drain();
        Transcript::get().emit("ret " + value);
    }
}

// The binder of a function that takes no arguments.
template <typename F>
CallBinder noArgs(F function) {
    return [function](CallArgs& in, CallAction* run) {
        if (!in.done()) return false;
        *run = [function] { callAndReport(function); };
        return true;
    };
}

// An out-parameter as the provider passes it: its own reference, pre-filled with a
// placeholder object, or a null pointer.
template <typename I>
class OutParam {
  public:
    OutParam(bool wanted, android::sp<I> placeholder)
        : mWanted(wanted), mPlaceholder(placeholder), mValue(placeholder) {}

    android::sp<I>* pointer() { return mWanted ? &mValue : nullptr; }

    // "untouched" (never written, or a null pointer), "null", or the object's name.
    std::string describe() const {
        if (!mWanted || mValue == mPlaceholder) return "untouched";
        return fmt(mValue);
    }

  private:
    bool mWanted;
    android::sp<I> mPlaceholder;
    android::sp<I> mValue;
};

inline void emitOut(const std::string& name, const std::string& value) {
    Transcript::get().emit("out " + name + "=" + value);
}

}  // namespace sim
