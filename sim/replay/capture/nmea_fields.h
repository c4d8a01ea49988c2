// Reading the values inside NMEA fields. Every reader returns nothing for an empty or
// malformed field, so a sentence with a bad field is treated like one with an empty field.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace replay {

constexpr int64_t kMsPerDay = 86400000;

std::optional<double> readNumber(std::string_view field);
std::optional<int> readInteger(std::string_view field);
std::optional<int64_t> readWholeNumber(std::string_view field);

// "hhmmss" with any number of fraction digits; milliseconds since UTC midnight (fraction
// digits past the third are dropped).
std::optional<int64_t> readTimeOfDayMs(std::string_view field);

// "ddmmyy" as RMC sends it; UTC midnight of that day in ms since the epoch. Two-digit years
// 80-99 are 1980-1999, the rest 2000-2079.
std::optional<int64_t> readDateMs(std::string_view field);

// Day, month and four-digit year, as ZDA sends them; UTC midnight of that day.
std::optional<int64_t> readDayMonthYearMs(std::string_view day, std::string_view month,
                                          std::string_view year);

// "ddmm.mmmm"/"dddmm.mmmm" and its hemisphere letter, in signed degrees.
std::optional<double> readLatitude(std::string_view value, std::string_view hemisphere);
std::optional<double> readLongitude(std::string_view value, std::string_view hemisphere);

// Days from 1970-01-01 to the given proleptic Gregorian date, without the host's clock or
// time zone.
int64_t daysFromCivil(int year, int month, int day);

// "hh:mm:ss" of a time field that readTimeOfDayMs accepts, else empty.
std::string timeLabel(std::string_view field);

}  // namespace replay
