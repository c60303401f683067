#include "Libs/Platform/LocalTime.h"

#include <ctime>

std::int64_t SecondsEastOfUtc(std::int64_t seconds) {
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm local{};
  return localtime_r(&time, &local) ? local.tm_gmtoff : 0;
}
