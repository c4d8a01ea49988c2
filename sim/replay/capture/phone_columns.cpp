#include "phone_columns.h"

#include <cctype>
#include <cstdint>

namespace replay {
namespace {

bool sameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

bool isWord(std::string_view text) {
    if (text.empty()) return false;
    for (char c : text) {
        if (!std::isalnum(static_cast<unsigned char>(c))) return false;
    }
    return std::isalpha(static_cast<unsigned char>(text[0])) != 0;
}

size_t findIgnoringCase(std::string_view text, std::string_view word) {
    for (size_t at = 0; at + word.size() <= text.size(); ++at) {
        if (sameName(text.substr(at, word.size()), word)) return at;
    }
    return std::string_view::npos;
}

// Major, minor and patch of the number after "version:" as one number (2.0.4 is 2000004);
// 0 for what is not there.
int64_t versionNumber(std::string_view versionLine) {
    size_t at = findIgnoringCase(versionLine, "version:");
    if (at == std::string_view::npos) return 0;
    std::string_view rest = trimmed(versionLine.substr(at + 8));
    if (!rest.empty() && (rest[0] == 'v' || rest[0] == 'V')) rest.remove_prefix(1);
    int64_t parts[3] = {0, 0, 0};
    for (int64_t& part : parts) {
        size_t digits = 0;
        while (digits < rest.size() && digits < 4 &&
               std::isdigit(static_cast<unsigned char>(rest[digits]))) {
            part = part * 10 + (rest[digits] - '0');
            ++digits;
        }
        if (digits == 0 || digits >= rest.size() || rest[digits] != '.') break;
        rest.remove_prefix(digits + 1);
    }
    return parts[0] * 1000000 + parts[1] * 1000 + parts[2];
}

Columns columnsOf(std::initializer_list<const char*> names) {
    return Columns(std::vector<std::string>(names.begin(), names.end()));
}

}  // namespace

std::vector<std::string_view> splitRow(std::string_view line) {
    std::vector<std::string_view> fields;
    size_t start = 0;
    while (true) {
        const size_t comma = line.find(',', start);
        if (comma == std::string_view::npos) {
            fields.push_back(line.substr(start));
            return fields;
        }
        fields.push_back(line.substr(start, comma - start));
        start = comma + 1;
    }
}

int Columns::find(std::initializer_list<std::string_view> names) const {
    for (std::string_view name : names) {
        for (size_t i = 0; i < mNames.size(); ++i) {
            if (sameName(mNames[i], name)) return static_cast<int>(i);
        }
    }
    return -1;
}

std::optional<std::pair<std::string, Columns>> readColumnLine(std::string_view line) {
    if (line.empty() || line[0] != '#') return std::nullopt;
    std::vector<std::string_view> fields = splitRow(line.substr(1));
    const std::string_view type = trimmed(fields[0]);
    if (fields.size() < 2 || !isWord(type)) return std::nullopt;
    std::vector<std::string> names;
    for (std::string_view field : fields) names.emplace_back(trimmed(field));
    return std::make_pair(std::string(type), Columns(std::move(names)));
}

bool isVersionLine(std::string_view line) {
    return !line.empty() && line[0] == '#' &&
           findIgnoringCase(line, "version:") != std::string_view::npos;
}

// GPSTest and GnssLogger before 2.0.4 write the first set; 2.0.4 renames the columns and
// adds bearing and the speed and bearing accuracies; 3.0 adds the rest.
Columns documentedFixColumns(std::string_view versionLine) {
    const int64_t version = versionNumber(versionLine);
    if (findIgnoringCase(versionLine, "GPSTest") != std::string_view::npos || version < 2000004) {
        return columnsOf({"Fix", "Provider", "Latitude", "Longitude", "Altitude", "Speed",
                          "Accuracy", "(UTC)TimeInMs"});
    }
    if (version < 3000000) {
        return columnsOf({"Fix", "Provider", "LatitudeDegrees", "LongitudeDegrees",
                          "AltitudeMeters", "SpeedMps", "AccuracyMeters", "BearingDegrees",
                          "UnixTimeMillis", "SpeedAccuracyMps", "BearingAccuracyDegrees"});
    }
    return columnsOf({"Fix", "Provider", "LatitudeDegrees", "LongitudeDegrees", "AltitudeMeters",
                      "SpeedMps", "AccuracyMeters", "BearingDegrees", "UnixTimeMillis",
                      "SpeedAccuracyMps", "BearingAccuracyDegrees", "elapsedRealtimeNanos",
                      "VerticalAccuracyMeters", "MockLocation", "NumberOfUsedSignals",
                      "VerticalSpeedAccuracyMps", "SolutionType"});
}

Columns documentedStatusColumns() {
    return columnsOf({"Status", "UnixTimeMillis", "SignalCount", "SignalIndex", "ConstellationType",
                      "Svid", "CarrierFrequencyHz", "Cn0DbHz", "AzimuthDegrees", "ElevationDegrees",
                      "UsedInFix", "HasAlmanacData", "HasEphemerisData"});
}

}  // namespace replay
