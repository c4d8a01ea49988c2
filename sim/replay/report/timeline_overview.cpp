// The overview: the whole run on one time axis, a lane per track. Neighbouring epochs that
// look the same in a lane are drawn as one stretch, with a tooltip for the stretch.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "svg_elements.h"
#include "timeline_layout.h"

namespace replay::timeline {
namespace {

constexpr int kLaneLabelWidth = 110;
constexpr int kLaneHeight = 16;
constexpr int kLanePitch = kLaneHeight + 5;
constexpr int kAxisHeight = 16;
constexpr int kFullBar = 12;  // used satellites that fill the satellite lane
constexpr int kTickSpacing = 70;

// How one epoch looks in a lane: no class draws nothing; `fill` from 0 to 1 of the height.
struct Look {
    std::string cssClass;
    double fill = 1;
    std::string words;
    bool operator==(const Look& other) const {
        return cssClass == other.cssClass && fill == other.fill && words == other.words;
    }
};

struct Lane {
    const char* name;
    std::function<Look(const EpochRecord&)> look;
};

// The satellite lane shows the list the framework has: an epoch without a new one keeps the
// last.
std::vector<EpochRecord> withListsCarried(const std::vector<EpochRecord>& epochs) {
    std::vector<EpochRecord> carried = epochs;
    int lastBefore = -1, lastAfter = -1;
    bool lastPadded = false;
    for (EpochRecord& e : carried) {
        if (e.usedAfter >= 0 || e.usedBefore >= 0) {
            lastBefore = e.usedBefore, lastAfter = e.usedAfter, lastPadded = e.padded;
        } else {
            e.usedBefore = lastBefore, e.usedAfter = lastAfter, e.padded = lastPadded;
        }
    }
    return carried;
}

std::string clock(int64_t ms) {
    const int64_t s = ms / 1000;
    char text[32];
    if (s >= 3600) {
        std::snprintf(text, sizeof(text), "%d:%02d:%02d", static_cast<int>(s / 3600),
                      static_cast<int>(s / 60 % 60), static_cast<int>(s % 60));
    } else {
        std::snprintf(text, sizeof(text), "%d:%02d", static_cast<int>(s / 60),
                      static_cast<int>(s % 60));
    }
    return text;
}

Look sourceLook(const EpochRecord& e) {
    const std::string name = sourceName(e.source());
    return {"src-" + name, 1, "position from " + name};
}

Look fusedLook(const EpochRecord& e) {
    if (e.fusedDropped > 0) return {"drop", 1, "fused locations dropped by the interval rule"};
    if (e.fusedForwarded > 0) return {"src-fused", 1, "fused locations forwarded"};
    return {};
}

Look satellitesLook(const EpochRecord& e) {
    const int used = e.usedAfter >= 0 ? e.usedAfter : e.usedBefore;
    if (used < 0) return {};
    const double fill = std::max(1, std::min(used, kFullBar)) / static_cast<double>(kFullBar);
    if (e.padded) {
        return {"pad", fill,
                "padded: " + std::to_string(e.usedBefore) + " \u2192 " + std::to_string(used) +
                    " GPS used"};
    }
    return {"used", fill, std::to_string(used) + " GPS used"};
}

Look rmcLook(const EpochRecord& e) {
    if (e.rmcValidTrue > 0 && e.rmcValidFalse > 0)
        return {"rmc-both", 1, "RMC valid true and false"};
    if (e.rmcValidTrue > 0) return {"rmc-true", 1, "RMC valid true"};
    if (e.rmcValidFalse > 0) return {"rmc-false", 1, "RMC valid false"};
    return {};
}

Look rejectedLook(const EpochRecord& e) {
    std::string reasons;
    for (const auto& [reason, count] : e.chunksRejected) {
        if (count > 0 && !isExpectedRejection(reason))
            reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    if (reasons.empty()) return {};
    return {"rej-fault", 1, "rejected: " + reasons};
}

const std::vector<Lane>& lanes() {
    static const std::vector<Lane> all = {
        {"source", sourceLook}, {"fused", fusedLook},       {"satellites", satellitesLook},
        {"RMC valid", rmcLook}, {"rejected", rejectedLook},
    };
    return all;
}

class Scale {
  public:
    Scale(int left, int width, int64_t endMs)
        : mLeft(left), mWidth(width), mEndMs(std::max<int64_t>(endMs, 1)) {}
    double x(int64_t ms) const { return mLeft + static_cast<double>(ms) * mWidth / mEndMs; }
    int64_t endMs() const { return mEndMs; }
    int width() const { return mWidth; }

  private:
    int mLeft;
    int mWidth;
    int64_t mEndMs;
};

int64_t epochEnd(const ReplayReport& report, size_t i) {
    return i + 1 < report.epochs.size() ? report.epochs[i + 1].atMs : report.endMs;
}

void writeLane(const ReplayReport& report, const std::vector<EpochRecord>& epochs, const Lane& lane,
               const Scale& scale, int top, std::ostream& out) {
    svg::text(out, kMargin, top + kLaneHeight - 4, lane.name, "lane");
    svg::rect(out, static_cast<int>(scale.x(0)), top, scale.width(), kLaneHeight, "lane-bg");
    size_t first = 0;
    while (first < epochs.size()) {
        const Look look = lane.look(epochs[first]);
        size_t last = first;
        while (last + 1 < epochs.size() && lane.look(epochs[last + 1]) == look) ++last;
        if (!look.cssClass.empty()) {
            const int64_t from = epochs[first].atMs;
            const int64_t to = epochEnd(report, last);
            const double x = scale.x(from);
            const double height = kLaneHeight * look.fill;
            svg::rect(out, x, top + kLaneHeight - height, std::max(scale.x(to) - x, 0.6), height,
                      look.cssClass,
                      clock(from) + "\u2013" + clock(to) + ": " + look.words + " (" +
                          std::to_string(last - first + 1) + " epochs from " +
                          std::to_string(first) + ")");
        }
        first = last + 1;
    }
}

// The daemon's lane at the moments it died and registered again, not epoch by epoch.
void writeDaemonLane(const ReplayReport& report, const Scale& scale, int top, std::ostream& out) {
    svg::text(out, kMargin, top + kLaneHeight - 4, "daemon", "lane");
    int64_t upFrom = 0;
    const auto up = [&](int64_t toMs) {
        if (toMs <= upFrom) return;
        svg::rect(out, scale.x(upFrom), top, scale.x(toMs) - scale.x(upFrom), kLaneHeight, "up",
                  clock(upFrom) + "\u2013" + clock(toMs) + ": daemon up");
    };
    for (const ReplayReport::Downtime& down : report.downtimes) {
        up(down.fromMs);
        svg::rect(out, scale.x(down.fromMs), top,
                  std::max(scale.x(down.toMs) - scale.x(down.fromMs), 0.6), kLaneHeight, "down",
                  clock(down.fromMs) + "\u2013" + clock(down.toMs) + ": daemon down");
        upFrom = down.toMs;
    }
    up(report.endMs);
    for (const ReplayReport::Downtime& down : report.downtimes) {
        svg::rect(out, static_cast<int>(scale.x(down.fromMs)) - 1, top - 3, 3, kLaneHeight + 6,
                  "died-mark");
        if (down.toMs < report.endMs) {
            svg::rect(out, static_cast<int>(scale.x(down.toMs)) - 1, top - 3, 3, kLaneHeight + 6,
                      "back-mark");
        }
    }
}

int64_t tickStep(int64_t endMs, int width) {
    const int64_t steps[] = {1,   2,   5,    10,   15,   30,    60,    120,   300,
                             600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400};
    const int64_t most = std::max(1, width / kTickSpacing);
    for (int64_t step : steps) {
        if (endMs / (step * 1000) <= most) return step * 1000;
    }
    return 86400 * 1000;
}

void writeAxis(const Scale& scale, int top, std::ostream& out) {
    const int bottom = top + kAxisHeight;
    const int64_t step = tickStep(scale.endMs(), scale.width());
    svg::line(out, static_cast<int>(scale.x(0)), bottom, static_cast<int>(scale.x(scale.endMs())),
              bottom, "rule");
    const int right = static_cast<int>(scale.x(scale.endMs()));
    for (int64_t ms = 0; ms <= scale.endMs(); ms += step) {
        const int x = static_cast<int>(scale.x(ms));
        svg::line(out, x, bottom - 4, x, bottom, "rule");
        const bool fits = x + 2 + svg::textWidth(clock(ms)) <= right;
        svg::text(out, fits ? x + 2 : x - 2, bottom - 5, clock(ms), "dim", !fits);
    }
}

}  // namespace

int writeOverview(const ReplayReport& report, int y, int width, std::ostream& out) {
    const Scale scale(kMargin + kLaneLabelWidth, width - kLaneLabelWidth, report.endMs);
    out << "<g class=\"overview\">";
    y += 16;
    svg::text(out, kMargin, y,
              "Overview: " + std::to_string(report.epochs.size()) + " epochs in " +
                  clock(report.endMs + 999) + " (m:ss of replay time)",
              "lane");
    y += 4;
    writeAxis(scale, y, out);
    y += kAxisHeight + 4;
    const std::vector<EpochRecord> carried = withListsCarried(report.epochs);
    for (const Lane& lane : lanes()) {
        const bool satellites = std::string(lane.name) == "satellites";
        writeLane(report, satellites ? carried : report.epochs, lane, scale, y, out);
        y += kLanePitch;
    }
    writeDaemonLane(report, scale, y, out);
    y += kLanePitch;
    out << "</g>\n";
    return y;
}

}  // namespace replay::timeline
