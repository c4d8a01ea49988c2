// The timeline document: heading, overview and legend, then the epochs in blocks of 60 rows,
// each block under its own column titles.
#include <algorithm>
#include <sstream>

#include "replay_report.h"
#include "svg_elements.h"
#include "text_escape.h"
#include "timeline_layout.h"

namespace replay {
namespace {

using namespace timeline;

constexpr const char* kStyle = R"css(
text{font-family:'DejaVu Sans Mono',monospace;font-size:11px;fill:#212121}
.title{font-size:16px;font-weight:bold}
.lane{font-weight:bold;fill:#37474f}
.dim{fill:#9e9e9e}
text.on{fill:#ffffff}
.zebra{fill:#f1f3f6}
.rule{stroke:#90a4ae;stroke-width:1}
.threshold{stroke:#37474f;stroke-width:1;stroke-dasharray:2,2}
.src-receiver{fill:#2e7d32}
.src-fused{fill:#1565c0}
.src-both{fill:#7b1fa2}
.src-none{fill:#e3e3e3}
.used{fill:#607d8b}
.unknown{fill:none;stroke:#90a4ae;stroke-width:1}
.pad{fill:#ff9800}
.padded{fill:#e65100;font-weight:bold}
.rmc-true{fill:#43a047}
.rmc-false{fill:#e53935}
.up{fill:#81c784}
.down{fill:#e53935}
.died{fill:#c62828;font-weight:bold}
.back{fill:#2e7d32;font-weight:bold}
.batch{fill:#00838f}
.drop{fill:#e65100}
.rej{fill:#c62828}
.rej-fault{fill:#c62828}
.rmc-both{fill:#fbc02d}
.lane-bg{fill:#f5f5f5}
.died-mark{fill:#b71c1c}
.back-mark{fill:#1b5e20}
)css";

void writeRows(const ReplayReport& report, const Columns& columns, int rowsTop, std::ostream& out) {
    const int count = static_cast<int>(report.epochs.size());
    if (count == 0) {
        writeColumnTitles(columns, rowsTop, out);
        svg::text(out, kMargin, rowsTop + kColumnTitleHeight + kBaseline, "no epochs", "dim");
        return;
    }
    for (int first = 0; first < count; first += kRowsPerBlock) {
        const int rows = std::min(kRowsPerBlock, count - first);
        const int blockTop = rowTop(rowsTop, first);
        writeColumnTitles(columns, blockTop - kColumnTitleHeight, out);
        for (int i = first; i < first + rows; ++i) {
            writeEpochRow(report.epochs[i], columns, rowTop(rowsTop, i), out);
        }
        writeThresholdLine(columns, blockTop, rows, out);
    }
}

}  // namespace

void writeTimelineSvg(const ReplayReport& report, std::ostream& out) {
    const Columns columns = columnsFor(report);
    const int width = std::max({columns.right, headingWidth(report), kMinimumWidth});
    std::ostringstream body;
    int y = writeHeading(report, kMargin, body);
    y = writeOverview(report, y, width - 2 * kMargin, body);
    y = writeLegend(y, body);
    svg::text(body, kMargin, y + 20, "Epoch by epoch", "lane");
    const int rowsTop = y + 26;
    writeRows(report, columns, rowsTop, body);
    const int count = static_cast<int>(report.epochs.size());
    const int height = rowTop(rowsTop, std::max(count, 1)) + kMargin;

    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" << width
        << "\" height=\"" << height << "\" viewBox=\"0 0 " << width << ' ' << height << "\">\n"
        << "<title>" << xmlEscaped("Replay of " + report.capture) << "</title>\n"
        << "<style type=\"text/css\"><![CDATA[" << kStyle << "]]></style>\n"
        << "<rect x=\"0\" y=\"0\" width=\"" << width << "\" height=\"" << height
        << "\" fill=\"#ffffff\"/>\n"
        << body.str() << "</svg>\n";
}

}  // namespace replay
