// Canonical transcript forms of values.
#include "format.h"
#include "sv_names.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace sim {

using android::hardware::hidl_vec;
namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;
namespace fusd = vendor::zendra::hardware::fusd::V1_2;

namespace {


// Fewest significant digits that read back to exactly the same value, as "d.ddde+XX".
template <typename T, typename Parse>
std::string fewestDigits(T v, Parse parse, int* digits) {
    char buffer[48];
    for (*digits = 1; *digits <= 17; ++*digits) {
        snprintf(buffer, sizeof buffer, "%.*e", *digits - 1, static_cast<double>(v));
        if (parse(buffer) == v) break;
    }
    return buffer;
}

// The shortest form that reads back to the same value: the fewest significant digits,
// written out positionally for decimal exponents -4..16 ("90", "0.0001", "1575420000")
// and in exponent form otherwise ("1e-07", "1e+20"), as %g writes it.
template <typename T, typename Parse>
std::string shortest(T v, Parse parse) {
    if (std::isnan(v)) return "nan";
    if (std::isinf(v)) return v < 0 ? "-inf" : "inf";
    int digits = 0;
    const std::string scientific = fewestDigits(v, parse, &digits);
    const size_t e = scientific.find('e');
    const int exponent = atoi(scientific.c_str() + e + 1);
    if (exponent < -4 || exponent > 16) {
        char buffer[48];
        snprintf(buffer, sizeof buffer, "%.*g", digits, static_cast<double>(v));
        return buffer;
    }
    const bool negative = scientific[0] == '-';
    std::string mantissa;
    for (size_t i = negative ? 1 : 0; i < e; ++i) {
        if (scientific[i] != '.') mantissa += scientific[i];
    }
    std::string out = negative ? "-" : "";
    if (exponent < 0) return out + "0." + std::string(-exponent - 1, '0') + mantissa;
    const size_t whole = static_cast<size_t>(exponent) + 1;
    if (mantissa.size() <= whole) return out + mantissa + std::string(whole - mantissa.size(), '0');
    return out + mantissa.substr(0, whole) + "." + mantissa.substr(whole);
}

void appendEscaped(std::string& out, char c) {
    static const char kHex[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
        case '"':
            out += "\\\"";
            return;
        case '\\':
            out += "\\\\";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        case '\0':
            out += "\\0";
            return;
        default:
            break;
    }
    if (byte < 0x20 || byte == 0x7f) {
        out += "\\x";
        out += kHex[byte >> 4];
        out += kHex[byte & 0xf];
    } else {
        out += c;
    }
}

std::string quoted(const char* data, size_t size) {
    std::string out = "\"";
    for (size_t i = 0; i < size; ++i) appendEscaped(out, data[i]);
    return out + "\"";
}

std::string joinRecord(const std::string& open, const std::vector<std::string>& items) {
    std::string out = open;
    for (size_t i = 0; i < items.size(); ++i) out += (i ? " " : "") + items[i];
    return out + "}";
}

// CONST/svid/cN0Dbhz/FLAGS/elevationDegrees/azimuthDegrees/carrierFrequencyHz
std::string svEntry(const std::string& constellation,
                    const gnss_v1::IGnssCallback::GnssSvInfo& sv) {
    return constellation + "/" + fmt(sv.svid) + "/" + fmt(sv.cN0Dbhz) + "/" +
           fmtSvFlags(sv.svFlag) + "/" + fmt(sv.elevationDegrees) + "/" + fmt(sv.azimuthDegrees) +
           "/" + fmt(sv.carrierFrequencyHz);
}

std::string svEntry(const gnss_v2::IGnssCallback::GnssSvInfo& sv) {
    const auto c2 = static_cast<uint8_t>(sv.constellation);
    const auto c1 = static_cast<uint8_t>(sv.v1_0.constellation);
    std::string constellation = fmtConstellation(c2);
    if (c2 != c1) constellation += ":" + fmtConstellation(c1);
    return svEntry(constellation, sv.v1_0);
}

template <typename List>
std::string fmtSvList(const List& list) {
    std::vector<std::string> entries;
    for (const auto& sv : list) entries.push_back(svEntry(sv));
    return joinRecord("sv2{", entries);
}

}  // namespace

std::string fmt(bool v) {
    return v ? "true" : "false";
}
std::string fmt(int8_t v) {
    return std::to_string(v);
}
std::string fmt(uint8_t v) {
    return std::to_string(v);
}
std::string fmt(int16_t v) {
    return std::to_string(v);
}
std::string fmt(uint16_t v) {
    return std::to_string(v);
}
std::string fmt(int32_t v) {
    return std::to_string(v);
}
std::string fmt(uint32_t v) {
    return std::to_string(v);
}
std::string fmt(int64_t v) {
    return std::to_string(v);
}
std::string fmt(uint64_t v) {
    return std::to_string(v);
}
std::string fmt(long long v) {
    return std::to_string(v);
}
std::string fmt(unsigned long long v) {
    return std::to_string(v);
}

std::string fmt(float v) {
    return shortest(v, [](const char* text) { return strtof(text, nullptr); });
}

std::string fmt(double v) {
    return shortest(v, [](const char* text) { return strtod(text, nullptr); });
}

std::string fmt(const char* v) {
    return v ? quoted(v, strlen(v)) : "null";
}
std::string fmt(const std::string& v) {
    return quoted(v.data(), v.size());
}
std::string fmt(const android::hardware::hidl_string& v) {
    return quoted(v.c_str(), v.size());
}

std::string fmtBytes(const uint8_t* data, size_t size) {
    static const char kHex[] = "0123456789abcdef";
    std::string out = "hex:";
    for (size_t i = 0; i < size; ++i) {
        out += kHex[data[i] >> 4];
        out += kHex[data[i] & 0xf];
    }
    return out;
}

std::string fmt(const hidl_vec<uint8_t>& v) {
    return fmtBytes(v.data(), v.size());
}

std::string fmtConstellation(uint8_t v) {
    return v < std::size(kConstellationNames) ? kConstellationNames[v] : fmt(v);
}

std::string fmtSvFlags(uint8_t v) {
    if (v == 0) return "-";
    std::string out;
    for (unsigned bit = 0; bit < 8; ++bit) {
        const unsigned mask = 1u << bit;
        if (!(v & mask)) continue;
        if (!out.empty()) out += "|";
        out += bit < std::size(kSvFlagNames) ? kSvFlagNames[bit] : std::to_string(mask);
    }
    return out;
}

std::string fmt(const gnss_v1::GnssLocation& v) {
    std::vector<std::string> fields;
    appendFields(fields, std::string(), v);
    return joinRecord("loc{", fields);
}

std::string fmt(const gnss_v2::GnssLocation& v) {
    std::vector<std::string> fields;
    appendFields(fields, std::string(), v);
    return joinRecord("loc2{", fields);
}

std::string fmt(const gnss_v1::IGnssCallback::GnssSvStatus& v) {
    const size_t shown = std::min<size_t>(v.numSvs, v.gnssSvList.size());
    std::string out = "sv1{numSvs=" + fmt(v.numSvs) + ";";
    for (size_t i = 0; i < shown; ++i) {
        const auto& sv = v.gnssSvList[i];
        out += " " + svEntry(fmtConstellation(static_cast<uint8_t>(sv.constellation)), sv);
    }
    return out + "}";
}

std::string fmt(const hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo>& v) {
    return fmtSvList(v);
}

std::string fmt(const std::vector<gnss_v2::IGnssCallback::GnssSvInfo>& v) {
    return fmtSvList(v);
}

std::string fmt(const fusd::GeofenceRequest& v) {
    static_assert(sizeof v == 72, "a geofence request crosses the wire as 72 bytes");
    return fmtBytes(reinterpret_cast<const uint8_t*>(&v), sizeof v);
}

std::string fmt(const hidl_vec<fusd::GeofenceResult>& v) {
    std::string out = "[";
    for (size_t i = 0; i < v.size(); ++i) {
        out += (i ? " " : "") + fmt(v[i].geofenceId) + ":" + fmt(v[i].result);
    }
    return out + "]";
}

}  // namespace sim
