// Building blocks of the fakes' objects: naming a new object, an object that keeps the
// callback registered with it, and an object whose getters hand out sub-objects.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>
#include <zdhost/runtime.h>
#include <zdhost/schedule.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "objects.h"
#include "party.h"
#include "recorder.h"

namespace sim {

// A new recording object of `party`, living in `process`, named `name` in the transcript
// ("@IFusdLbs#2") and in the party's knobs ("IFusdLbs").
template <typename T, typename... Extra>
android::sp<T> makeFake(Party& party, const android::sp<zdhost::ServiceProcess>& process,
                        const std::string& name, Extra&&... extra) {
    android::sp<T> object = new T(Recorder(party, process, name), std::forward<Extra>(extra)...);
    ObjectNames::get().assign(object.get(), name);
    return object;
}

// An object whose setCallback keeps the callback it received (when the call went through)
// and then tells its owner, on the caller's thread. While the call is in flight, a call the
// party makes back from inside it (`nested-in IFACE.setCallback`) goes to the callback
// arriving, as the real party would have it in hand.
template <typename Stub, typename Callback>
class CallbackKeeper : public Stub {
  public:
    using Listener = std::function<void(const android::sp<Callback>&)>;

    CallbackKeeper(Recorder recorder, Listener listener)
        : Stub(std::move(recorder)), mListener(std::move(listener)) {}

    android::hardware::Return<void> setCallback(const android::sp<Callback>& callback) override {
        tArriving = callback;
        android::hardware::Return<void> result = Stub::setCallback(callback);
        tArriving = nullptr;
        if (!result.isOkUnchecked()) return result;
        {
            zdhost::schedule::touch(this, zdhost::schedule::Access::kWrite);
            std::lock_guard<std::mutex> lock(mLock);
            mCallback = callback;
        }
        if (mListener) mListener(callback);
        return result;
    }

    // The callback a setCallback in flight on this thread hands over, if any.
    static android::sp<Callback> arriving() { return tArriving; }

    android::sp<Callback> callback() const {
        if (tArriving != nullptr) return tArriving;
        zdhost::schedule::touch(this, zdhost::schedule::Access::kRead);
        std::lock_guard<std::mutex> lock(mLock);
        return mCallback;
    }

  private:
    inline static thread_local android::sp<Callback> tArriving;
    const Listener mListener;
    mutable std::mutex mLock;
    android::sp<Callback> mCallback;
};

// The sub-objects an object's getters hand out: one per getter, made at its first fetch
// and kept for the life of the object, or an empty reference while the party withholds
// the getter's feature (`provide FEATURE no`).
class Extensions {
  public:
    struct Getter {
        std::string op;
        std::string feature;
        std::function<android::sp<android::hidl::base::V1_0::IBase>()> make;
    };

    // `owner` names the object the getters belong to ("IFusdLbs"); each getter is
    // declared to the party with its feature.
    Extensions(Party& party, const std::string& owner, std::vector<Getter> getters);

    android::sp<android::hidl::base::V1_0::IBase> fetch(const std::string& op);
    // The sub-object made for `feature` so far, if any.
    android::sp<android::hidl::base::V1_0::IBase> made(const std::string& feature) const;

  private:
    const Party& mParty;
    const std::vector<Getter> mGetters;
    mutable std::mutex mLock;
    std::map<std::string, android::sp<android::hidl::base::V1_0::IBase>> mMade;
};

template <typename Stub>
class WithExtensions : public Stub {
  public:
    WithExtensions(Recorder recorder, Party& party, std::vector<Extensions::Getter> getters)
        : Stub(recorder), mExtensions(party, recorder.iface(), std::move(getters)) {}

    Extensions& extensions() { return mExtensions; }

  protected:
    android::sp<android::hidl::base::V1_0::IBase> provide(const std::string& op) override {
        return mExtensions.fetch(op);
    }

  private:
    Extensions mExtensions;
};

}  // namespace sim
