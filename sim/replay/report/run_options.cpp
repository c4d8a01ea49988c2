#include "run_options.h"

#include "text_escape.h"

namespace replay {
namespace {

std::string seconds(const std::vector<int>& list) {
    std::string text;
    for (int second : list) text += (text.empty() ? "" : ", ") + std::to_string(second);
    return text + " s";
}

std::string daemonPlanText(const RunSettings& settings) {
    if (settings.killAt.empty() && settings.restartAt.empty()) return "daemon never killed";
    std::string text;
    if (!settings.killAt.empty()) text += "daemon killed at " + seconds(settings.killAt);
    if (!settings.restartAt.empty()) {
        text += std::string(text.empty() ? "daemon" : ",") + " registered again at " +
                seconds(settings.restartAt);
    }
    return text;
}

// "5 a second (every 200 ms)", "1 a second (every 1000 ms)", "one every 2 s (every 2000 ms)".
std::string rate(int64_t intervalMs) {
    std::string text;
    if (intervalMs > 0 && 1000 % intervalMs == 0) {
        text = std::to_string(1000 / intervalMs) + " a second";
    } else if (intervalMs % 1000 == 0) {
        text = "one every " + std::to_string(intervalMs / 1000) + " s";
    } else {
        text = "one every " + std::to_string(intervalMs) + " ms";
    }
    return text + " (every " + std::to_string(intervalMs) + " ms)";
}

const char* ruleWords(EpochRule rule) {
    switch (rule) {
        case EpochRule::kUtcTime:
            return "where the UTC time changes";
        case EpochRule::kRepeatedSentence:
            return "where a time-carrying sentence without a time repeats";
        case EpochRule::kLogSecond:
            break;
    }
    return "seconds of the log's clock";
}

}  // namespace

const char* ruleName(EpochRule rule) {
    switch (rule) {
        case EpochRule::kUtcTime:
            return "UTC time";
        case EpochRule::kRepeatedSentence:
            return "repeated sentence";
        case EpochRule::kLogSecond:
            break;
    }
    return "the log's seconds";
}

std::string describeOptions(const ReplayReport& report) {
    const RunSettings& s = report.settings;
    const std::string interval = s.intervalMs < 0
                                     ? std::string("reporting interval of the library")
                                     : "reporting interval " + std::to_string(s.intervalMs) + " ms";
    return oneLine("HAL " + s.hal + ", NMEA " +
                   (s.burst ? "burst (whole epoch as one chunk)" : "per sentence") + ", latency " +
                   std::to_string(s.latencyMs) + " ms, jitter " + std::to_string(s.jitterMs) +
                   " ms, seed " + std::to_string(s.seed) + ", coast " + std::to_string(s.coastMs) +
                   " ms, " + interval + ", " + (s.batching ? "batching" : "no batching") + ", " +
                   daemonPlanText(s));
}

std::string describeEpochs(const ReplayReport& report) {
    std::string text;
    for (EpochRule rule :
         {EpochRule::kUtcTime, EpochRule::kRepeatedSentence, EpochRule::kLogSecond}) {
        const int count = report.epochsCutBy(rule);
        if (count == 0) continue;
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + ruleWords(rule);
    }
    if (text.empty()) return "Epochs: none";
    text = "Epochs: " + text + "; " + rate(report.cut.intervalMs);
    if (!report.cut.cycleEnder.empty()) text += "; the cycle ends with " + report.cut.cycleEnder;
    if (report.cut.timeBreaks > 0) {
        text += "; " + std::to_string(report.cut.timeBreaks) +
                (report.cut.timeBreaks == 1 ? " break" : " breaks") + " in time";
    }
    return oneLine(text);
}

}  // namespace replay
