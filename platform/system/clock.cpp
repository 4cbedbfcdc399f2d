#include "platform/system/clock.h"

#include "platform/system/services.h"

namespace platform {

using namespace std::chrono;

UtcTime utcFromUnix(milliseconds sinceEpoch) {
  const sys_time<milliseconds> moment(sinceEpoch);
  const auto midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss time(moment - midnight);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(weekday(midnight).c_encoding()),
          static_cast<int>(time.hours().count()),
          static_cast<int>(time.minutes().count()),
          static_cast<int>(time.seconds().count()),
          static_cast<int>(time.subseconds().count())};
}

UtcTime utcNow() {
  if (const auto& own = systemServices().utcNow) return own();
  return utcFromUnix(duration_cast<milliseconds>(system_clock::now().time_since_epoch()));
}

milliseconds steadyNow() {
  if (const auto& own = systemServices().steadyNow) return own();
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
}

std::uint32_t tickMilliseconds() {
  return static_cast<std::uint32_t>(steadyNow().count());
}

std::int64_t highResolutionCounter() {
  if (const auto& own = systemServices().counter) return own();
  return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

std::int64_t highResolutionFrequency() {
  return std::nano::den;
}

}  // namespace platform
