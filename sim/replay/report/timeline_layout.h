// Where things go in the timeline picture: one 14 px row per second, top to bottom, and
// fixed columns (lanes) across it. The column titles repeat above every minute of rows.
#pragma once

#include <ostream>

#include "replay_report.h"

namespace replay::timeline {

constexpr int kMargin = 10;
constexpr int kRowHeight = 14;
constexpr int kBaseline = 11;  // of text within a row
constexpr int kRowsPerBlock = 60;
constexpr int kColumnTitleHeight = 18;

constexpr int kIndexEnd = 48;  // right edge of the second's index
constexpr int kUtcX = 56;
constexpr int kSourceX = 118;
constexpr int kSourceWidth = 64;
constexpr int kFusedX = 190;
constexpr int kDropX = 238;
constexpr int kSatellitesX = 292;
constexpr int kSatelliteWidth = 5;    // bar length per satellite
constexpr int kSatellitesDrawn = 24;  // longer bars are cut; the numbers beside them are not
constexpr int kPaddingThreshold = 4;  // fewer used satellites than this get padded
constexpr int kSatelliteNumbersX = kSatellitesX + kSatellitesDrawn * kSatelliteWidth + 6;
constexpr int kRmcX = 480;
constexpr int kRmcWidth = 60;
constexpr int kDaemonX = 550;
constexpr int kDaemonWidth = 12;
constexpr int kEventsX = 568;
constexpr int kRejectedX = 746;
constexpr int kRejectedCharacters = 42;
constexpr int kSkippedX = 1040;
constexpr int kWidth = 1100;

// Top of the row of epoch `index` when the rows start at `rowsTop`.
inline int rowTop(int rowsTop, int index) {
    return rowsTop + (index / kRowsPerBlock + 1) * kColumnTitleHeight + index * kRowHeight;
}

// Title, options, totals and legend; returns the y at which the rows start.
int writeHeading(const ReplayReport& report, std::ostream& out);
// The column titles above a block of rows whose first row starts at y + kColumnTitleHeight.
void writeColumnTitles(int y, std::ostream& out);
// The dashed line at the padding threshold down a block of `rows` rows starting at y.
void writeThresholdLine(int y, int rows, std::ostream& out);
// One <g class="epoch"> row.
void writeEpochRow(const EpochRecord& epoch, int y, std::ostream& out);

}  // namespace replay::timeline
