// Capture of the library's log lines through liblog's logger hook.
#include "log_capture.h"

#include <android/log.h>
#include <zdhost/schedule.h>

#include "transcript.h"

namespace sim {

namespace {

void appendEscaped(std::string& out, unsigned char c) {
    static const char kHex[] = "0123456789abcdef";
    if (c == '\\') {
        out += "\\\\";
    } else if (c == '\n') {
        out += "\\n";
    } else if (c < 0x20 || c == 0x7f) {
        out += "\\x";
        out += kHex[c >> 4];
        out += kHex[c & 0xf];
    } else {
        out += static_cast<char>(c);
    }
}

void captureLine(const struct __android_logger_data* data, const char* message) {
    // The point itself touches nothing shared; the line is the thread's own transcript's.
    zdhost::schedule::reach(zdhost::schedule::Point::kLog, nullptr,
                            zdhost::schedule::Access::kNothing);
    Transcript::get().emit(logLine(data->priority, message));
}

}  // namespace

std::string logLine(int priority, const char* message) {
    static const char kLetters[] = "VDIWEF";
    std::string line = "log ";
    if (priority >= ANDROID_LOG_VERBOSE && priority <= ANDROID_LOG_FATAL) {
        line += kLetters[priority - ANDROID_LOG_VERBOSE];
    } else {
        line += std::to_string(priority);
    }
    line += ' ';
    for (const char* p = message ? message : ""; *p; ++p) {
        appendEscaped(line, static_cast<unsigned char>(*p));
    }
    return line;
}

void startLogCapture() {
    __android_log_set_logger(captureLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

}  // namespace sim
