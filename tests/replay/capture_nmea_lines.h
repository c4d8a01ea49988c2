// Sentences and captures for the capture tests.
#pragma once

#include <cstdio>
#include <fstream>
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

inline replay::Cycle cycleOf(std::vector<std::string> lines) {
    return replay::Cycle{std::move(lines)};
}

inline std::string capturePath(const std::string& name) {
    return std::string(ZD_CAPTURE_DIR) + "/" + name;
}

// The capture's non-blank lines without their line ends, read without the code under test.
inline std::vector<std::string> nonBlankLines(const std::string& name) {
    std::ifstream file(capturePath(name), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

}  // namespace capture_test
