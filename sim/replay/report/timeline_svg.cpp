// The timeline document: heading and legend, then the epochs in blocks of one minute, each
// block under its own column titles.
#include <algorithm>
#include <sstream>

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
)css";

int documentHeight(int rowsTop, int epochs) {
    const int blocks = std::max(1, (epochs + kRowsPerBlock - 1) / kRowsPerBlock);
    return rowsTop + blocks * kColumnTitleHeight + std::max(epochs, 1) * kRowHeight + kMargin;
}

void writeRows(const ReplayReport& report, int rowsTop, std::ostream& out) {
    const int count = static_cast<int>(report.epochs.size());
    if (count == 0) {
        writeColumnTitles(rowsTop, out);
        svg::text(out, kMargin, rowsTop + kColumnTitleHeight + kBaseline, "no epochs", "dim");
        return;
    }
    for (int first = 0; first < count; first += kRowsPerBlock) {
        const int rows = std::min(kRowsPerBlock, count - first);
        const int blockTop = rowTop(rowsTop, first);
        writeColumnTitles(blockTop - kColumnTitleHeight, out);
        for (int i = first; i < first + rows; ++i) {
            writeEpochRow(report.epochs[i], rowTop(rowsTop, i), out);
        }
        writeThresholdLine(blockTop, rows, out);
    }
}

}  // namespace

void writeTimelineSvg(const ReplayReport& report, std::ostream& out) {
    // The heading's height does not depend on the report, so it is measured on a scratch
    // stream first to size the document.
    std::ostringstream heading;
    const int rowsTop = writeHeading(report, heading);
    const int height = documentHeight(rowsTop, static_cast<int>(report.epochs.size()));

    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" << kWidth
        << "\" height=\"" << height << "\" viewBox=\"0 0 " << kWidth << ' ' << height << "\">\n"
        << "<title>" << xmlEscaped("Replay of " + report.capture) << "</title>\n"
        << "<style type=\"text/css\"><![CDATA[" << kStyle << "]]></style>\n"
        << "<rect x=\"0\" y=\"0\" width=\"" << kWidth << "\" height=\"" << height
        << "\" fill=\"#ffffff\"/>\n"
        << heading.str();
    writeRows(report, rowsTop, out);
    out << "</svg>\n";
}

}  // namespace replay
