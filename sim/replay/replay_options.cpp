#include "replay_options.h"

#include <cerrno>
#include <cstdlib>

namespace replay {

const char kReplayUsage[] =
    "usage: zdgnss-sim replay CAPTURE [options]\n"
    "  Replays a receiver's NMEA capture through the library, one output cycle per second,\n"
    "  or a phone's GnssLogger/GPSTest log (and the .nmea file beside it) on the log's own\n"
    "  clock, against a stand-in fusion daemon, and prints a summary of what reached the\n"
    "  framework.\n"
    "  --hal 1.0|2.0        satellite records and location type of the GNSS HAL (2.0)\n"
    "  --burst              hand each cycle to the NMEA feed as one chunk, not per sentence\n"
    "  --latency MS         fused location follows the fix by MS (200)\n"
    "  --jitter MS          +-MS drawn around the latency for each report (0)\n"
    "  --seed N             seed of the jitter draws (1)\n"
    "  --coast MS           fused locations continue MS after the last fix (3000)\n"
    "  --interval MS        reporting interval set after the GPS start (library default)\n"
    "  --no-batching        the provider runs no batching (nothing to replay on restart)\n"
    "  --kill-at S          the daemon dies at the start of second S (repeatable)\n"
    "  --restart-at S       the daemon registers again at the start of second S (repeatable)\n"
    "  --transcript         print every event, as a scenario run does\n"
    "  --no-summary         print no summary table\n"
    "  --svg FILE           write the timeline picture to FILE\n";

namespace {

bool parseNumber(const std::string& text, int64_t low, int64_t high, int64_t* value) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    long long parsed = strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || parsed < low || parsed > high) return false;
    *value = parsed;
    return true;
}

constexpr int64_t kMaxMs = 24LL * 3600 * 1000;
constexpr int64_t kMaxSecond = 10 * 1000 * 1000;

}  // namespace

bool parseReplayOptions(const std::vector<std::string>& words, ReplayOptions* options,
                        std::string* error) {
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool hasValue = i + 1 < words.size();
        const std::string value = hasValue ? words[i + 1] : std::string();
        int64_t number = 0;
        auto numeric = [&](int64_t low, int64_t high) {
            if (!hasValue || !parseNumber(value, low, high, &number)) {
                *error = word + " takes a number from " + std::to_string(low) + " to " +
                         std::to_string(high);
                return false;
            }
            ++i;
            return true;
        };
        if (word == "--hal") {
            if (value != "1.0" && value != "2.0") {
                *error = "--hal takes 1.0 or 2.0";
                return false;
            }
            options->hal = value;
            ++i;
        } else if (word == "--burst") {
            options->burst = true;
        } else if (word == "--latency") {
            if (!numeric(0, kMaxMs)) return false;
            options->latencyMs = number;
        } else if (word == "--jitter") {
            if (!numeric(0, kMaxMs)) return false;
            options->jitterMs = number;
        } else if (word == "--seed") {
            if (!numeric(0, UINT32_MAX)) return false;
            options->seed = static_cast<uint32_t>(number);
        } else if (word == "--coast") {
            if (!numeric(0, kMaxMs)) return false;
            options->coastMs = number;
        } else if (word == "--interval") {
            if (!numeric(INT32_MIN, INT32_MAX)) return false;
            options->intervalMs = number;
        } else if (word == "--no-batching") {
            options->batching = false;
        } else if (word == "--kill-at" || word == "--restart-at") {
            if (!numeric(0, kMaxSecond)) return false;
            (word == "--kill-at" ? options->killAt : options->restartAt)
                .push_back(static_cast<int>(number));
        } else if (word == "--transcript") {
            options->transcript = true;
        } else if (word == "--no-summary") {
            options->summary = false;
        } else if (word == "--svg") {
            if (!hasValue) {
                *error = "--svg takes a file name";
                return false;
            }
            options->svgPath = value;
            ++i;
        } else if (word.size() > 1 && word[0] == '-') {
            *error = "unknown option " + word;
            return false;
        } else if (!options->capture.empty()) {
            *error = "one capture at a time";
            return false;
        } else {
            options->capture = word;
        }
    }
    if (options->capture.empty()) {
        *error = "no capture given";
        return false;
    }
    return true;
}

}  // namespace replay
