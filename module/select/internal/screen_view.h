#pragma once
// The map from world to device coordinates by the variables that describe the view.
#include "host/geometry/matrix.h"

namespace mek {

/// Of a screen of that many pixels, by VIEWDIR, VIEWCTR, VIEWSIZE and VIEWTWIST.
KvGeMatrix3d worldToDeviceByVariables(double width, double height);

}  // namespace mek
