// Reading the file `zdgnss-sim replay` is given: a receiver's NMEA capture or a phone's
// GnssLogger/GPSTest log (with the .nmea file of the same name beside it, if there is one).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "feed_epochs.h"
#include "phone_log.h"

namespace replay {

enum class CaptureFormat { kNmea, kPhoneLog, kNeither };

// A phone log by its header; an NMEA capture when some line is a sentence: '$' or '!', then
// an address of letters and digits ending in ',' or '*' or the line's end.
CaptureFormat detectFormat(const std::string& text);

struct ReplayInput {
    CaptureFormat format = CaptureFormat::kNeither;
    std::vector<FeedEpoch> epochs;
    EpochCut cut;
    int sentences = 0;                       // NMEA sentences or rows
    std::optional<PhoneLogCounts> phoneLog;  // what the log held, for a phone log
    std::vector<std::string> warnings;       // what the user may not expect, one line each
};

// Replay time at which a run of this input ends: one interval after its last epoch starts.
int64_t runEndMs(const ReplayInput& input);

// The text of an NMEA capture or a phone log (and its .nmea file's text) as the replay
// feeds it. False, with *error one line, for text of neither format.
bool readReplayInput(const std::string& text, const std::string& nmeaText, bool burst,
                     ReplayInput* input, std::string* error);

// The same from files. False, with *error one line, when the path is not a readable regular
// file or the file is of neither format.
bool readReplayFile(const std::string& path, bool burst, ReplayInput* input, std::string* error);

}  // namespace replay
