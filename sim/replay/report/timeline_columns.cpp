// The detail table's columns, each as wide as its widest cell or title.
#include <algorithm>

#include "svg_elements.h"
#include "timeline_layout.h"

namespace replay::timeline {
namespace {

constexpr int kGap = 10;

struct Widths {
    int index = 0, utc = 0, fused = 0, dropped = 0, satellites = 0, events = 0, rejected = 0,
        skipped = 0;
};

Widths widestCells(const ReplayReport& report) {
    Widths w;
    w.index = svg::textWidth("epoch");
    w.utc = svg::textWidth("utc");
    w.fused = svg::textWidth("fused");
    w.satellites = svg::textWidth("used");
    w.events = svg::textWidth("daemon") - kDaemonWidth - 6;
    w.rejected = svg::textWidth("rejected chunks");
    w.skipped = svg::textWidth("skip");
    for (const EpochRecord& epoch : report.epochs) {
        const RowTexts t = rowTexts(epoch);
        w.index = std::max(w.index, svg::textWidth(t.index));
        w.utc = std::max(w.utc, svg::textWidth(t.utc));
        w.fused = std::max(w.fused, svg::textWidth(t.fused));
        w.dropped = std::max(w.dropped, svg::textWidth(t.dropped));
        w.satellites = std::max(w.satellites, svg::textWidth(t.satellites));
        w.events = std::max(w.events, svg::textWidth(t.daemonEvents));
        w.rejected = std::max(w.rejected, svg::textWidth(t.rejected));
        w.skipped = std::max(w.skipped, svg::textWidth(t.skipped));
    }
    return w;
}

}  // namespace

Columns columnsFor(const ReplayReport& report) {
    const Widths w = widestCells(report);
    Columns c;
    c.indexEnd = kMargin + w.index;
    c.utc = c.indexEnd + kGap;
    c.source = c.utc + w.utc + kGap;
    c.fused = c.source + kSourceWidth + kGap;
    c.drop = c.fused + w.fused + kGap;
    c.satellites = c.drop + w.dropped + kGap;
    c.satelliteNumbers = c.satellites + kSatellitesDrawn * kSatelliteWidth + 6;
    c.rmc = c.satelliteNumbers + w.satellites + kGap;
    c.daemon = c.rmc + kRmcWidth + kGap;
    c.events = c.daemon + kDaemonWidth + 6;
    c.rejected = c.events + std::max(w.events, 0) + kGap;
    c.skipped = c.rejected + w.rejected + kGap;
    c.right = c.skipped + w.skipped + kMargin;
    return c;
}

}  // namespace replay::timeline
