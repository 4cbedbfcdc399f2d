#include "platform/system/timers.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "platform/system/clock.h"

namespace platform {

TimerQueue::TimerQueue(std::function<Time()> clock) : clock_(std::move(clock)) {
  if (!clock_) clock_ = steadyNow;
}

TimerQueue::Id TimerQueue::set(Time period, Callback callback) {
  return set(0, period, std::move(callback));
}

TimerQueue::Id TimerQueue::set(Id id, Time period, Callback callback) {
  if (id == 0) id = nextId_++;
  const Time held = std::clamp(period, kShortest, kLongest);
  timers_.insert_or_assign(id, Timer{held, clock_() + held, std::move(callback), nextSerial_++});
  return id;
}

bool TimerQueue::kill(Id id) {
  return timers_.erase(id) != 0;
}

int TimerQueue::runDue() {
  return runDue(clock_());
}

int TimerQueue::runDue(Time now) {
  std::vector<std::tuple<Time, Id, std::uint64_t>> due;
  for (const auto& [id, timer] : timers_)
    if (timer.due <= now && !timer.running) due.emplace_back(timer.due, id, timer.serial);
  std::sort(due.begin(), due.end());
  int fired = 0;
  const auto find = [&](Id id, std::uint64_t serial) -> Timer* {
    const auto at = timers_.find(id);
    return at != timers_.end() && at->second.serial == serial ? &at->second : nullptr;
  };
  for (const auto& [when, id, serial] : due) {
    Timer* timer = find(id, serial);
    if (!timer || timer->running || timer->due > now) continue;
    timer->due = now + timer->period;
    timer->running = true;
    // A copy: the callback may kill its own timer, and with it what is being called.
    const Callback callback = timer->callback;
    if (callback) callback(id);
    ++fired;
    if (Timer* still = find(id, serial)) still->running = false;
  }
  return fired;
}

std::optional<TimerQueue::Time> TimerQueue::nextDue() const {
  std::optional<Time> earliest;
  for (const auto& [id, timer] : timers_)
    if (!timer.running && (!earliest || timer.due < *earliest)) earliest = timer.due;
  return earliest;
}

}  // namespace platform
