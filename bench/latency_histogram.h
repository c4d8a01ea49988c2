// Call latencies in nanoseconds, counted in one-nanosecond buckets up to 100 µs;
// longer calls land in the last bucket.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace bench {

class LatencyHistogram {
  public:
    static constexpr int64_t kLimitNs = 100000;

    void add(int64_t ns) {
        ++mBuckets[static_cast<size_t>(std::clamp<int64_t>(ns, 0, kLimitNs))];
        ++mCount;
    }

    uint64_t count() const { return mCount; }

    // The smallest latency that at least `fraction` of the calls did not exceed.
    int64_t percentile(double fraction) const {
        uint64_t wanted = static_cast<uint64_t>(std::ceil(fraction * static_cast<double>(mCount)));
        uint64_t seen = 0;
        for (size_t ns = 0; ns < mBuckets.size(); ++ns) {
            seen += mBuckets[ns];
            if (seen >= wanted && seen > 0) return static_cast<int64_t>(ns);
        }
        return 0;
    }

  private:
    std::vector<uint64_t> mBuckets = std::vector<uint64_t>(kLimitNs + 1, 0);
    uint64_t mCount = 0;
};

}  // namespace bench
