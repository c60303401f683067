#include "Common/TimeStamp.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "Common/CivilTime.h"
#include "Libs/Platform/LocalTime.h"

namespace {

constexpr std::size_t kLongestStamp = 100;

enum Form { kWithBlank, kWithT, kFileName };

Form FormOf(bool tFormat, bool fileNameForm) {
  if (fileNameForm) return kFileName;
  return tFormat ? kWithT : kWithBlank;
}

constexpr const char* kSecondsForms[] = {
    "%04d-%02d-%02d %02d:%02d:%02d +0000",
    "%04d-%02d-%02dT%02d:%02d:%02d+0000",
    "%04d-%02d-%02d_%02d-%02d-%02d_+0000",
};
constexpr const char* kMillisecondsForms[] = {
    "%04d-%02d-%02d %02d:%02d:%02d.%03hu %+03hd:%02hd",
    "%04d-%02d-%02dT%02d:%02d:%02d.%03hu%+03hd:%02hd",
    "%04d-%02d-%02d_%02d-%02d-%02d-%03hu_%+03hd%02hd",
};
constexpr const char* kReadForms[] = {
    "%4d-%2d-%2d %2d:%2d:%2d.%3hu %c%2hd:%2hd",
    "%4d-%2d-%2dT%2d:%2d:%2d.%3hu%c%2hd:%2hd",
    "%4d-%2d-%2d_%2d-%2d-%2d-%3hu_%c%2hd%2hd",
};

template <class... Fields>
CText Print(const char* form, Fields... fields) {
  char text[kLongestStamp];
  const int size = std::snprintf(text, sizeof text, form, fields...);
  if (size < 0 || static_cast<std::size_t>(size) >= sizeof text) return CText();
  return CText(std::string_view(text, static_cast<std::size_t>(size)), Charset::Ascii);
}

}  // namespace

ZonedTime CurrentZonedTime() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
  const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(now - seconds);
  return {seconds.count(), static_cast<std::uint16_t>(rest.count()),
          static_cast<std::int16_t>(-SecondsEastOfUtc(seconds.count()) / 60)};
}

CText FormatTimestamp(std::int64_t seconds, bool tFormat, bool fileNameForm) {
  const auto at = CivilTimeOf(seconds);
  if (!at) return CText();
  return Print(kSecondsForms[FormOf(tFormat, fileNameForm)], at->year, at->month, at->day, at->hour,
               at->minute, at->second);
}

CText FormatTimestamp(const ZonedTime& time, bool tFormat, bool fileNameForm) {
  if (!CivilTimeOf(time.seconds)) return CText();  // so that the difference cannot overflow
  const auto at = CivilTimeOf(time.seconds - std::int64_t{time.zone} * 60);
  if (!at) return CText();

  const int east = -time.zone;
  return Print(kMillisecondsForms[FormOf(tFormat, fileNameForm)], at->year, at->month, at->day,
               at->hour, at->minute, at->second, time.milliseconds, static_cast<short>(east / 60),
               static_cast<short>(std::abs(east) % 60));
}

bool ParseTimestamp(const std::string& text, bool tFormat, bool fileNameForm, ZonedTime& time) {
  CivilTime at{};
  unsigned short milliseconds = 0;
  char sign = 0;
  short hours = 0;
  short minutes = 0;
  const int read = std::sscanf(text.c_str(), kReadForms[FormOf(tFormat, fileNameForm)], &at.year,
                               &at.month, &at.day, &at.hour, &at.minute, &at.second, &milliseconds,
                               &sign, &hours, &minutes);
  if (read != 10) return false;

  const int distance = hours * 60 + minutes;
  const int zone = sign == '+' ? -distance : distance;
  time = {SecondsOf(at) + zone * 60, milliseconds, static_cast<std::int16_t>(zone)};
  return true;
}

CText HttpDate(std::int64_t seconds) {
  // Not strftime: its names follow the locale.
  static constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto at = CivilTimeOf(seconds);
  if (!at) return CText();
  return Print("%s, %02d %s %04d %02d:%02d:%02d GMT", kWeekdays[at->weekday], at->day,
               kMonths[at->month - 1], at->year, at->hour, at->minute, at->second);
}
