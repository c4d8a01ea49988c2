// Host-only control of the platform seams that the library reaches through
// plain platform calls (usleep, fopen of the device-tree file, properties).
#pragma once

#include <unistd.h>

#include <functional>
#include <string>

namespace zdhost {
namespace platform {

constexpr const char* kBatchingChannelPath = "/proc/device-tree/gps_power/batching,channel_type";

// Called for every usleep the library makes. The default records nothing and
// returns at once: library pauses run on virtual time.
void setSleepHook(std::function<void(useconds_t)> hook);
// Sleeps for real (for measurements that want the device's pauses).
void realSleep(useconds_t micros);

// Host file opened in place of the batching-channel device-tree file;
// an empty path makes the device-tree file absent (fopen fails).
void setBatchingChannelFile(const std::string& hostPath);

// System properties, as property_get reads them. An empty value reads as unset.
void setProperty(const std::string& name, const std::string& value);

}  // namespace platform
}  // namespace zdhost
