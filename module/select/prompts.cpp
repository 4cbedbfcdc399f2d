#include "module/select/prompts.h"

#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "host/editor/views.h"
#include "module/toolkit/geometry.h"

namespace {

/// The product's own two pi.
constexpr double kTurn = 6.2831853072;
constexpr int kPickedPoint = 3, kTrackedPoint = 5, kOtherButton = 12;

/// A point of the world in user coordinates; null stays null.
class UserPoint {
 public:
  explicit UserPoint(const double* world) : isGiven_(world != nullptr) {
    if (world) IM_WcsToUcs(world, point_);
  }
  operator const double*() const { return isGiven_ ? point_ : nullptr; }

 private:
  bool isGiven_;
  kvds_point point_ = {0, 0, 0};
};

int toWorld(int status, double* point) {
  if (status == RTNORM) IM_UcsToWcs(point);
  return status;
}

}  // namespace

int IM_ADS_GETPOINT(const double base[3], LPCWSTR prompt, double out[3]) {
  return toWorld(kvedGetPoint(base, prompt, out), out);
}
int IM_ADS_GETPOINT_WCS(const double base[3], LPCWSTR prompt, double out[3]) {
  return IM_ADS_GETPOINT(UserPoint(base), prompt, out);
}
int IM_ADS_GETCORNER(const double base[3], LPCWSTR prompt, double out[3]) {
  return toWorld(kvedGetCorner(base, prompt, out), out);
}
int IM_ADS_GETCORNER_WCS(const double base[3], LPCWSTR prompt, double out[3]) {
  return IM_ADS_GETCORNER(UserPoint(base), prompt, out);
}

int IM_ADS_GETANGLE(const double base[3], LPCWSTR prompt, double* angle) {
  const int status = kvedGetAngle(UserPoint(base), prompt, angle);
  if (status != RTNORM) return status;
  *angle += IM_GetUcsAngle();
  if (*angle > kTurn) *angle -= kTurn;
  return status;
}
int IM_ADS_GETDIST(const double base[3], LPCWSTR prompt, double* dist) {
  return kvedGetDist(UserPoint(base), prompt, dist);
}

int IM_ADS_ENTSEL(LPCWSTR prompt, long long name[2], double point[3]) {
  IM_WcsToUcs(point);
  return toWorld(kvedEntSel(prompt, name, point), point);
}
int IM_ADS_NENTSEL(LPCWSTR prompt, long long name[2], double point[3], double matrix[4][3],
                   resbuf** containers) {
  IM_WcsToUcs(point);
  return toWorld(kvedNEntSel(prompt, name, point, matrix, containers), point);
}
int IM_ADS_NENTSELP(LPCWSTR prompt, long long name[2], double point[3], int pickFlag, double matrix[4][4],
                    resbuf** containers) {
  IM_WcsToUcs(point);
  const int status = kvedNEntSelP(prompt, name, point, pickFlag, matrix, containers);
  IM_UcsToWcs(point);
  return status;
}

int IM_ADS_GRDRAW(const double from[3], const double to[3], int colour, int highlight) {
  return kvedGrDraw(UserPoint(from), UserPoint(to), colour, highlight);
}

int IM_ADS_GRREAD(int track, int* type, resbuf* result) {
  const int status = kvedGrRead(track, type, result);
  if (status != RTNORM || !result || !type) return status;
  if (*type == kPickedPoint || *type == kTrackedPoint || *type == kOtherButton)
    IM_UcsToWcs(result->resval.rpoint);
  return status;
}
