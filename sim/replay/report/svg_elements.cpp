#include "svg_elements.h"

#include <cmath>

#include "text_escape.h"

namespace replay::svg {
namespace {

std::string classAttribute(const std::string& cssClass) {
    return cssClass.empty() ? std::string() : " class=\"" + xmlEscaped(cssClass) + "\"";
}

}  // namespace

int textWidth(const std::string& text) {
    return static_cast<int>(std::ceil(characterCount(text) * kCharWidth));
}

void rect(std::ostream& out, int x, int y, int width, int height, const std::string& cssClass) {
    out << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << width << "\" height=\"" << height
        << '"' << classAttribute(cssClass) << "/>";
}

void text(std::ostream& out, int x, int y, const std::string& content, const std::string& cssClass,
          bool alignEnd) {
    out << "<text x=\"" << x << "\" y=\"" << y << '"' << classAttribute(cssClass)
        << (alignEnd ? " text-anchor=\"end\"" : "") << '>' << xmlEscaped(content) << "</text>";
}

void line(std::ostream& out, int x1, int y1, int x2, int y2, const std::string& cssClass) {
    out << "<line x1=\"" << x1 << "\" y1=\"" << y1 << "\" x2=\"" << x2 << "\" y2=\"" << y2 << '"'
        << classAttribute(cssClass) << "/>";
}

void rect(std::ostream& out, double x, double y, double width, double height,
          const std::string& cssClass, const std::string& tooltip) {
    const auto tenth = [](double value) { return std::round(value * 10) / 10; };
    out << "<rect x=\"" << tenth(x) << "\" y=\"" << tenth(y) << "\" width=\"" << tenth(width)
        << "\" height=\"" << tenth(height) << '"' << classAttribute(cssClass) << "><title>"
        << xmlEscaped(tooltip) << "</title></rect>";
}

}  // namespace replay::svg
