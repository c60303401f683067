#pragma once

#include <cstdint>
#include <optional>

// Seconds since 1970 as date and time of day and back, in UTC, by the Gregorian calendar reckoned
// in both directions without end. Pure arithmetic: no time zone of the process has a part in it.
struct CivilTime {
  int year;
  int month;    // 1 to 12
  int day;      // 1 to 31
  int hour;     // 0 to 23
  int minute;   // 0 to 59
  int second;   // 0 to 59; there are no leap seconds
  int weekday;  // 0 is Sunday; not read by SecondsOf
};

// Nothing when the year does not fit.
std::optional<CivilTime> CivilTimeOf(std::int64_t seconds);

// Fields beyond their ranges carry over: the 32nd of December is the first of January.
std::int64_t SecondsOf(const CivilTime& time);
