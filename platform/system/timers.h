#pragma once
// Timers that fire on the main thread, whenever its message loop comes round: between commands and while a
// prompt waits.
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace platform {

/// Periodic timers. A timer that missed several periods fires once, and its next period begins then. Not for
/// use by several threads.
class TimerQueue {
 public:
  using Id = std::uintptr_t;
  using Time = std::chrono::milliseconds;
  using Callback = std::function<void(Id)>;

  static constexpr Time kShortest{10};           ///< a shorter period is lengthened to this
  static constexpr Time kLongest{0x7FFFFFFF};    ///< a longer one is cut
  static constexpr Id kFirstFree = Id{1} << 32;  ///< ids that the queue makes itself begin here

  /// `clock` gives the time since some fixed moment; by default platform::steadyNow.
  explicit TimerQueue(std::function<Time()> clock = {});

  /// A new timer with an id of its own, never 0.
  Id set(Time period, Callback callback);
  /// A timer with a wanted id; one of that id is replaced. 0 asks for an id of its own.
  Id set(Id id, Time period, Callback callback);
  bool kill(Id id);  ///< false when there is none; the running callback may kill its own timer
  bool has(Id id) const { return timers_.contains(id); }

  /// Fires what is due, in the order of due times, then of ids; answers how many fired. A timer whose
  /// callback is running doesn't fire again inside it, and timers set meanwhile wait for the next call.
  int runDue();
  int runDue(Time now);
  std::optional<Time> nextDue() const;  ///< on the queue's clock; none without timers
  Time now() const { return clock_(); }

 private:
  struct Timer {
    Time period, due;
    Callback callback;
    std::uint64_t serial;  ///< tells a timer from one that took over its id
    bool running = false;
  };

  std::function<Time()> clock_;
  std::map<Id, Timer> timers_;
  Id nextId_ = kFirstFree;
  std::uint64_t nextSerial_ = 0;
};

}  // namespace platform
