#include "replay_input.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "nmea_sentence.h"

namespace replay {
namespace {

bool isRegularFile(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool readText(const std::string& path, std::string* text, std::string* error) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        *error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        *error = path + (S_ISDIR(info.st_mode) ? " is a directory" : " is not a regular file");
        return false;
    }
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

bool hasSentence(const std::string& text) {
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string_view line = std::string_view(text).substr(start, end - start);
        if (parseSentence(line).check != SentenceCheck::Unreadable) return true;
        start = end + 1;
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

int64_t runEndMs(const ReplayInput& input) {
    return input.epochs.empty() ? 0 : input.epochs.back().atMs + input.cut.intervalMs;
}

CaptureFormat detectFormat(const std::string& text) {
    if (looksLikePhoneLog(text)) return CaptureFormat::kPhoneLog;
    if (hasSentence(text)) return CaptureFormat::kNmea;
    return CaptureFormat::kNeither;
}

bool readReplayInput(const std::string& text, const std::string& nmeaText, bool burst,
                     ReplayInput* input, std::string* error) {
    input->format = detectFormat(text);
    if (input->format == CaptureFormat::kNmea) {
        const Capture capture = splitCapture(text);
        input->epochs = feedEpochs(capture, burst);
        input->cut = EpochCut{capture.intervalMs, capture.timeBreaks, capture.cycleEnder,
                              capture.linesNotNmea};
        input->sentences = capture.sentenceCount;
        return true;
    }
    if (input->format == CaptureFormat::kPhoneLog) {
        const PhoneLog log = parsePhoneLog(text, nmeaText);
        input->epochs = feedEpochs(log, burst);
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
    const std::string nmeaPath =
        detectFormat(text) == CaptureFormat::kPhoneLog ? nmeaFileBeside(path) : "";
    const bool nmeaBeside = !nmeaPath.empty() && isRegularFile(nmeaPath);
    if (nmeaBeside && !readText(nmeaPath, &nmeaText, error)) return false;
    if (!readReplayInput(text, nmeaText, burst, input, error)) {
        *error = path + ": " + *error;
        return false;
    }
    if (!nmeaPath.empty() && !nmeaBeside && input->sentences == 0) {
        input->warnings.push_back("the log has no NMEA rows and there is no " + nmeaPath +
                                  " beside it: the NMEA feed gets nothing");
    }
    return true;
}

}  // namespace replay
