#include "nmea_fields.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <string>

namespace replay {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The two decimal digits at text[at], which the caller has checked are there.
int twoDigits(std::string_view text, size_t at) {
    return (text[at] - '0') * 10 + text[at + 1] - '0';
}

bool allDigits(std::string_view text) {
    for (char c : text) {
        if (!isDigit(c)) return false;
    }
    return true;
}

std::optional<double> readDegreesMinutes(std::string_view value, double limit) {
    std::optional<double> raw = readNumber(value);
    if (!raw || *raw < 0) return std::nullopt;
    double degrees = std::floor(*raw / 100);
    double result = degrees + (*raw - degrees * 100) / 60;
    if (result > limit) return std::nullopt;
    return result;
}

std::optional<double> signedByHemisphere(std::optional<double> degrees, std::string_view hemisphere,
                                         char positive, char negative) {
    if (!degrees || hemisphere.size() != 1) return std::nullopt;
    if (hemisphere[0] == positive) return degrees;
    if (hemisphere[0] == negative) return -*degrees;
    return std::nullopt;
}

}  // namespace

// A plain decimal number, as NMEA writes one. strtod rather than from_chars,
// which libc++ 14 offers for integers only; the character check keeps strtod
// from reading hex, "inf", "nan" or leading blanks that NMEA never holds.
std::optional<double> readNumber(std::string_view field) {
    if (field.empty() || field[0] == '+' ||
        field.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
        return std::nullopt;
    }
    std::string text(field);
    char* stop = nullptr;
    errno = 0;
    double value = std::strtod(text.c_str(), &stop);
    if (stop != text.c_str() + text.size() || errno == ERANGE || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<int64_t> readWholeNumber(std::string_view field) {
    int64_t value = 0;
    const char* end = field.data() + field.size();
    auto [stop, error] = std::from_chars(field.data(), end, value);
    if (field.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::optional<int> readInteger(std::string_view field) {
    std::optional<int64_t> value = readWholeNumber(field);
    if (!value || *value < INT_MIN || *value > INT_MAX) return std::nullopt;
    return static_cast<int>(*value);
}

std::optional<int64_t> readTimeOfDayMs(std::string_view field) {
    if (field.size() < 6 || !allDigits(field.substr(0, 6))) return std::nullopt;
    int hours = twoDigits(field, 0);
    int minutes = twoDigits(field, 2);
    int seconds = twoDigits(field, 4);
    if (hours > 23 || minutes > 59 || seconds > 60) return std::nullopt;
    int64_t ms = ((hours * 60 + minutes) * 60 + seconds) * int64_t{1000};
    if (field.size() == 6) return ms;
    std::string_view fraction = field.substr(7);
    if (field[6] != '.' || !allDigits(fraction)) return std::nullopt;
    int scale = 100;
    for (size_t i = 0; i < fraction.size() && i < 3; ++i, scale /= 10) {
        ms += (fraction[i] - '0') * scale;
    }
    return ms;
}

std::optional<int64_t> readDateMs(std::string_view field) {
    if (field.size() != 6 || !allDigits(field)) return std::nullopt;
    int day = twoDigits(field, 0);
    int month = twoDigits(field, 2);
    int shortYear = twoDigits(field, 4);
    if (day < 1 || day > 31 || month < 1 || month > 12) return std::nullopt;
    int year = shortYear >= 80 ? 1900 + shortYear : 2000 + shortYear;
    return daysFromCivil(year, month, day) * kMsPerDay;
}

std::optional<int64_t> readDayMonthYearMs(std::string_view day, std::string_view month,
                                          std::string_view year) {
    if (day.size() != 2 || month.size() != 2 || year.size() != 4 ||
        !allDigits(std::string(day) + std::string(month) + std::string(year))) {
        return std::nullopt;
    }
    const int d = twoDigits(day, 0);
    const int m = twoDigits(month, 0);
    const int y = twoDigits(year, 0) * 100 + twoDigits(year, 2);
    if (d < 1 || d > 31 || m < 1 || m > 12 || y < 1980 || y > 2100) return std::nullopt;
    return daysFromCivil(y, m, d) * kMsPerDay;
}

std::optional<double> readLatitude(std::string_view value, std::string_view hemisphere) {
    return signedByHemisphere(readDegreesMinutes(value, 90), hemisphere, 'N', 'S');
}

std::optional<double> readLongitude(std::string_view value, std::string_view hemisphere) {
    return signedByHemisphere(readDegreesMinutes(value, 180), hemisphere, 'E', 'W');
}

// Counts in 400-year eras starting on 0000-03-01, so that the leap day ends each year.
int64_t daysFromCivil(int year, int month, int day) {
    int64_t y = month <= 2 ? year - 1 : year;
    int64_t era = (y >= 0 ? y : y - 399) / 400;
    int64_t yearOfEra = y - era * 400;
    int64_t shiftedMonth = month > 2 ? month - 3 : month + 9;
    int64_t dayOfYear = (153 * shiftedMonth + 2) / 5 + day - 1;
    int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

std::string timeLabel(std::string_view field) {
    if (!readTimeOfDayMs(field)) return std::string();
    std::string label;
    label.append(field.substr(0, 2)).append(1, ':');
    label.append(field.substr(2, 2)).append(1, ':');
    label.append(field.substr(4, 2));
    return label;
}

}  // namespace replay
