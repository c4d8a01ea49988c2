// Parsing of the scenario language's value forms (loc{...}, sv1{...}, [5:0 6:-3], ...).
// Every parser returns false and sets *error on malformed input.
#pragma once

#include <android/hardware/gnss/1.0/IGnssCallback.h>
#include <android/hardware/gnss/1.0/types.h>
#include <android/hardware/gnss/2.0/IGnssCallback.h>
#include <android/hardware/gnss/2.0/types.h>
#include <hidl/HidlSupport.h>
#include <vendor/zendra/hardware/fusd/1.2/types.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace sim {

// One token of a command line after lexing: quoted strings have their escapes
// resolved and quoted is true.
struct Token {
    std::string text;
    bool quoted = false;
};

bool parseInt64(const Token& t, int64_t* out, std::string* error);
bool parseUint64(const Token& t, uint64_t* out, std::string* error);  // also 0x hex
bool parseDouble(const Token& t, double* out, std::string* error);
bool parseFloat(const Token& t, float* out, std::string* error);  // rounded once, as strtof does
bool parseBool(const Token& t, bool* out, std::string* error);
bool parseLocation(const Token& t, android::hardware::gnss::V1_0::GnssLocation* out,
                   std::string* error);
bool parseLocation2(const Token& t, android::hardware::gnss::V2_0::GnssLocation* out,
                    std::string* error);
bool parseSvStatus(const Token& t, android::hardware::gnss::V1_0::IGnssCallback::GnssSvStatus* out,
                   std::string* error);
bool parseSvList(
    const Token& t,
    android::hardware::hidl_vec<android::hardware::gnss::V2_0::IGnssCallback::GnssSvInfo>* out,
    std::string* error);
bool parseGeofenceResults(
    const Token& t,
    android::hardware::hidl_vec<vendor::zendra::hardware::fusd::V1_2::GeofenceResult>* out,
    std::string* error);
// hex:0a0b, hex: (empty) or null (isNull set).
bool parseBytes(const Token& t, std::vector<uint8_t>* out, bool* isNull, std::string* error);

// Constellation by name or number ("GPS", "7"); satellite flags as "-", names joined
// with "|" or numbers ("USED|CARRIER", "EPH|16", "12").
bool parseConstellation(const std::string& text, uint8_t* out, std::string* error);
bool parseSvFlags(const std::string& text, uint8_t* out, std::string* error);

// An integer that must fit T: decimal, negative allowed for signed T, 0x hex.
template <typename T>
bool parseInteger(const Token& t, T* out, std::string* error) {
    static_assert(std::is_integral<T>::value, "integers only");
    if constexpr (std::is_same<T, bool>::value) {
        return parseBool(t, out, error);
    } else if constexpr (std::is_signed<T>::value) {
        int64_t value = 0;
        if (!parseInt64(t, &value, error)) return false;
        if (value < std::numeric_limits<T>::min() || value > std::numeric_limits<T>::max()) {
            *error = "\"" + t.text + "\" is out of range (" +
                     std::to_string(std::numeric_limits<T>::min()) + ".." +
                     std::to_string(std::numeric_limits<T>::max()) + ")";
            return false;
        }
        *out = static_cast<T>(value);
        return true;
    } else {
        uint64_t value = 0;
        if (!parseUint64(t, &value, error)) return false;
        if (value > std::numeric_limits<T>::max()) {
            *error = "\"" + t.text + "\" is out of range (0.." +
                     std::to_string(std::numeric_limits<T>::max()) + ")";
            return false;
        }
        *out = static_cast<T>(value);
        return true;
    }
}

}  // namespace sim
