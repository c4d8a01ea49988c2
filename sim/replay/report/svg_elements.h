// The few SVG elements the timeline is drawn with. Coordinates are whole pixels; every
// piece of text is escaped here, so callers pass plain text.
#pragma once

#include <ostream>
#include <string>

namespace replay::svg {

// Advance of one character of the timeline's monospace font at its 11 px size.
constexpr double kCharWidth = 6.7;

int textWidth(const std::string& text);

void rect(std::ostream& out, int x, int y, int width, int height, const std::string& cssClass);
// Text whose baseline starts at (x, y), or ends there when alignEnd is set.
void text(std::ostream& out, int x, int y, const std::string& content,
          const std::string& cssClass = "", bool alignEnd = false);
void line(std::ostream& out, int x1, int y1, int x2, int y2, const std::string& cssClass);
// A rectangle at fractional coordinates (to a tenth of a pixel) with a tooltip.
void rect(std::ostream& out, double x, double y, double width, double height,
          const std::string& cssClass, const std::string& tooltip);

}  // namespace replay::svg
