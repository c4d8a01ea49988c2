// Parsing of the scenario language's value forms.
#include "values.h"
#include "sv_names.h"

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <set>
#include <utility>

namespace sim {

using android::hardware::hidl_vec;
namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;
namespace fusd = vendor::zendra::hardware::fusd::V1_2;

namespace {

constexpr size_t kMaxSvs = 64;

Token plain(const std::string& text) {
    return Token{text, false};
}

bool notQuoted(const Token& t, const char* what, std::string* error) {
    if (!t.quoted) return true;
    *error = std::string("expected ") + what + ", got the quoted string \"" + t.text + "\"";
    return false;
}

std::vector<std::string> split(const std::string& text, const char* separators) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t end = std::min(text.find_first_of(separators, start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> result;
    for (auto& part : split(text, " \t")) {
        if (!part.empty()) result.push_back(std::move(part));
    }
    return result;
}

// The text between `open` and `close` of a compound token such as loc{...}.
bool unwrap(const Token& t, const std::string& open, const std::string& close, std::string* inner,
            std::string* error) {
    const std::string& s = t.text;
    if (t.quoted || s.size() < open.size() + close.size() || s.compare(0, open.size(), open) != 0 ||
        s.compare(s.size() - close.size(), close.size(), close) != 0) {
        *error = "expected " + open + "..." + close + ", got \"" + s + "\"";
        return false;
    }
    *inner = s.substr(open.size(), s.size() - open.size() - close.size());
    return true;
}

bool isDigits(const std::string& s, size_t from, bool hex) {
    if (from >= s.size()) return false;
    for (size_t i = from; i < s.size(); ++i) {
        const auto c = static_cast<unsigned char>(s[i]);
        if (!(hex ? isxdigit(c) : isdigit(c))) return false;
    }
    return true;
}

// Splits "[-]digits" or "[-]0xhexdigits" into sign, digits and base; false otherwise.
bool integerParts(const std::string& s, bool* negative, std::string* digits, int* base) {
    *negative = !s.empty() && s[0] == '-';
    const size_t start = *negative ? 1 : 0;
    const bool hex = s.compare(start, 2, "0x") == 0 || s.compare(start, 2, "0X") == 0;
    *base = hex ? 16 : 10;
    *digits = s.substr(start + (hex ? 2 : 0));
    return isDigits(*digits, 0, hex);
}

template <typename T, typename Convert>
bool parseReal(const Token& t, T* out, std::string* error, Convert convert) {
    if (!notQuoted(t, "a number", error)) return false;
    const char* text = t.text.c_str();
    char* end = nullptr;
    const T value = convert(text, &end);
    if (t.text.empty() || isspace(static_cast<unsigned char>(text[0])) || *end != '\0') {
        *error = "expected a number, got \"" + t.text + "\"";
        return false;
    }
    *out = value;
    return true;
}

// name=value pairs of a record: each name sets one field; a field may have several names.
class FieldTable {
  public:
    using Setter = std::function<bool(const Token&, std::string*)>;

    template <typename T>
    void add(const std::vector<std::string>& names, T* field) {
        const size_t index = mSetters.size();
        mSetters.push_back([field](const Token& t, std::string* error) {
            if constexpr (std::is_same<T, double>::value)
                return parseDouble(t, field, error);
            else if constexpr (std::is_same<T, float>::value)
                return parseFloat(t, field, error);
            else
                return parseInteger(t, field, error);
        });
        for (const auto& name : names) mIndex.emplace_back(name, index);
    }

    bool parse(const std::string& body, std::string* error) const {
        std::set<size_t> seen;
        for (const auto& item : words(body)) {
            const size_t eq = item.find('=');
            const std::string name = item.substr(0, eq);
            const size_t index = find(name);
            if (eq == std::string::npos || index == mSetters.size()) {
                *error = "unknown field \"" + name + "\"";
                return false;
            }
            if (!seen.insert(index).second) {
                *error = "field \"" + name + "\" given twice";
                return false;
            }
            if (!mSetters[index](plain(item.substr(eq + 1)), error)) {
                *error = name + ": " + *error;
                return false;
            }
        }
        return true;
    }

  private:
    size_t find(const std::string& name) const {
        for (const auto& entry : mIndex) {
            if (entry.first == name) return entry.second;
        }
        return mSetters.size();
    }

    std::vector<Setter> mSetters;
    std::vector<std::pair<std::string, size_t>> mIndex;
};

void addLocationFields(FieldTable& table, gnss_v1::GnssLocation* loc, const std::string& prefix) {
    auto names = [&prefix](const std::string& name) {
        return prefix.empty() ? std::vector<std::string>{name}
                              : std::vector<std::string>{name, prefix + name};
    };
    table.add(names("gnssLocationFlags"), &loc->gnssLocationFlags);
    table.add(names("latitudeDegrees"), &loc->latitudeDegrees);
    table.add(names("longitudeDegrees"), &loc->longitudeDegrees);
    table.add(names("altitudeMeters"), &loc->altitudeMeters);
    table.add(names("speedMetersPerSec"), &loc->speedMetersPerSec);
    table.add(names("bearingDegrees"), &loc->bearingDegrees);
    table.add(names("horizontalAccuracyMeters"), &loc->horizontalAccuracyMeters);
    table.add(names("verticalAccuracyMeters"), &loc->verticalAccuracyMeters);
    table.add(names("speedAccuracyMetersPerSecond"), &loc->speedAccuracyMetersPerSecond);
    table.add(names("bearingAccuracyDegrees"), &loc->bearingAccuracyDegrees);
    table.add(names("timestamp"), &loc->timestamp);
}

// CONST/svid/cN0Dbhz/FLAGS[/elevationDegrees/azimuthDegrees/carrierFrequencyHz];
// constellations holds the CONST part for the caller to read.
bool parseSvEntry(const std::string& text, gnss_v1::IGnssCallback::GnssSvInfo* sv,
                  std::string* constellations, std::string* error) {
    const auto parts = split(text, "/");
    if (parts.size() < 4 || parts.size() > 7) {
        *error = "satellite \"" + text + "\": expected CONST/svid/cN0Dbhz/FLAGS" +
                 "[/elevationDegrees/azimuthDegrees/carrierFrequencyHz]";
        return false;
    }
    *sv = {};
    *constellations = parts[0];
    uint8_t flags = 0;
    float* const optional[] = {&sv->elevationDegrees, &sv->azimuthDegrees, &sv->carrierFrequencyHz};
    bool ok = parseInteger(plain(parts[1]), &sv->svid, error) &&
              parseFloat(plain(parts[2]), &sv->cN0Dbhz, error) &&
              parseSvFlags(parts[3], &flags, error);
    for (size_t i = 4; ok && i < parts.size(); ++i)
        ok = parseFloat(plain(parts[i]), optional[i - 4], error);
    sv->svFlag = flags;
    if (!ok) *error = "satellite \"" + text + "\": " + *error;
    return ok;
}

bool parseSv1Entry(const std::string& text, gnss_v1::IGnssCallback::GnssSvInfo* sv,
                   std::string* error) {
    std::string constellation;
    uint8_t value = 0;
    if (!parseSvEntry(text, sv, &constellation, error)) return false;
    if (!parseConstellation(constellation, &value, error)) {
        *error = "satellite \"" + text + "\": " + *error;
        return false;
    }
    sv->constellation = static_cast<gnss_v1::GnssConstellationType>(value);
    return true;
}

// "C2:C1/..." sets the 2.0 constellation C2 and the 1.0 one C1; "C/..." sets both.
bool parseSv2Entry(const std::string& text, gnss_v2::IGnssCallback::GnssSvInfo* sv,
                   std::string* error) {
    std::string constellations;
    if (!parseSvEntry(text, &sv->v1_0, &constellations, error)) return false;
    const auto names = split(constellations, ":");
    uint8_t c2 = 0;
    uint8_t c1 = 0;
    if (names.size() > 2 || !parseConstellation(names[0], &c2, error) ||
        !parseConstellation(names.back(), &c1, error)) {
        if (names.size() > 2) *error = "expected C2:C1, got \"" + constellations + "\"";
        *error = "satellite \"" + text + "\": " + *error;
        return false;
    }
    sv->constellation = static_cast<gnss_v2::GnssConstellationType>(c2);
    sv->v1_0.constellation = static_cast<gnss_v1::GnssConstellationType>(c1);
    return true;
}

// "numSvs=N;" at the start of an sv1 body.
bool takeNumSvs(std::string* body, bool* given, uint32_t* numSvs, std::string* error) {
    const size_t start = body->find_first_not_of(" \t");
    *given = start != std::string::npos && body->compare(start, 7, "numSvs=") == 0;
    if (!*given) return true;
    const size_t semicolon = body->find(';', start);
    if (semicolon == std::string::npos) {
        *error = "numSvs=N must end with ';'";
        return false;
    }
    const Token value = plain(body->substr(start + 7, semicolon - start - 7));
    if (!parseInteger(value, numSvs, error)) {
        *error = "numSvs: " + *error;
        return false;
    }
    body->erase(0, semicolon + 1);
    return true;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

bool parseInt64(const Token& t, int64_t* out, std::string* error) {
    bool negative = false;
    std::string digits;
    int base = 10;
    if (!notQuoted(t, "an integer", error)) return false;
    if (!integerParts(t.text, &negative, &digits, &base)) {
        *error = "expected an integer, got \"" + t.text + "\"";
        return false;
    }
    errno = 0;
    const unsigned long long magnitude = strtoull(digits.c_str(), nullptr, base);
    const unsigned long long limit = negative ? 1ull << 63 : (1ull << 63) - 1;
    if (errno == ERANGE || magnitude > limit) {
        *error = "\"" + t.text + "\" is out of range for a 64-bit integer";
        return false;
    }
    *out = negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
    return true;
}

bool parseUint64(const Token& t, uint64_t* out, std::string* error) {
    bool negative = false;
    std::string digits;
    int base = 10;
    if (!notQuoted(t, "an integer", error)) return false;
    if (!integerParts(t.text, &negative, &digits, &base) || negative) {
        *error = (negative ? "expected an integer of at least 0, got \""
                           : "expected an integer, got \"") +
                 t.text + "\"";
        return false;
    }
    errno = 0;
    const unsigned long long value = strtoull(digits.c_str(), nullptr, base);
    if (errno == ERANGE) {
        *error = "\"" + t.text + "\" is out of range for a 64-bit integer";
        return false;
    }
    *out = value;
    return true;
}

bool parseDouble(const Token& t, double* out, std::string* error) {
    return parseReal(t, out, error, [](const char* s, char** end) { return strtod(s, end); });
}

bool parseFloat(const Token& t, float* out, std::string* error) {
    return parseReal(t, out, error, [](const char* s, char** end) { return strtof(s, end); });
}

bool parseBool(const Token& t, bool* out, std::string* error) {
    if (!t.quoted && (t.text == "true" || t.text == "false")) {
        *out = t.text == "true";
        return true;
    }
    *error = "expected true or false, got \"" + t.text + "\"";
    return false;
}

bool parseConstellation(const std::string& text, uint8_t* out, std::string* error) {
    for (size_t i = 0; i < std::size(kConstellationNames); ++i) {
        if (text == kConstellationNames[i]) {
            *out = static_cast<uint8_t>(i);
            return true;
        }
    }
    if (parseInteger(plain(text), out, error)) return true;
    *error = "unknown constellation \"" + text + "\"";
    return false;
}

bool parseSvFlags(const std::string& text, uint8_t* out, std::string* error) {
    *out = 0;
    if (text == "-") return true;
    for (const auto& part : split(text, "|")) {
        uint8_t bits = 0;
        for (size_t i = 0; i < std::size(kSvFlagNames); ++i) {
            if (part == kSvFlagNames[i]) bits = static_cast<uint8_t>(1u << i);
        }
        if (bits == 0 && !parseInteger(plain(part), &bits, error)) {
            *error = "unknown satellite flag \"" + part + "\"";
            return false;
        }
        *out |= bits;
    }
    return true;
}

bool parseLocation(const Token& t, gnss_v1::GnssLocation* out, std::string* error) {
    std::string body;
    if (!unwrap(t, "loc{", "}", &body, error)) return false;
    *out = {};
    FieldTable table;
    addLocationFields(table, out, "");
    return table.parse(body, error);
}

bool parseLocation2(const Token& t, gnss_v2::GnssLocation* out, std::string* error) {
    std::string body;
    if (!unwrap(t, "loc2{", "}", &body, error)) return false;
    *out = {};
    FieldTable table;
    addLocationFields(table, &out->v1_0, "v1_0.");
    table.add({"elapsedRealtime.flags"}, &out->elapsedRealtime.flags);
    table.add({"elapsedRealtime.timestampNs"}, &out->elapsedRealtime.timestampNs);
    table.add({"elapsedRealtime.timeUncertaintyNs"}, &out->elapsedRealtime.timeUncertaintyNs);
    return table.parse(body, error);
}

bool parseSvStatus(const Token& t, gnss_v1::IGnssCallback::GnssSvStatus* out, std::string* error) {
    std::string body;
    bool numSvsGiven = false;
    if (!unwrap(t, "sv1{", "}", &body, error)) return false;
    *out = {};
    if (!takeNumSvs(&body, &numSvsGiven, &out->numSvs, error)) return false;
    const auto entries = words(body);
    if (entries.size() > kMaxSvs) {
        *error = "at most 64 satellites fit a 1.0 satellite status";
        return false;
    }
    for (size_t i = 0; i < entries.size(); ++i) {
        if (!parseSv1Entry(entries[i], &out->gnssSvList[i], error)) return false;
    }
    if (!numSvsGiven) out->numSvs = static_cast<uint32_t>(entries.size());
    return true;
}

bool parseSvList(const Token& t, hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo>* out,
                 std::string* error) {
    std::string body;
    if (!unwrap(t, "sv2{", "}", &body, error)) return false;
    const auto entries = words(body);
    hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo> list;
    list.resize(entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        list[i] = {};
        if (!parseSv2Entry(entries[i], &list[i], error)) return false;
    }
    *out = std::move(list);
    return true;
}

bool parseGeofenceResults(const Token& t, hidl_vec<fusd::GeofenceResult>* out, std::string* error) {
    std::string body;
    if (!unwrap(t, "[", "]", &body, error)) return false;
    const auto items = words(body);
    hidl_vec<fusd::GeofenceResult> results;
    results.resize(items.size());
    for (size_t i = 0; i < items.size(); ++i) {
        const auto pair = split(items[i], ":");
        if (pair.size() != 2 || !parseInteger(plain(pair[0]), &results[i].geofenceId, error) ||
            !parseInteger(plain(pair[1]), &results[i].result, error)) {
            *error = "expected geofenceId:result, got \"" + items[i] + "\"";
            return false;
        }
    }
    *out = std::move(results);
    return true;
}

bool parseBytes(const Token& t, std::vector<uint8_t>* out, bool* isNull, std::string* error) {
    *isNull = !t.quoted && t.text == "null";
    out->clear();
    if (*isNull) return true;
    const std::string& s = t.text;
    if (t.quoted || s.compare(0, 4, "hex:") != 0 || s.size() % 2 != 0) {
        *error = "expected hex:<pairs of hex digits> or null, got \"" + s + "\"";
        return false;
    }
    for (size_t i = 4; i < s.size(); i += 2) {
        const int high = hexValue(s[i]);
        const int low = hexValue(s[i + 1]);
        if (high < 0 || low < 0) {
            *error = "expected hex digits, got \"" + s + "\"";
            return false;
        }
        out->push_back(static_cast<uint8_t>(high << 4 | low));
    }
    return true;
}

}  // namespace sim
