// The summary's table: figures under group titles, labels and numbers aligned.
#pragma once

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "replay_report.h"
#include "text_escape.h"

namespace replay {

struct SummaryLine {
    std::string label;
    std::optional<int> value;  // empty for a group title
};

// Figures under group titles, written with the labels and the numbers aligned.
class SummaryTable {
  public:
    void title(const std::string& text) { mLines.push_back({text + ":", std::nullopt}); }
    void figure(const std::string& label, int value) { mLines.push_back({label, value}); }

    void write(std::ostream& out) const {
        size_t labelWidth = 0;
        size_t valueWidth = 0;
        for (const SummaryLine& line : mLines) {
            if (!line.value) continue;
            labelWidth = std::max(labelWidth, characterCount(line.label));
            valueWidth = std::max(valueWidth, std::to_string(*line.value).size());
        }
        for (const SummaryLine& line : mLines) {
            if (!line.value) {
                out << '\n' << line.label << '\n';
                continue;
            }
            const std::string number = std::to_string(*line.value);
            out << line.label
                << std::string(
                       labelWidth - characterCount(line.label) + 2 + valueWidth - number.size(),
                       ' ')
                << number << '\n';
        }
    }

  private:
    std::vector<SummaryLine> mLines;
};

}  // namespace replay
