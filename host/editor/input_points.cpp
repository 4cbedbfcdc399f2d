#include "host/editor/input_points.h"

#include <algorithm>

Kvad::ErrorStatus KvEdInputPointManager::addPointMonitor(KvEdInputPointMonitor* monitor) {
  if (!monitor) return Kvad::eNullObjectPointer;
  if (std::find(monitors_.begin(), monitors_.end(), monitor) != monitors_.end()) return Kvad::eDuplicateKey;
  monitors_.push_back(monitor);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvEdInputPointManager::removePointMonitor(KvEdInputPointMonitor* monitor) {
  const auto found = std::find(monitors_.begin(), monitors_.end(), monitor);
  if (found == monitors_.end()) return Kvad::eKeyNotFound;
  monitors_.erase(found);
  return Kvad::eOk;
}

void KvEdInputPointManager::tell(const KvEdInputPoint& input) {
  const auto present = monitors_;
  for (KvEdInputPointMonitor* monitor : present)
    if (std::find(monitors_.begin(), monitors_.end(), monitor) != monitors_.end())
      monitor->monitorInputPoint(input);
}
