#pragma once
// What clips a block reference: the boundary that hangs in its extension dictionary.
#include <vector>

#include "host/database/entity.h"

class KvDbSpatialFilter {
 public:
  bool isOn() const { return isOn_ && points_.size() >= 2; }
  /// In the block's own coordinates; valid as long as this object.
  KvGiClipBoundary boundary() const {
    return {toPlane_, points_.data(), static_cast<int>(points_.size()), isInverted_};
  }

 private:
  friend KvDbSpatialFilter kvdbSpatialFilterOf(const KvDbEntity& reference);
  bool isOn_ = false, isInverted_ = false;
  std::vector<KvGePoint2d> points_;
  KvGeMatrix3d toPlane_;
};

/// Off when the reference has none.
KvDbSpatialFilter kvdbSpatialFilterOf(const KvDbEntity& reference);
