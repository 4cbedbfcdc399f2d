#include "module/entity/drawing_values.h"

#include <cmath>
#include <cwchar>

#include "host/database/database.h"
#include "host/editor/views.h"
#include "module/core/host_values.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr double kQuarterTurn = 1.5707963267948966;
constexpr double kInchesPerMillimetre = 0.03937007874015748;
constexpr int kHeightCode = 40;

void precisionForm(const wchar_t* variable, wchar_t* out) {
  if (!out) return;
  int decimals = 0;
  mek::readIntVariable(variable, decimals);
  CString form;
  form.Format(L"%%.%df", decimals);
  std::wcscpy(out, form);
}

}  // namespace

double distance(const double a[3], const double b[3]) {
  if (!a || !b) return 0;
  return std::hypot(b[0] - a[0], b[1] - a[1]);
}

double dist(const double p1[3], double angle, const double p2[3]) {
  if (!p1 || !p2) return 0;
  if (angle == 0.0) return std::fabs(p2[1] - p1[1]);
  if (angle == kQuarterTurn) return std::fabs(p2[0] - p1[0]);
  const double t = std::tan(angle);
  kvds_point foot = {0, 0, 0};
  foot[0] = (t * p1[0] + p2[0] / t + p2[1] - p1[1]) / (t + 1 / t);
  foot[1] = t * (foot[0] - p1[0]) + p1[1];
  return distance(foot, p2);
}

double get_cur_text_h() {
  CString style;
  double height = 0;
  mek::readTextVariable(L"TEXTSTYLE", style);
  if (resbuf* record = kvdbTblSearch(L"STYLE", style, 0)) {
    Use_get_real(record, height, kHeightCode);
    kvutRelRb(record);
  }
  if (height == 0.0) mek::readRealVariable(L"TEXTSIZE", height);
  return height;
}

void luprec(wchar_t* out) {
  precisionForm(L"LUPREC", out);
}
void auprec(wchar_t* out) {
  precisionForm(L"AUPREC", out);
}

void refreshView(KvGsView* view) {
  if (!view) return;
  view->invalidate();
  view->update();
}

double IM_GetHatchScale(double scale) {
  int measurement = 0;
  mek::readIntVariable(L"MEASUREMENT", measurement);
  return measurement == 0 ? scale : scale * kInchesPerMillimetre;
}
