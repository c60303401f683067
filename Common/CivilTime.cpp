#include "Common/CivilTime.h"

#include <limits>

namespace {

constexpr std::int64_t kSecondsADay = 86400;
constexpr std::int64_t kDaysAnEra = 146097;    // 400 years, after which the calendar repeats itself
constexpr std::int64_t kDaysToEpoch = 719468;  // from the first of March of year 0 to 1970

constexpr std::int64_t FloorDiv(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

// Years are counted from March here, so that the day which some years lack is their last.
constexpr std::int64_t DaysBeforeMonth(std::int64_t monthFromMarch) {
  return (153 * monthFromMarch + 2) / 5;
}

constexpr std::int64_t DaysBeforeYear(std::int64_t yearOfEra) {
  return yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100;
}

}  // namespace

std::optional<CivilTime> CivilTimeOf(std::int64_t seconds) {
  const std::int64_t days = FloorDiv(seconds, kSecondsADay);
  const auto rest = static_cast<int>(seconds % kSecondsADay);
  const int ofDay = rest < 0 ? rest + static_cast<int>(kSecondsADay) : rest;

  const std::int64_t fromMarch = days + kDaysToEpoch;
  const std::int64_t era = FloorDiv(fromMarch, kDaysAnEra);
  const std::int64_t dayOfEra = fromMarch - era * kDaysAnEra;
  // Takes out the days that leap years have added, each behind the last year that it belongs to.
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - DaysBeforeYear(yearOfEra);
  const std::int64_t month = (5 * dayOfYear + 2) / 153;
  const std::int64_t year = era * 400 + yearOfEra + (month >= 10 ? 1 : 0);
  if (year < std::numeric_limits<int>::min() || year > std::numeric_limits<int>::max())
    return std::nullopt;

  return CivilTime{static_cast<int>(year),
                   static_cast<int>(month < 10 ? month + 3 : month - 9),
                   static_cast<int>(dayOfYear - DaysBeforeMonth(month) + 1),
                   ofDay / 3600,
                   ofDay / 60 % 60,
                   ofDay % 60,
                   static_cast<int>(days + 4 - FloorDiv(days + 4, 7) * 7)};  // 1970: a Thursday
}

std::int64_t SecondsOf(const CivilTime& time) {
  const std::int64_t months = std::int64_t{time.year} * 12 + time.month - 3;  // since March of 0
  const std::int64_t year = FloorDiv(months, 12);
  const std::int64_t era = FloorDiv(year, 400);
  const std::int64_t days = era * kDaysAnEra + DaysBeforeYear(year - era * 400) +
                            DaysBeforeMonth(months - year * 12) + time.day - 1 - kDaysToEpoch;
  return days * kSecondsADay + std::int64_t{time.hour} * 3600 + std::int64_t{time.minute} * 60 +
         time.second;
}
