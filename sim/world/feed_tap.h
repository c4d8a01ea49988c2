// What the fake daemon's GNSS interface passes on to a listener: the feed calls it takes
// in, so that a stand-in location engine can answer fixes with fused locations.
#pragma once

#include <android/hardware/gnss/1.0/types.h>
#include <hidl/Status.h>

#include <atomic>
#include <cstdint>
#include <utility>

#include "recorder.h"

namespace sim {

class FeedListener {
  public:
    virtual ~FeedListener() = default;
    virtual void onLocationData(const android::hardware::gnss::V1_0::GnssLocation& location) = 0;
    virtual void onNmeaUpdate(bool rmcValid, int64_t timestamp) = 0;
    virtual void onSvStatus(uint32_t count) = 0;
};

// Wraps a GNSS-interface fake: each feed call is recorded as before, then, when it went
// through, told to the listener the owner currently names.
template <typename Base>
class FeedTap : public Base {
  public:
    template <typename... Rest>
    FeedTap(Recorder recorder, const std::atomic<FeedListener*>& listener, Rest&&... rest)
        : Base(std::move(recorder), std::forward<Rest>(rest)...), mListener(listener) {}

    android::hardware::Return<void> sendLocationData(
        const android::hardware::gnss::V1_0::GnssLocation& location) override {
        auto result = Base::sendLocationData(location);
        FeedListener* listener = mListener.load();
        if (result.isOkUnchecked() && listener != nullptr) listener->onLocationData(location);
        return result;
    }
    android::hardware::Return<void> sendNmeaUpdate(bool rmcValid, int64_t timestamp) override {
        auto result = Base::sendNmeaUpdate(rmcValid, timestamp);
        FeedListener* listener = mListener.load();
        if (result.isOkUnchecked() && listener != nullptr)
            listener->onNmeaUpdate(rmcValid, timestamp);
        return result;
    }
    android::hardware::Return<void> sendSvStatus(uint32_t count) override {
        auto result = Base::sendSvStatus(count);
        FeedListener* listener = mListener.load();
        if (result.isOkUnchecked() && listener != nullptr) listener->onSvStatus(count);
        return result;
    }

  private:
    const std::atomic<FeedListener*>& mListener;
};

}  // namespace sim
