// Shared pieces of the fuzz targets: the embedded world the library runs in, a
// reader that turns fuzz bytes into call arguments, the transcript of one input,
// and the checks that stop the run on a broken invariant.
#pragma once

#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/types.h>
#include <world/feed_tap.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace fuzz {

// Once per process: the fake fusion daemon registered and connected (fusionD_init),
// the framework's callbacks registered, the feed calls of the daemon recorded.
void startWorld();
// Once per process, after startWorld(): the vendor GNSS HAL 2.0 registered, handed
// out and its AGNSS RIL extension fetched, so NI messages reach a RIL.
void connectVendorHal();
// Registers the framework's callbacks, or empty ones.
void registerFramework(bool gnss, bool geofence, bool fenceClient);
// Sets the chip properties to one of a fixed set of chips and runs the chipset probe.
void selectChip(uint8_t selector);
// Runs a knob command of a party of the world ("vhal", "fail", "OP", "once").
void worldCommand(const std::string& party, const std::vector<std::string>& words);

// Takes fixed-width values from the front of the input; once it runs dry every
// value reads as zero.
class ByteReader {
  public:
    ByteReader(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    template <typename T>
    T take() {
        T value{};
        size_t n = mSize - mPos < sizeof(T) ? mSize - mPos : sizeof(T);
        if (n > 0) memcpy(&value, mData + mPos, n);
        mPos += n;
        return value;
    }
    const uint8_t* rest() const { return mData + mPos; }
    size_t remaining() const { return mSize - mPos; }

  private:
    const uint8_t* mData;
    size_t mSize;
    size_t mPos = 0;
};

// One 1.0 satellite entry from 20 input bytes: svid (i16), constellation (u8), flags
// (u8), then cN0, elevation, azimuth and carrier frequency (f32 each).
android::hardware::gnss::V1_0::IGnssCallback::GnssSvInfo readSvInfo(ByteReader& in);

// Starts the world if needed and brings the augmentation back to its resting state:
// a report with four used GPS satellites, a plain location decoded and padded
// against it, the location flags reset, the transcript of that dropped. Every
// satellite input starts from there, so it replays alone.
void startSatelliteInput();

// Lists and messages of thousands of entries take milliseconds to seconds each to
// deliver and print. A count reaches its full range only when the input's scale
// byte is the bulk value (0xB7), which mutations rarely produce: the fuzzer spends
// its time around the library's thresholds, and the bulk seeds still run in the
// corpus tests. The comparison sits in this uninstrumented harness so that the
// fuzzer's comparison tracing does not learn the value.
uint32_t scaledCount(uint8_t scale, uint32_t raw, uint32_t fullRange, uint32_t smallRange);

// The feed calls the fake daemon took in since the last clear().
struct FeedLog : sim::FeedListener {
    struct Nmea {
        bool rmcValid;
        int64_t timestamp;
    };
    std::vector<Nmea> nmea;
    std::vector<uint32_t> svCounts;

    void onLocationData(const android::hardware::gnss::V1_0::GnssLocation&) override {}
    void onNmeaUpdate(bool rmcValid, int64_t timestamp) override {
        nmea.push_back({rmcValid, timestamp});
    }
    void onSvStatus(uint32_t count) override { svCounts.push_back(count); }
    void clear() {
        nmea.clear();
        svCounts.clear();
    }
};
FeedLog& feedLog();

// The transcript lines since the previous call, after the runtime's pool went idle.
// Every input takes its lines, so the transcript never grows across inputs.
std::vector<std::string> takeLines();
size_t countStartingWith(const std::vector<std::string>& lines, const std::string& prefix);
// The lines that start with `prefix`, with the prefix removed.
std::vector<std::string> tailsAfter(const std::vector<std::string>& lines,
                                    const std::string& prefix);
bool contains(const std::vector<std::string>& lines, const std::string& text);
bool hasLine(const std::vector<std::string>& lines, const std::string& line);

// Prints what broke, with the input's transcript, and aborts so that the fuzzer
// saves the input.
[[noreturn]] void fail(const char* condition, const std::string& detail,
                       const std::vector<std::string>& lines);

}  // namespace fuzz

#define FUZZ_CHECK(condition, detail, lines)                           \
    do {                                                               \
        if (!(condition)) ::fuzz::fail(#condition, (detail), (lines)); \
    } while (0)
