#include "capture.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace replay {

SkipCounts& SkipCounts::operator+=(const SkipCounts& other) {
    badChecksum += other.badChecksum;
    noChecksum += other.noChecksum;
    emptyFields += other.emptyFields;
    proprietary += other.proprietary;
    unreadable += other.unreadable;
    return *this;
}

bool readCapture(const std::string& path, Capture* capture, std::string* error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        *error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (file.bad()) {
        *error = "cannot read " + path;
        return false;
    }
    *capture = splitCapture(text);
    return true;
}

}  // namespace replay
