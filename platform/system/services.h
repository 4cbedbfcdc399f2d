#pragma once
// What the system layer takes from the machine, and a test or an embedding host may replace. Main thread
// only, like the environment.
#include <functional>
#include <optional>

#include "platform/system/clock.h"
#include "platform/system/dates.h"

namespace platform {

/// Whatever is left empty is the machine's own.
struct SystemServices {
  std::function<UtcTime()> utcNow;
  std::function<std::chrono::milliseconds()> steadyNow;
  std::function<std::int64_t()> counter;  ///< in nanoseconds
  std::optional<DateNames> dates;
  std::function<void(std::wstring_view)> debugOutput;
};

/// The services in force.
const SystemServices& systemServices();

/// Puts services in force for its own lifetime; the caller keeps ownership.
class ScopedSystemServices {
 public:
  explicit ScopedSystemServices(const SystemServices& services);
  ~ScopedSystemServices();
  ScopedSystemServices(const ScopedSystemServices&) = delete;
  ScopedSystemServices& operator=(const ScopedSystemServices&) = delete;

 private:
  const SystemServices* previous_;
};

}  // namespace platform
