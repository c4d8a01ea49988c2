// When each epoch of a capture is replayed.
#pragma once

#include <cstdint>

#include "capture.h"

namespace replay {

// A step in time up to this long is replayed as it is; a longer one, or one back, is a break.
constexpr int64_t kLongestStepMs = 60 * 1000;

// Sets the capture's interval (the most common step forward between consecutive timed
// epochs that is not a break; 1000 ms without one) and each epoch's replay time: the first
// at 0, a timed epoch as far after the last timed one as its UTC time says (across
// midnight too), and an epoch without a time, or one after a break, one interval after the
// epoch before it. Breaks are counted.
void placeEpochs(Capture* capture);

}  // namespace replay
