#pragma once

#include <cstdint>
#include <string>

#include "Common/CText.h"

// Points in time as texts, in ASCII. An empty handle: the year does not fit.

// A point in time, and the zone in which to show it.
struct ZonedTime {
  std::int64_t seconds;        // since 1970, UTC
  std::uint16_t milliseconds;  // 0 to 999
  std::int16_t zone;           // minutes west of UTC

  bool operator==(const ZonedTime&) const = default;
};

// Now, in the time zone of the process.
ZonedTime CurrentZonedTime();

// Whole seconds, in UTC; the file-name form goes before the other switch:
//
//   2024-06-11 12:30:05 +0000    with a blank
//   2024-06-11T12:30:05+0000     tFormat
//   2024-06-11_12-30-05_+0000    fileNameForm
CText FormatTimestamp(std::int64_t seconds, bool tFormat, bool fileNameForm);

// Milliseconds, in the time's own zone:
//
//   2024-06-11 14:30:05.007 +02:00
//   2024-06-11T14:30:05.007+02:00
//   2024-06-11_14-30-05-007_+0200
//
// Contract: the sign is the hours'. Less than an hour west of UTC is written "+00" all the same.
CText FormatTimestamp(const ZonedTime& time, bool tFormat, bool fileNameForm);

// Reads what the form with milliseconds writes; false, and time as it was, for anything else. The
// zone of the process has no part in it.
// Contract: a fraction is a number of milliseconds however many digits it has, ".6" are 6 of them;
// and every sign but "+" is a minus.
bool ParseTimestamp(const std::string& text, bool tFormat, bool fileNameForm, ZonedTime& time);

// As HTTP writes it: "Thu, 01 Jan 1970 00:00:00 GMT".
CText HttpDate(std::int64_t seconds);
