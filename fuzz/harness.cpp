#include "harness.h"

#include <log_capture.h>
#include <transcript.h>
#include <world/world.h>
#include <zdgnssprovider.h>
#include <zdhost/platform_control.h>
#include <zdhost/runtime.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace fuzz {

namespace {

using sim::Token;
using sim::World;

constexpr uint8_t kBulkScale = 0xB7;

struct Chip {
    const char* subChip;
    const char* slaveChip;
};

// Chips of both flag layouts, an unknown chip and no chip at all.
constexpr Chip kChips[] = {
    {"", ""},       {"vk7705", ""},        {"vk7703", ""}, {"vk7702a", ""},
    {"vk7702", ""}, {"vk7702", "vk7702a"}, {"zz0000", ""},
};

std::vector<Token> tokens(const std::vector<std::string>& words) {
    std::vector<Token> out;
    for (const std::string& word : words) out.push_back(Token{word, false});
    return out;
}

}  // namespace

void worldCommand(const std::string& party, const std::vector<std::string>& words) {
    std::string error;
    if (!World::get().command(party, tokens(words), &error)) {
        fprintf(stderr, "fuzz harness: world command %s failed: %s\n", party.c_str(),
                error.c_str());
        abort();
    }
    zdhost::pool::drain();
}

FeedLog& feedLog() {
    static FeedLog* log = new FeedLog();  // outlives the runtime's threads at exit
    return *log;
}

void startWorld() {
    static bool started = false;
    if (started) return;
    started = true;
    sim::Transcript::get().setEcho(false);
    sim::startLogCapture();
    World::get().start();
    worldCommand("fusd", {"register"});
    fusionD_init();
    registerFramework(true, true, true);
    World::get().setFeedListener(&feedLog());
    zdhost::pool::drain();
    if (!isFDSupport()) {
        fprintf(stderr, "fuzz harness: the library did not connect to the fake daemon\n");
        abort();
    }
    sim::Transcript::get().takeSegment();
}

void connectVendorHal() {
    static bool connected = false;
    if (connected) return;
    connected = true;
    worldCommand("vhal", {"register", "2.0"});
    android::sp<android::hardware::gnss::V1_0::IGnss> gnss;
    android::sp<android::hardware::gnss::V1_1::IGnss> gnss11;
    android::sp<android::hardware::gnss::V2_0::IGnss> gnss20;
    getZdGnssService(&gnss, &gnss11, &gnss20);
    android::sp<android::hardware::gnss::V1_0::IAGnssRil> ril;
    android::sp<android::hardware::gnss::V2_0::IAGnssRil> ril20;
    android::sp<android::hardware::gnss::V1_0::IGnssNi> ni;
    getZdFeatureExtensionV2_0(&ril, &ril20, &ni);
    zdhost::pool::drain();
    if (ril20 == nullptr) {
        fprintf(stderr, "fuzz harness: no AGNSS RIL 2.0 from the fake vendor HAL\n");
        abort();
    }
    sim::Transcript::get().takeSegment();
}

void registerFramework(bool gnss, bool geofence, bool fenceClient) {
    World& world = World::get();
    registerCallback(gnss ? world.gnssCb() : nullptr, geofence ? world.geofenceCb() : nullptr,
                     fenceClient ? world.corvaneCb() : nullptr);
}

void selectChip(uint8_t selector) {
    const Chip& chip = kChips[selector % std::size(kChips)];
    zdhost::platform::setProperty("ro.connectivity.sub_chiptype", chip.subChip);
    zdhost::platform::setProperty("ro.boot.odm.conn.slave_chiptype", chip.slaveChip);
    checkChipsetType();
}

uint32_t scaledCount(uint8_t scale, uint32_t raw, uint32_t fullRange, uint32_t smallRange) {
    return raw % ((scale == kBulkScale ? fullRange : smallRange) + 1);
}

android::hardware::gnss::V1_0::IGnssCallback::GnssSvInfo readSvInfo(ByteReader& in) {
    android::hardware::gnss::V1_0::IGnssCallback::GnssSvInfo sv{};
    sv.svid = in.take<int16_t>();
    sv.constellation =
        static_cast<android::hardware::gnss::V1_0::GnssConstellationType>(in.take<uint8_t>());
    sv.svFlag = in.take<uint8_t>();
    sv.cN0Dbhz = in.take<float>();
    sv.elevationDegrees = in.take<float>();
    sv.azimuthDegrees = in.take<float>();
    sv.carrierFrequencyHz = in.take<float>();
    return sv;
}

void startSatelliteInput() {
    startWorld();
    using android::hardware::gnss::V1_0::GnssConstellationType;
    using SvFlags = android::hardware::gnss::V1_0::IGnssCallback::GnssSvFlags;
    android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus status{};
    status.numSvs = 4;
    for (uint32_t i = 0; i < status.numSvs; ++i) {
        status.gnssSvList[i].svid = static_cast<int16_t>(i + 1);
        status.gnssSvList[i].constellation = GnssConstellationType::GPS;
        status.gnssSvList[i].svFlag = static_cast<uint8_t>(SvFlags::USED_IN_FIX);
    }
    android::hardware::gnss::V1_0::GnssLocation plain{};
    sendSvInfo(status);
    qttff_location_sourcetype(plain);
    addSvList(plain);
    resetLocationFlag();
    takeLines();
}

std::vector<std::string> takeLines() {
    zdhost::pool::drain();
    return sim::Transcript::get().takeSegment();
}

size_t countStartingWith(const std::vector<std::string>& lines, const std::string& prefix) {
    size_t n = 0;
    for (const std::string& line : lines) n += line.compare(0, prefix.size(), prefix) == 0;
    return n;
}

std::vector<std::string> tailsAfter(const std::vector<std::string>& lines,
                                    const std::string& prefix) {
    std::vector<std::string> tails;
    for (const std::string& line : lines) {
        if (line.compare(0, prefix.size(), prefix) == 0)
            tails.push_back(line.substr(prefix.size()));
    }
    return tails;
}

bool contains(const std::vector<std::string>& lines, const std::string& text) {
    for (const std::string& line : lines) {
        if (line.find(text) != std::string::npos) return true;
    }
    return false;
}

bool hasLine(const std::vector<std::string>& lines, const std::string& line) {
    for (const std::string& candidate : lines) {
        if (candidate == line) return true;
    }
    return false;
}

void fail(const char* condition, const std::string& detail, const std::vector<std::string>& lines) {
    constexpr size_t kShownLines = 200;
    fprintf(stderr, "fuzz check failed: %s\n  %s\n  transcript of the input (%zu lines):\n",
            condition, detail.c_str(), lines.size());
    for (size_t i = 0; i < lines.size() && i < kShownLines; ++i) {
        fprintf(stderr, "    %.300s\n", lines[i].c_str());
    }
    abort();
}

}  // namespace fuzz
