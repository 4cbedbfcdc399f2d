#pragma once
// Layouts and viewports as plots need them, read from the groups of their objects.
#include <unordered_set>
#include <vector>

#include "host/database/database.h"
#include "host/geometry/point.h"

namespace kvgr {

/// Lengths in millimetres unless it says otherwise.
struct LayoutRecord {
  CString name;
  int tabOrder = 0;
  KvDbObjectId block;
  double paperWidth = 0, paperHeight = 0;
  double marginLeft = 0, marginBottom = 0, marginRight = 0, marginTop = 0;
  double originX = 0, originY = 0;
  double scale = 1;  ///< millimetres of paper for one unit of the sheet
  int rotation = 0;  ///< quarter turns
  bool isModel = false;
};
/// In tab order.
std::vector<LayoutRecord> layoutsOf(const KvDbDatabase& database);

/// A window of a sheet to model space.
struct ViewportRecord {
  KvGePoint3d center;  ///< on the sheet, in its units
  double width = 0, height = 0;
  int number = 0;
  bool isOn = true;
  KvGePoint2d viewCenter;            ///< in the view's own plane
  double viewHeight = 0, twist = 0;  ///< radians
  KvGeVector3d direction = KvGeVector3d::kZAxis;
  KvGePoint3d target;
  std::unordered_set<KvDbObjectId> frozenLayers;
  KvDbObjectId clip;  ///< the outline, where it isn't the rectangle
};
/// False when the object is no viewport.
bool readViewport(const KvDbObject& object, ViewportRecord& viewport);

}  // namespace kvgr
