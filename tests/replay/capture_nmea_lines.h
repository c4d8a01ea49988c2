// Sentences and captures for the capture tests.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "capture/capture.h"

namespace capture_test {

// "$body*hh" with the checksum a receiver would append.
inline std::string nmea(const std::string& body) {
    unsigned sum = 0;
    for (char c : body) sum ^= static_cast<unsigned char>(c);
    char hex[4];
    std::snprintf(hex, sizeof(hex), "*%02X", sum);
    return "$" + body + hex;
}

inline replay::Epoch epochOf(std::vector<std::string> lines) {
    replay::Epoch epoch;
    epoch.lines = std::move(lines);
    return epoch;
}

inline std::string capturePath(const std::string& name) {
    return std::string(ZD_CAPTURE_DIR) + "/" + name;
}

}  // namespace capture_test
