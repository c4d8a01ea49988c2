// What every recording fake object does with a call it receives: print it as its party's
// transcript line, fail it in transport when a knob says so or its process is dead, and
// answer it from the party's knobs. The generated Recording* classes call it.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>
#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

#include "party.h"
#include "transcript.h"

namespace sim {

class Recorder {
  public:
    // `process` is the service process the object lives in; null for an object of the
    // framework, which lives as long as the world. `iface` names the object in lines and
    // knobs ("IFusdLbs", "IZDGnss2.0", "gnssCb").
    Recorder(Party& party, android::sp<zdhost::ServiceProcess> process, std::string iface)
        : mParty(&party), mProcess(std::move(process)), mIface(std::move(iface)) {}

    const std::string& iface() const { return mIface; }

    // Prints `PREFIX IFACE.OP(ARGS)`, with ` -> transport-error` appended when the call
    // fails; returns whether it goes through.
    bool enter(const char* op, std::initializer_list<std::string> args);
    // The same, formatting the arguments only when the transcript is kept.
    template <typename FormatArgs>
    bool enter(const char* op, const FormatArgs& formatArgs) {
        reachCall(op);
        const bool failed = mParty->takeFailure(key(op)) || processDead();
        if (Transcript::kept()) emit(callText(op, formatArgs()), failed);
        if (!failed) mParty->runNested(key(op));
        reachReply();
        return !failed;
    }

    // The answer the party's knobs give IFACE.OP, else `fallback`.
    template <typename T>
    T answer(const char* op, T fallback) const {
        Token value;
        if (!mParty->answerFor(key(op), &value)) return fallback;
        return convert<T>(value, fallback);
    }

    // Death links, as a device's proxy makes them: on a dead peer they answer false with a
    // good status; otherwise they are recorded with the peer's process, `who` being `self`.
    android::hardware::Return<bool> linkToDeath(
        android::hidl::base::V1_0::IBase* self,
        const android::sp<android::hardware::hidl_death_recipient>& recipient, uint64_t cookie);
    android::hardware::Return<bool> unlinkToDeath(
        const android::sp<android::hardware::hidl_death_recipient>& recipient);

  private:
    // A call is a point that writes the receiving operation; what the fake's state it
    // reaches on its way (knobs, a kept callback, sub-objects made, its process's life) is
    // touched where it is read or written. The reply touches nothing by itself.
    void reachCall(const char* op) const {
        zdhost::schedule::reach(zdhost::schedule::Point::kCall,
                                zdhost::schedule::receiver(mParty->prefix() + " " + key(op)),
                                zdhost::schedule::Access::kWrite);
    }
    static void reachReply() {
        zdhost::schedule::reach(zdhost::schedule::Point::kReply, nullptr,
                                zdhost::schedule::Access::kNothing);
    }
    std::string key(const char* op) const { return mIface + "." + op; }
    bool processDead() const { return mProcess != nullptr && !mProcess->alive(); }
    void emit(const std::string& call, bool failed) const;
    std::string callText(const char* op, const std::vector<std::string>& args) const;

    template <typename T>
    static T convert(const Token& value, T fallback) {
        std::string ignored;
        if constexpr (std::is_same<T, bool>::value) {
            bool b = fallback;
            return parseBool(value, &b, &ignored) ? b : fallback;
        } else if constexpr (std::is_floating_point<T>::value) {
            double d = 0;
            return parseDouble(value, &d, &ignored) ? static_cast<T>(d) : fallback;
        } else if constexpr (std::is_integral<T>::value || std::is_enum<T>::value) {
            int64_t i = 0;
            return parseInt64(value, &i, &ignored) ? static_cast<T>(i) : fallback;
        } else {
            return fallback;
        }
    }

    Party* mParty;
    android::sp<zdhost::ServiceProcess> mProcess;
    std::string mIface;
};

// The object a fake hands out, as the interface type the operation returns.
template <typename I>
android::sp<I> castProvided(const android::sp<android::hidl::base::V1_0::IBase>& object) {
    return android::sp<I>(dynamic_cast<I*>(object.get()));
}

}  // namespace sim
