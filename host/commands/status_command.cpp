// STATUS, TIME, MASSPROP.
#include <cmath>

#include "host/commands/internal/choices.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/database/header.h"
#include "host/database/layout.h"
#include "host/entities/region.h"

namespace kvcmd {
namespace {

CString flatText(const KvGePoint3d& p) {
  return lengthText(p.x) + L"," + lengthText(p.y);
}

const wchar_t* onOff(const wchar_t* name) {
  return variable(name, 0) != 0 ? L"ON" : L"OFF";
}

void runStatus() {
  if (!drawing()) return;
  const KvDbHeader& header = drawing()->header();
  const bool isModel = drawing()->tilemode();
  int count = 0;
  KvDbExtents all;
  if (const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId()))
    for (KvDbObjectId id : space->entities()) {
      KvDbExtents own;
      ++count;
      const auto* entity = look<KvDbEntity>(id);
      if (entity && entity->getGeomExtents(own) == Kvad::eOk) all.addExt(own);
    }
  say(countOf(count, isModel ? L"objects in model space" : L"objects on the sheet"));
  say(L"Limits are             " + flatText(header.point(isModel ? L"$LIMMIN" : L"$PLIMMIN")) + L"  to  " +
      flatText(header.point(isModel ? L"$LIMMAX" : L"$PLIMMAX")) +
      (header.whole(isModel ? L"$LIMCHECK" : L"$PLIMCHECK") != 0 ? L"  (On)" : L"  (Off)"));
  say(all.isEmpty()
          ? CString(L"The drawing uses       *Nothing*")
          : L"The drawing uses       " + flatText(all.minPoint()) + L"  to  " + flatText(all.maxPoint()));
  const KvEdView view = kvedViewOf(*drawing());
  say(L"Display shows          " + lengthText(view.height) + L" high, about " + lengthText(view.center.x) +
      L"," + lengthText(view.center.y));
  say(L"Insertion base is      " + pointText(header.point(isModel ? L"$INSBASE" : L"$PINSBASE")));
  const auto snap = variable(L"SNAPUNIT", KvEdVarPoint{}), grid = variable(L"GRIDUNIT", KvEdVarPoint{});
  say(L"Snap resolution is     " + lengthText(snap.x) + L"," + lengthText(snap.y));
  say(L"Grid spacing is        " + lengthText(grid.x) + L"," + lengthText(grid.y));
  say(L"Current space:         " + CString(isModel ? L"Model space" : L"Paper space"));
  say(L"Current layout:        " + drawing()->layoutManager().currentLayoutName());
  say(L"Current layer:         \"" + kvdbRecordName(drawing()->clayer()) + L"\"");
  say(L"Current color:         " + variable(L"CECOLOR", CString()));
  say(L"Current linetype:      \"" + kvdbRecordName(drawing()->celtype()) + L"\"");
  say(L"Current lineweight:    " + lineWeightText(drawing()->celweight()));
  say(L"Current elevation:     " + lengthText(drawing()->elevation()) + L"  thickness: " +
      lengthText(drawing()->thickness()));
  say(CString(L"Fill ") + onOff(L"FILLMODE") + L"  Grid " + onOff(L"GRIDMODE") + L"  Ortho " +
      onOff(L"ORTHOMODE") + L"  Qtext " + onOff(L"QTEXTMODE") + L"  Snap " + onOff(L"SNAPMODE"));
  CString steps;
  steps.Format(L"Steps that can be undone: %d, redone: %d", drawing()->undoRecorder().undoCount(),
               drawing()->undoRecorder().redoCount());
  say(steps);
}

/// A Julian day number with its fraction as a date and a time.
CString dateText(double julian) {
  if (!(julian > 0) || !(julian < 1e7)) return L"(not known)";
  constexpr int kMillisecondsOfDay = 86'400'000;
  long long day = static_cast<long long>(std::floor(julian));
  long long ms = std::llround((julian - static_cast<double>(day)) * kMillisecondsOfDay);
  if (ms >= kMillisecondsOfDay) {
    ms -= kMillisecondsOfDay;
    ++day;
  }
  // The inverse of counting days in the Gregorian calendar, as Fliegel and Van Flandern gave it in 1968.
  long long l = day + 68569;
  const long long n = 4 * l / 146097;
  l -= (146097 * n + 3) / 4;
  const long long i = 4000 * (l + 1) / 1461001;
  l -= 1461 * i / 4 - 31;
  const long long j = 80 * l / 2447;
  const int date = static_cast<int>(l - 2447 * j / 80);
  l = j / 11;
  CString text;
  text.Format(L"%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(100 * (n - 49) + i + l),
              static_cast<int>(j + 2 - 12 * l), date, static_cast<int>(ms / 3'600'000),
              static_cast<int>(ms / 60'000 % 60), static_cast<int>(ms / 1000 % 60));
  return text;
}

CString spanText(double days) {
  const long long seconds = std::isfinite(days) && days > 0 && days < 1e7 ? std::llround(days * 86400) : 0;
  CString text;
  text.Format(L"%d days %02d:%02d:%02d", static_cast<int>(seconds / 86400),
              static_cast<int>(seconds / 3600 % 24), static_cast<int>(seconds / 60 % 60),
              static_cast<int>(seconds % 60));
  return text;
}

void runTime() {
  if (!drawing()) return;
  const KvDbHeader& header = drawing()->header();
  say(L"Current time (UTC):    " + dateText(variable(L"DATE", 0.0)));
  say(L"Created:               " + dateText(header.real(L"$TDCREATE")));
  say(L"Last updated:          " + dateText(header.real(L"$TDUPDATE")));
  say(L"Total editing time:    " + spanText(header.real(L"$TDINDWG")));
  say(L"Elapsed timer:         " + spanText(header.real(L"$TDUSRTIMER")));
}

void runMassprop() {
  if (!drawing()) return;
  KvDbExtents all;
  double area = 0, around = 0;
  KvGeVector3d moment;
  int count = 0;
  for (KvDbObjectId id : select(nullptr, true)) {
    const auto* region = look<KvDbRegion>(id);
    double own = 0, length = 0;
    KvDbExtents box;
    if (!region || region->getArea(own) != Kvad::eOk || region->getPerimeter(length) != Kvad::eOk) continue;
    if (region->getGeomExtents(box) == Kvad::eOk) all.addExt(box);
    area += own;
    around += length;
    moment = moment + region->shape().centroid().asVector() * own;
    ++count;
  }
  if (count == 0) return fail(L"No region with a known shape selected.");
  say(L"Area:          " + lengthText(area));
  say(L"Perimeter:     " + lengthText(around));
  say(L"Bounding box:  " + flatText(all.minPoint()) + L"  to  " + flatText(all.maxPoint()));
  if (area > 0) say(L"Centroid:      " + pointText(toUser(KvGePoint3d::kOrigin + moment * (1 / area))));
}

constexpr KvCommandRow kRows[] = {
    {L"MASSPROP", L"", KVRX_CMD_USEPICKSET, runMassprop, L"Tells area, perimeter and centroid of regions.",
     L"Select objects:"},
    {L"STATUS", L"", KVRX_CMD_TRANSPARENT, runStatus, L"Tells of the drawing and its settings.", L""},
    {L"TIME", L"", KVRX_CMD_TRANSPARENT, runTime, L"Tells when the drawing was made and changed.", L""},
};

}  // namespace

std::span<const KvCommandRow> statusRows() {
  return kRows;
}

}  // namespace kvcmd
