#include <array>

#include "host/editor/selection.h"
#include "host/editor/ucs.h"
#include "host/editor/views.h"
#include "module/core/host_values.h"
#include "module/select/internal/screen_view.h"
#include "module/select/picking.h"
#include "module/select/sets.h"

namespace {

constexpr int kPlanViewport = 2;

/// Two opposite corners of the screen, in device coordinates, and the map from the world to them.
struct Screen {
  KvGePoint3d corners[2];
  KvGeMatrix3d worldToDevice;
};

Screen currentScreen() {
  Screen screen;
  kvds_point size = {0, 0, 0};
  mek::readPointVariable(L"SCREENSIZE", size);
  screen.corners[1] = {size[0], size[1], 0};
  int viewport = kPlanViewport;
  mek::readIntVariable(L"CVPORT", viewport);
  if (const KvGsView* view = kvgsGetGsView(viewport, false)) {
    KvGePoint2d lowerLeft, upperRight;
    view->getViewport(lowerLeft, upperRight);
    screen.corners[0] = {lowerLeft.x, lowerLeft.y, 0};
    screen.corners[1] = {upperRight.x, upperRight.y, 0};
    screen.worldToDevice = view->worldToDeviceMatrix();
  } else {
    screen.worldToDevice = mek::worldToDeviceByVariables(size[0], size[1]);
  }
  return screen;
}

}  // namespace

KvGeMatrix3d mek::worldToDeviceByVariables(double width, double height) {
  kvds_point direction = {0, 0, 1}, center = {0, 0, 0};
  double viewHeight = height, twist = 0;
  readPointVariable(L"VIEWDIR", direction);
  kvdbUcs2Wcs(direction, direction, true);
  readPointVariable(L"VIEWCTR", center);
  kvdbUcs2Wcs(center, center, false);
  readRealVariable(L"VIEWSIZE", viewHeight);
  readRealVariable(L"VIEWTWIST", twist);
  const double scale = height > 0 && viewHeight > 0 ? height / viewHeight : 1;
  const KvGeVector3d toEye(direction[0], direction[1], direction[2]);
  return KvGeMatrix3d::translation({width / 2, height / 2, 0}) * KvGeMatrix3d::scaling(scale) *
         KvGeMatrix3d::worldToPlane(toEye.normal()) * KvGeMatrix3d::rotation(twist, toEye) *
         KvGeMatrix3d::translation({-center[0], -center[1], -center[2]});
}

int IM_GetSelectSetOnScreen(KvArray<KvDbObjectId>& ids, const resbuf* filter) {
  ids.removeAll();
  const Screen screen = currentScreen();
  const KvGeMatrix3d deviceToWorld = screen.worldToDevice.inverse();
  std::array<kvds_point, 2> corners;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const KvGePoint3d world = deviceToWorld * screen.corners[i];
    const kvds_point point = {world.x, world.y, world.z};
    kvdbWcs2Ucs(point, corners[i], false);
  }
  kvds_name set = {0, 0};
  if (kvedSSGet(L"_C", corners[0], corners[1], filter, set) != RTNORM) return 0;
  IM_AdsSetToObjectIdArray(set, ids);
  kvedSSFree(set);
  return 1;
}
