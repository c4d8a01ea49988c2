// Outside text (a capture's file name, a rejection reason) made safe to print on one line
// of the summary and inside the timeline's XML.
#pragma once

#include <string>

namespace replay {

// Tabs and line breaks become spaces and every run of spaces becomes one; invalid UTF-8,
// other control characters and the non-characters U+FFFE/U+FFFF become '?'. The result can
// neither break a line nor an XML parser.
std::string oneLine(const std::string& text);

// oneLine() with &, <, >, " and ' escaped: fit for XML text and quoted attribute values.
std::string xmlEscaped(const std::string& text);

// Characters in UTF-8 text, for lining text up.
size_t characterCount(const std::string& text);

}  // namespace replay
