// Where one output cycle ends and the next begins. The real captures are split and counted
// against an independent tally by the replay check (check_replay.py).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "capture/capture.h"
#include "capture_nmea_lines.h"

namespace {

using capture_test::nmea;

std::string joined(const std::vector<std::string>& lines, const char* lineEnd) {
    std::string text;
    for (const std::string& line : lines) text += line + lineEnd;
    return text;
}

std::vector<size_t> cycleSizes(const replay::Capture& capture) {
    std::vector<size_t> sizes;
    for (const replay::Cycle& cycle : capture.cycles) sizes.push_back(cycle.lines.size());
    return sizes;
}

TEST(CaptureSplit, LinesKeptAsSentWithEitherLineEnd) {
    std::string text = "$GPGSV,1,1,00*79\r\n\r\n  \n$GPGGA,,,,,,0,,,,M,,M,,*66\n\n$PX,a b \n";
    replay::Capture capture = replay::splitCapture(text);
    ASSERT_EQ(capture.cycles.size(), 1u);
    EXPECT_EQ(capture.sentenceCount, 3);
    EXPECT_EQ(
        capture.cycles[0].lines,
        (std::vector<std::string>{"$GPGSV,1,1,00*79", "$GPGGA,,,,,,0,,,,M,,M,,*66", "$PX,a b "}));
    EXPECT_TRUE(replay::splitCapture("\r\n\n").cycles.empty());
}

TEST(CaptureSplit, NewTimeStartsACycle) {
    std::vector<std::string> lines = {
        nmea("GPGSV,1,1,01,05,10,20,30"),  // before any time: first cycle
        nmea("GPRMC,120000.00,V,,,,,,,010120,,"),
        nmea("GPGGA,120000.00,,,,,0,,,,,,,,"),  // same second
        nmea("GNZDA,120000.000,01,01,2020,,"),  // same second, written differently
        "$PGLOR,1,FIX,1.0,1.0*20",
        nmea("GPGLL,,,,,120001.00,V"),  // GLL's time is its fifth field
        nmea("GPGGA,120001.00,,,,,0,,,,,,,,"),
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        nmea("GPRMC,120001.00,V,,,,,,,010120,,"),
        nmea("GNGNS,120002.00,,,,,NN,,,,,,"),
        nmea("GPRMC,120002.00,V,,,,,,,010120,,"),
    };
    replay::Capture lf = replay::splitCapture(joined(lines, "\n"));
    EXPECT_EQ(cycleSizes(lf), (std::vector<size_t>{5, 4, 2}));
    EXPECT_EQ(lf.cycles[1].lines.front(), lines[5]);
    replay::Capture crlf = replay::splitCapture(joined(lines, "\r\n"));
    EXPECT_EQ(cycleSizes(crlf), cycleSizes(lf));
    EXPECT_EQ(crlf.cycles[2].lines, lf.cycles[2].lines);
}

TEST(CaptureSplit, RepeatedSentenceStartsACycleWhenTimesAreEmpty) {
    std::vector<std::string> lines = {
        nmea("GPGGA,,,,,,0,,,,M,,M,,"),
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        nmea("GPGSV,2,1,05,15,00,000,,17,00,000,,18,00,000,,19,00,000,"),
        nmea("GPGSV,2,2,05,20,00,000,"),  // GSV, GSA, GRS and GST come several to a cycle
        nmea("GPGSA,A,1,,,,,,,,,,,,,,,"),
        nmea("GPGST,,,,,,,,"),
        nmea("GPGST,,,,,,,,"),
        nmea("GPRMC,,V,,,,,,,,,,N"),
        nmea("GLRMC,,V,,,,,,,,,,N"),  // another talker is another sentence
        "$PMTK010,001*2E",
        "$PMTK010,001*2E",  // proprietary repeats never split
        nmea("GPGGA,,,,,,0,,,,M,,M,,"),
        nmea("GPRMC,,V,,,,,,,,,,N"),
        "$GPGGA,,,,,,0,,,,M,,M,,*00",  // bad checksum: stays where it is
        nmea("GPGGA,083000.00,,,,,0,,,,M,,M,,"),
    };
    replay::Capture capture = replay::splitCapture(joined(lines, "\n"));
    EXPECT_EQ(cycleSizes(capture), (std::vector<size_t>{11, 3, 1}));
}

TEST(CaptureSplit, MissingFileIsReported) {
    replay::Capture capture;
    std::string error;
    EXPECT_FALSE(replay::readCapture(capture_test::capturePath("no-such.log"), &capture, &error));
    EXPECT_NE(error.find("no-such.log"), std::string::npos);
}

}  // namespace
