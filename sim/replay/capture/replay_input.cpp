#include "replay_input.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace replay {
namespace {

bool readText(const std::string& path, std::string* text, std::string* error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        *error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    text->assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (file.bad()) {
        *error = "cannot read " + path;
        return false;
    }
    return true;
}

bool hasNmeaLine(const std::string& text) {
    size_t start = 0;
    while (start < text.size()) {
        const size_t first = text.find_first_not_of(" \t\r\n", start);
        if (first == std::string::npos) return false;
        if (text[first] == '$' || text[first] == '!') return true;
        start = text.find('\n', first);
        if (start == std::string::npos) return false;
    }
    return false;
}

// "dir/log.txt" -> "dir/log.nmea"; "" for a file that is itself a .nmea file.
std::string nmeaFileBeside(const std::string& path) {
    const size_t slash = path.rfind('/');
    const size_t dot = path.rfind('.');
    const bool hasExtension =
        dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const std::string stem = hasExtension ? path.substr(0, dot) : path;
    if (hasExtension && path.substr(dot) == ".nmea") return "";
    return stem + ".nmea";
}

}  // namespace

CaptureFormat detectFormat(const std::string& text) {
    if (looksLikePhoneLog(text)) return CaptureFormat::kPhoneLog;
    if (hasNmeaLine(text)) return CaptureFormat::kNmea;
    return CaptureFormat::kNeither;
}

bool readReplayInput(const std::string& text, const std::string& nmeaText, bool burst,
                     ReplayInput* input, std::string* error) {
    input->format = detectFormat(text);
    if (input->format == CaptureFormat::kNmea) {
        const Capture capture = splitCapture(text);
        input->seconds = feedSeconds(capture, burst);
        input->sentences = capture.sentenceCount;
        return true;
    }
    if (input->format == CaptureFormat::kPhoneLog) {
        const PhoneLog log = parsePhoneLog(text, nmeaText);
        input->seconds = feedSeconds(log, burst);
        input->sentences = 0;
        for (const PhoneEvent& event : log.events) {
            input->sentences += event.kind == PhoneEvent::Kind::kNmea;
        }
        input->phoneLog = log.counts;
        return true;
    }
    *error = "neither an NMEA capture nor a GnssLogger or GPSTest log";
    return false;
}

bool readReplayFile(const std::string& path, bool burst, ReplayInput* input, std::string* error) {
    std::string text;
    if (!readText(path, &text, error)) return false;
    std::string nmeaText;
    if (detectFormat(text) == CaptureFormat::kPhoneLog) {
        const std::string nmeaPath = nmeaFileBeside(path);
        std::ifstream probe(nmeaPath, std::ios::binary);
        if (!nmeaPath.empty() && probe && !readText(nmeaPath, &nmeaText, error)) return false;
    }
    if (!readReplayInput(text, nmeaText, burst, input, error)) {
        *error = path + ": " + *error;
        return false;
    }
    return true;
}

}  // namespace replay
