#pragma once
// Those who want to know of each point that a prompt receives.
#include <vector>

#include "host/base/kvad.h"
#include "host/geometry/point.h"

/// One point on its way to a prompt. World coordinates.
class KvEdInputPoint {
 public:
  KvEdInputPoint(const KvGePoint3d& raw, const KvGePoint3d& computed, bool isComputed)
      : raw_(raw), computed_(computed), isComputed_(isComputed) {}
  /// True when an object snap or the like made another point of the one that was given.
  bool pointComputed() const { return isComputed_; }
  const KvGePoint3d& computedPoint() const { return computed_; }
  const KvGePoint3d& rawPoint() const { return raw_; }

 private:
  KvGePoint3d raw_, computed_;
  bool isComputed_;
};

class KvEdInputPointMonitor {
 public:
  virtual ~KvEdInputPointMonitor() = default;
  /// The answer is for the signature: a monitor can't refuse a point.
  virtual Kvad::ErrorStatus monitorInputPoint(const KvEdInputPoint& input) = 0;
};

class KvEdInputPointManager {
 public:
  /// Not owned. eNullObjectPointer, eDuplicateKey.
  Kvad::ErrorStatus addPointMonitor(KvEdInputPointMonitor* monitor);
  /// eKeyNotFound.
  Kvad::ErrorStatus removePointMonitor(KvEdInputPointMonitor* monitor);
  int monitorCount() const { return static_cast<int>(monitors_.size()); }
  /// A monitor may add or remove monitors while it is told.
  void tell(const KvEdInputPoint& input);

 private:
  std::vector<KvEdInputPointMonitor*> monitors_;
};
