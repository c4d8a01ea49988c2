// Checksums, skip reasons and lines that are not proper NMEA.
#include <gtest/gtest.h>

#include "capture/capture.h"
#include "capture/nmea_sentence.h"
#include "capture_nmea_lines.h"

namespace {

using capture_test::epochOf;
using capture_test::nmea;
using replay::SentenceCheck;

// Taken from the captures, checksums as the receivers sent them.
const char kRealRmc[] = "$GPRMC,095304.802,A,2712.6520,S,15303.1397,E,0.00,133.96,080407,,,A*78";
const char kRealGsv[] = "$GLGSV,3,3,10,86,73,244,23,87,16,229,30*6F";

TEST(CaptureSentence, ChecksumsAreVerified) {
    EXPECT_EQ(replay::parseSentence(kRealRmc).check, SentenceCheck::Ok);
    EXPECT_EQ(replay::parseSentence(kRealGsv).check, SentenceCheck::Ok);
    EXPECT_EQ(replay::parseSentence("$GPGGA,,,,,,0,,,,M,,M,,*66").check, SentenceCheck::Ok);
    EXPECT_EQ(replay::parseSentence("$GLGSV,3,3,10,86,73,244,23,87,16,229,30*6f").check,
              SentenceCheck::Ok);

    std::string flipped = kRealRmc;
    flipped[10] = '5';  // one digit of the time changed, checksum kept
    EXPECT_EQ(replay::parseSentence(flipped).check, SentenceCheck::BadChecksum);
    EXPECT_EQ(replay::parseSentence("$GLGSV,3,3,10,86,73,244,23,87,16,229,30*6E").check,
              SentenceCheck::BadChecksum);
    EXPECT_EQ(replay::parseSentence("$GLGSV,3,3,10,86,73,244,23,87,16,229,30*6").check,
              SentenceCheck::BadChecksum);
    EXPECT_EQ(replay::parseSentence("$GLGSV,3,3,10,86,73,244,23,87,16,229,30*").check,
              SentenceCheck::BadChecksum);
    EXPECT_EQ(replay::parseSentence("$GLGSV,3,3,10,86,73,244,23,87,16,229,30*G0").check,
              SentenceCheck::BadChecksum);
    EXPECT_EQ(replay::parseSentence("$GLGSV,3,3,10,86,73,244,23,87,16,229,30").check,
              SentenceCheck::NoChecksum);
    EXPECT_EQ(replay::parseSentence("$POLYN,EPH,0,00000000").check, SentenceCheck::NoChecksum);
}

TEST(CaptureSentence, AddressAndFields) {
    replay::NmeaSentence rmc = replay::parseSentence(kRealRmc);
    EXPECT_EQ(rmc.talker, "GP");
    EXPECT_EQ(rmc.type, "RMC");
    ASSERT_EQ(rmc.fields.size(), 12u);
    EXPECT_EQ(rmc.field(0), "095304.802");
    EXPECT_EQ(rmc.field(11), "A");
    EXPECT_EQ(rmc.field(12), "");  // past the end reads as empty

    replay::NmeaSentence proprietary = replay::parseSentence("$PMTK010,001*2E");
    EXPECT_EQ(proprietary.check, SentenceCheck::Ok);
    EXPECT_TRUE(proprietary.proprietary);
    EXPECT_FALSE(proprietary.is("RMC"));
}

// Each skipped line is counted under exactly one reason; what can be decoded is not counted.
TEST(CaptureSentence, DecoderCountsEachSkippedLineOnce) {
    replay::EpochDecoder decoder;
    replay::EpochContent content = decoder.decode(epochOf({
        kRealRmc,
        "$GPRMC,095304.802,A,2712.6520,S,15303.1397,E,0.00,133.96,080407,,,A*79",
        "$GPRMC,095304.802,A,2712.6520,S,15303.1397,E,0.00,133.96,080407,,,A",
        "$PMTK010,001*2E",
        "$POLYN,TIME,RESTART_OCCURRED",  // proprietary and without checksum: no checksum
        "GPRMC,095304.802,A*00",
        "$,A,B*00",
        "# a comment",
    }));
    EXPECT_EQ(content.skipped.badChecksum, 1);
    EXPECT_EQ(content.skipped.noChecksum, 2);
    EXPECT_EQ(content.skipped.proprietary, 1);
    EXPECT_EQ(content.skipped.unreadable, 3);
    EXPECT_EQ(content.skipped.emptyFields, 0);
    EXPECT_TRUE(content.hasFix);

    replay::EpochContent corrupted = decoder.decode(epochOf({
        "$GPRMC,095304.802,A,2712.6520,S,15303.1397,E,0.00,133.96,080407,,,A*79",
    }));
    EXPECT_FALSE(corrupted.hasFix);

    replay::SkipCounts total = content.skipped;
    total += corrupted.skipped;
    EXPECT_EQ(total.badChecksum, 2);
    EXPECT_EQ(total.unreadable, 3);
}

// Truncated and odd lines with valid checksums reach the field readers; none may read past
// its line (the sanitizer builds check that) or yield a fix or satellite from nonsense.
TEST(CaptureSentence, GarbageNeverDecodesIntoData) {
    const std::vector<std::string> garbage = {
        "",
        "$",
        "!",
        "$*",
        "$GP*17",
        nmea("GPRMC"),
        nmea("GPRMC,"),
        nmea("GPRMC,1,A"),
        nmea("GPRMC,12345,A,1,N,1,E,,,010100"),
        nmea("GPRMC,123456,A,9100.00,N,00000.00,E,,,010100"),
        nmea("GPRMC,123456,A,4916.45,X,12311.12,W,,,010100"),
        nmea("GPRMC,123456,A,4916.45,N,18100.00,E,,,010100"),
        nmea("GPRMC,123456,A,-4916.45,N,12311.12,W,,,010100"),
        nmea("GPRMC,253456,A,4916.45,N,12311.12,W,,,010100"),
        nmea("GPRMC,123456,A,4916.45,N,12311.12,W,,,320100"),
        nmea("GPRMC,123456,A,nan,N,inf,W,,,010100"),
        nmea("GPGGA,123456,4916.45,N"),
        nmea("GPGGA,123456,4916.45,N,12311.12,W,x"),
        nmea("GPGSV"),
        nmea("GPGSV,1,1"),
        nmea("GPGSV,1,1,01,05"),
        nmea("GPGSV,1,1,01,-5,10,20,30"),
        nmea("GPGSV,1,1,01,99999999999,10,20,30"),
        nmea("GNGSA,A,3,07"),
        nmea("GNGSA"),
        "$GPGSV,1,1,01,05,10,20,30*" + std::string(3, '\xff'),
        std::string("$GPRMC\0,1*00", 12),
        std::string(5000, ','),
    };
    for (const std::string& line : garbage) {
        SCOPED_TRACE(line);
        replay::EpochContent content = replay::EpochDecoder().decode(epochOf({line}));
        EXPECT_FALSE(content.hasFix);
        EXPECT_TRUE(content.satellites.empty());
    }
    replay::Capture all = replay::splitCapture([&] {
        std::string text;
        for (const std::string& line : garbage) text += line + "\r\n";
        return text;
    }());
    // "" is blank and the commas are no sentence.
    EXPECT_EQ(all.sentenceCount, static_cast<int>(garbage.size()) - 2);
    EXPECT_EQ(all.linesNotNmea, 1);
}

}  // namespace
