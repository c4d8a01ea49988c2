// The columns of a phone log's row types: from the header's "# Type,column,..." lines, or,
// for a header without them, the columns its writer's version is documented to write.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace replay {

// The row split at its commas; no field is trimmed.
std::vector<std::string_view> splitRow(std::string_view line);

// One row type's columns. Column i is field i of a row: column 0 is the type itself.
class Columns {
  public:
    Columns() = default;
    explicit Columns(std::vector<std::string> names) : mNames(std::move(names)) {}

    bool known() const { return !mNames.empty(); }
    size_t size() const { return mNames.size(); }
    // The position of the first of these names that is a column (case is ignored), or -1.
    int find(std::initializer_list<std::string_view> names) const;

  private:
    std::vector<std::string> mNames;
};

// "# Fix,Provider,..." (any spaces after the '#'): the row type and its columns. Nothing for
// other '#' lines, whose first word is not followed by a comma.
std::optional<std::pair<std::string, Columns>> readColumnLine(std::string_view line);

// Whether a '#' line is the version line ("# Version: v3.0.6.4 ...", "# GPSTest version: ...").
bool isVersionLine(std::string_view line);

// The Fix and Status columns a writer of this version line writes.
Columns documentedFixColumns(std::string_view versionLine);
Columns documentedStatusColumns();

}  // namespace replay
