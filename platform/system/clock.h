#pragma once
// Clocks. Each asks the services in force (platform/system/services.h), so a test can stop the time.
#include <chrono>
#include <cstdint>

namespace platform {

/// A moment in universal time; month and day from 1, Sunday is day 0 of the week.
struct UtcTime {
  int year = 1970, month = 1, day = 1, dayOfWeek = 4;
  int hour = 0, minute = 0, second = 0, millisecond = 0;
  friend bool operator==(const UtcTime&, const UtcTime&) = default;
};

UtcTime utcNow();
UtcTime utcFromUnix(std::chrono::milliseconds sinceEpoch);

/// Time since some moment in the past that never runs backward.
std::chrono::milliseconds steadyNow();
std::uint32_t tickMilliseconds();  ///< the same, wrapping after 49.7 days

std::int64_t highResolutionCounter();
std::int64_t highResolutionFrequency();  ///< counts in a second; constant

}  // namespace platform
