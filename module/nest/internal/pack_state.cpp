#include "module/nest/internal/pack_state.h"

#include <algorithm>
#include <iterator>

#include "module/nest/debug_sink.h"

namespace mek::pack {
namespace {

struct PackState {
  AllInfo3D info;
  Box3D boxes[kTableSide];
  Box3D incumbent[kTableSide];
  Box3D best[kTableSide];
  Box3D scratch[kTableSide];
  Box3D* closing[kTableSide];
  Layer3D layers[kTableSide];
  FitMemo memo, cut;
  RelationTables relations;
  RobotTables robot;
};

PackState state;

}  // namespace

FitMemo& fitMemo() {
  return state.memo;
}
FitMemo& cutMemo() {
  return state.cut;
}
RelationTables& relationTables() {
  return state.relations;
}
RobotTables& robotTables() {
  return state.robot;
}
std::span<Box3D> scratchBoxes() {
  return state.scratch;
}
std::span<Layer3D> layerTable() {
  return state.layers;
}

AllInfo3D& resetPackState(int n) {
  state.info = AllInfo3D{};
  AllInfo3D& a = state.info;
  a.n = toShort(n);
  a.boxes = std::span(state.boxes).first(at(n));
  a.incumbent = std::span(state.incumbent).first(at(n));
  a.best = std::span(state.best).first(at(n));
  a.closing = state.closing;
  for (std::span<Box3D> range : {a.boxes, a.incumbent, a.best})
    for (Box3D& box : range) box = Box3D{};
  a.z = toShort(n + 1);
  for (FitMemo* memo : {&state.memo, &state.cut}) std::fill(std::begin(memo->sets), std::end(memo->sets), 0);
  a.start = std::chrono::steady_clock::now();
  return a;
}

void reportText(const std::string& text) {
  writeDebug(text + "\nIRREGULAR PROGRAM TERMINATION\n");
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void testLimits(AllInfo3D& a) {
  if (a.stopped) return;
  const char* met = nullptr;
  if (a.nodelimit != 0 && a.nodes >= a.nodelimit)
    met = "NODELIMIT\n";
  else if (a.iterlimit != 0 && a.iterations >= a.iterlimit)
    met = "ITERLIMIT\n";
  else if (a.timelimit != 0 && secondsSince(a.start) >= a.timelimit)
    met = "TIMELIMIT\n";
  if (!met) return;
  a.stopped = true;
  writeDebug(met);
}

void countNode(AllInfo3D& a) {
  if (++a.nodesLow == kThousand) {
    a.nodesLow = 0;
    ++a.nodes;
  }
  testLimits(a);
}

void countIteration(AllInfo3D& a) {
  if (++a.iterationsLow < kThousand) return;
  a.iterationsLow = 0;
  ++a.iterations;
  testLimits(a);
}

}  // namespace mek::pack
