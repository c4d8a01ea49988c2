// Chipset type from the connectivity properties, and the batching channel from
// the device tree.
#include <cutils/properties.h>
#include <log/log.h>

#include <cstdio>
#include <cstring>

#include "module_state.h"

namespace {

struct ChipRow {
    const char* prefix;
    size_t bytes;
    int32_t type;
    bool supportsGeofence;
    bool flagsFromChipset;
};

// First match wins; "vk7702a" must be tested before "vk7702".
constexpr ChipRow kChipTable[] = {
    {"vk7705", 6, 1, true, true},
    {"vk7703", 6, 2, true, true},
    {"vk7702a", 7, 3, false, true},
    {"vk7702", 6, 4, false, false},
};
constexpr ChipRow kUnknownChip = {"", 0, 0, false, false};
constexpr int32_t kSlaveChipType = 5;
constexpr const char* kChannelPath = "/proc/device-tree/gps_power/batching,channel_type";

const ChipRow& matchChip(const char* value) {
    for (const ChipRow& row : kChipTable) {
        if (memcmp(value, row.prefix, row.bytes) == 0) return row;
    }
    return kUnknownChip;
}

// What one probe finds: the flags are worked out whole, then published, so that a reader
// on another thread (a reconnection probes again on a hwbinder thread) sees each flag as
// it was before the probe or as it is after, never the connectivity chip's value that the
// slave chip then overrides.
struct ChipFlags {
    int32_t type;
    bool supportsGeofence;
    bool flagsFromChipset;
};

ChipFlags flagsOf(const ChipRow& row) {
    return {row.type, row.supportsGeofence, row.flagsFromChipset};
}

ChipFlags probeConnectivityChip() {
    char value[PROPERTY_VALUE_MAX];
    memset(value, 0, sizeof(value));
    if (property_get("ro.connectivity.sub_chiptype", value, nullptr) < 1) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get chipset type failed", kLogPrefix);
        return flagsOf(kUnknownChip);
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: get chipset type successful, type is %s",
                        kLogPrefix, value);
    return flagsOf(matchChip(value));
}

void probeSlaveChip(ChipFlags* flags) {
    char slave[PROPERTY_VALUE_MAX];
    memset(slave, 0, sizeof(slave));
    if (property_get("ro.boot.odm.conn.slave_chiptype", slave, nullptr) < 1) return;
    if (memcmp(slave, "vk7702a", 7) == 0) {
        flags->flagsFromChipset = true;
        flags->type = kSlaveChipType;
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                        "%s: get slavechip chipset type successful, type is %s %d", kLogPrefix,
                        slave, flags->type);
}

void publish(const ChipFlags& flags) {
    g_chipSupportsGeofence = flags.supportsGeofence;
    g_chipsetType = flags.type;
    g_flagsFromChipset = flags.flagsFromChipset;
}

}  // namespace

void checkChipsetType() {
    ChipFlags flags = probeConnectivityChip();
    probeSlaveChip(&flags);
    publish(flags);
}

int32_t getChipsetType() {
    return g_chipsetType;
}

void checkBatchingChannelType() {
    FILE* file = fopen(kChannelPath, "r");
    if (file == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: can not open [%s], batching use default channel", kLogPrefix,
                            kChannelPath);
        return;
    }
    __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: [gps_jni]Open %s success!\n", kLogPrefix,
                        kChannelPath);
    char text[31];
    memset(text, 0, sizeof(text));
    size_t read = fread(text, 1, 30, file);
    if (read == 0) {
        __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "%s: [gps_jni]Error! Read %s fail.",
                            kLogPrefix, kChannelPath);
        fclose(file);
        return;
    }
    text[read] = '\0';
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "%s: [gps_jni] batching channel [%s].",
                        kLogPrefix, text);
    if (strstr(text, "sensorhub") != nullptr) {
        __android_log_print(ANDROID_LOG_INFO, LOG_TAG,
                            "%s: [gps_jni] batching channel is sensorhub.", kLogPrefix);
        g_batchingChannelType = 1;
    }
    if (fclose(file) != 0) __android_log_print(ANDROID_LOG_ERROR, LOG_TAG, "fclose fail.");
}

uint8_t getBatchingChannelType() {
    return g_batchingChannelType;
}
