// Capture of log lines through liblog's logger hook.
#include "log_capture.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include "transcript.h"

namespace sim {
namespace {

TEST(LogCaptureTest, PriorityLettersAndEscaping) {
    EXPECT_EQ(logLine(ANDROID_LOG_VERBOSE, "v"), "log V v");
    EXPECT_EQ(logLine(ANDROID_LOG_DEBUG, "d"), "log D d");
    EXPECT_EQ(logLine(ANDROID_LOG_FATAL, "f"), "log F f");
    EXPECT_EQ(logLine(ANDROID_LOG_SILENT, "s"), "log 8 s");
    EXPECT_EQ(logLine(ANDROID_LOG_INFO, "a\\b\nc\td\x7f\"e\xc3\xa9 "),
              "log I a\\\\b\\nc\\x09d\\x7f\"e\xc3\xa9 ");
}

TEST(LogCaptureTest, LibraryLinesReachTheTranscriptDebugIncluded) {
    Transcript::get().setEcho(false);
    startLogCapture();
    Transcript::get().takeSegment();
    __android_log_print(ANDROID_LOG_DEBUG, "tag", "%s: value %d", "Prefix", 5);
    __android_log_print(ANDROID_LOG_VERBOSE, "tag", "quiet");
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "end ");
    EXPECT_EQ(Transcript::get().takeSegment(),
              (std::vector<std::string>{"log D Prefix: value 5", "log V quiet", "log E end "}));
}

}  // namespace
}  // namespace sim
