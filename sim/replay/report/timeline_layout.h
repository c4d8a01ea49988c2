// Where things go in the timeline picture: the heading, an overview of the whole run on a
// time axis (one lane per track), the legend, then the detail: one 14 px row per epoch, top
// to bottom, in columns as wide as their widest content. The column titles repeat above
// every 60 rows. The document is as wide as its widest part.
#pragma once

#include <ostream>
#include <string>

#include "replay_report.h"

namespace replay::timeline {

constexpr int kMargin = 10;
constexpr int kRowHeight = 14;
constexpr int kBaseline = 11;  // of text within a row
constexpr int kRowsPerBlock = 60;
constexpr int kColumnTitleHeight = 18;
constexpr int kSatelliteWidth = 5;    // bar length per satellite
constexpr int kSatellitesDrawn = 24;  // longer bars are cut; the numbers beside them are not
constexpr int kPaddingThreshold = 4;  // fewer used satellites than this get padded
constexpr int kMinimumWidth = 900;

// What a row shows in words, cell by cell; the columns are sized to these.
struct RowTexts {
    std::string index, utc, fused, dropped, satellites, daemonEvents, rejected, skipped;
};
RowTexts rowTexts(const EpochRecord& epoch);

// The detail table's columns: x of each (text starts there, the index ends there) and the
// right edge of the table.
struct Columns {
    int indexEnd = 0, utc = 0, source = 0, fused = 0, drop = 0, satellites = 0,
        satelliteNumbers = 0, rmc = 0, daemon = 0, events = 0, rejected = 0, skipped = 0, right = 0;
};
constexpr int kSourceWidth = 64;
constexpr int kRmcWidth = 60;
constexpr int kDaemonWidth = 12;

Columns columnsFor(const ReplayReport& report);

// Top of the row of epoch `index` when the rows start at `rowsTop`.
inline int rowTop(int rowsTop, int index) {
    return rowsTop + (index / kRowsPerBlock + 1) * kColumnTitleHeight + index * kRowHeight;
}

// "receiver", "fused", "both", "none".
const char* sourceName(Source source);

// Rejections that come with the input rather than a fault: a chunk without $GPRMC (every
// sentence but the RMC when sent one by one, every chunk of a $GN receiver) sends no update.
bool isExpectedRejection(const std::string& reason);

// Widest line of the heading and legend, for the document's width.
int headingWidth(const ReplayReport& report);
// Title, options, epochs, totals; returns the y below it.
int writeHeading(const ReplayReport& report, int y, std::ostream& out);
// The overview of the whole run, `width` wide; returns the y below it.
int writeOverview(const ReplayReport& report, int y, int width, std::ostream& out);
// The legend of both parts; returns the y below it.
int writeLegend(int y, std::ostream& out);
// The column titles above a block of rows whose first row starts at y + kColumnTitleHeight.
void writeColumnTitles(const Columns& columns, int y, std::ostream& out);
// The dashed line at the padding threshold down a block of `rows` rows starting at y.
void writeThresholdLine(const Columns& columns, int y, int rows, std::ostream& out);
// One <g class="epoch"> row.
void writeEpochRow(const EpochRecord& epoch, const Columns& columns, int y, std::ostream& out);

}  // namespace replay::timeline
