#include "finding_report.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace explore {

namespace {

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

// A heading of an outcome starts in the first column; its lines are indented.
bool isHeading(const std::string& line) {
    return !line.empty() && line[0] != ' ';
}

constexpr size_t kMaxColumnWidth = 56;
constexpr size_t kMinColumnWidth = 28;
constexpr size_t kPageWidth = 150;

// `text` cut into pieces of at most `width` characters.
std::vector<std::string> wrap(const std::string& text, size_t width) {
    std::vector<std::string> pieces;
    for (size_t at = 0; at < text.size() || pieces.empty(); at += width) {
        pieces.push_back(text.substr(at, width));
    }
    return pieces;
}

std::string padded(const std::string& text, size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

void printRow(std::ostream& out, const std::vector<std::string>& cells, size_t width,
              const char* indent) {
    std::string row;
    for (size_t i = 0; i < cells.size(); ++i) {
        row += (i == 0 ? "" : " | ") + (i + 1 == cells.size() ? cells[i] : padded(cells[i], width));
    }
    while (!row.empty() && row.back() == ' ') row.pop_back();
    out << indent << row << "\n";
}

}  // namespace

std::vector<DiffLine> diffLines(const std::string& from, const std::string& to) {
    const std::vector<std::string> a = splitLines(from);
    const std::vector<std::string> b = splitLines(to);
    // common[i][j]: the longest common subsequence of a[i..] and b[j..].
    std::vector<std::vector<size_t>> common(a.size() + 1, std::vector<size_t>(b.size() + 1, 0));
    for (size_t i = a.size(); i-- > 0;) {
        for (size_t j = b.size(); j-- > 0;) {
            common[i][j] = a[i] == b[j] ? common[i + 1][j + 1] + 1
                                        : std::max(common[i + 1][j], common[i][j + 1]);
        }
    }
    std::vector<DiffLine> diff;
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() || j < b.size()) {
        if (i < a.size() && j < b.size() && a[i] == b[j]) {
            diff.push_back({' ', a[i++]});
            ++j;
        } else if (j < b.size() && (i == a.size() || common[i][j + 1] >= common[i + 1][j])) {
            diff.push_back({'+', b[j++]});
        } else {
            diff.push_back({'-', a[i++]});
        }
    }
    return diff;
}

size_t diffSize(const std::vector<DiffLine>& diff) {
    return static_cast<size_t>(
        std::count_if(diff.begin(), diff.end(), [](const DiffLine& d) { return d.mark != ' '; }));
}

void printDiff(std::ostream& out, const std::vector<DiffLine>& diff, const char* indent) {
    std::vector<bool> shown(diff.size(), false);
    for (size_t i = 0; i < diff.size(); ++i) {
        if (diff[i].mark == ' ') continue;
        for (size_t k = (i == 0 ? 0 : i - 1); k <= std::min(i + 1, diff.size() - 1); ++k) {
            shown[k] = true;
        }
        for (size_t k = i; k-- > 0;) {  // the heading of the part the change is in
            if (isHeading(diff[k].text) && diff[k].mark == ' ') {
                shown[k] = true;
                break;
            }
        }
    }
    bool gap = false;
    for (size_t i = 0; i < diff.size(); ++i) {
        if (!shown[i]) {
            gap = true;
            continue;
        }
        if (gap) out << indent << "  …\n";
        gap = false;
        out << indent << diff[i].mark << ' ' << diff[i].text << "\n";
    }
}

void printColumns(std::ostream& out, const RunResult& run, const char* indent) {
    int threads = 0;
    std::map<int, std::string> firstOperation;
    for (const TraceLine& line : run.trace) {
        threads = std::max(threads, line.thread);
        if (line.thread > 0 && firstOperation.count(line.thread) == 0) {
            firstOperation[line.thread] = line.operation;
        }
    }
    if (threads > 0) {
        const size_t width =
            std::clamp(kPageWidth / static_cast<size_t>(threads), kMinColumnWidth, kMaxColumnWidth);
        std::vector<std::string> cells(static_cast<size_t>(threads));
        for (int t = 1; t <= threads; ++t) {
            cells[t - 1] = "thread " + std::to_string(t) + " (" + firstOperation[t] + ")";
        }
        printRow(out, cells, width, indent);
        std::fill(cells.begin(), cells.end(), std::string(width, '-'));
        printRow(out, cells, width, indent);
        for (const TraceLine& line : run.trace) {
            if (line.thread == 0) continue;
            const std::string text = line.begins ? "» " + line.text : line.text;
            for (const std::string& piece : wrap(text, width)) {
                std::fill(cells.begin(), cells.end(), std::string());
                cells[line.thread - 1] = piece;
                printRow(out, cells, width, indent);
            }
        }
    }
    if (run.afterLines.empty()) return;
    out << indent << "after the block:\n";
    for (const std::string& line : run.afterLines) out << indent << "  " << line << "\n";
}

}  // namespace explore
