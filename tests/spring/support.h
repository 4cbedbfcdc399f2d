#pragma once
// All functions that draw springs, and a drawing to draw them into.
#include <cwchar>

#include "module/spring/springs.h"
#include "tests/toolkit/symbol_support.h"

namespace test {

using View = int (*)(double*, double, double, double, double);
using Form = int (*)(double*, double, double, double);

struct NamedView {
  const char* name;
  View draw;
  int fewest;
};
inline constexpr NamedView kViews[] = {
    {"DrawCompSpring1", DrawCompSpring1, 3}, {"DrawCompSpring2", DrawCompSpring2, 3},
    {"DrawCompSpring3", DrawCompSpring3, 3}, {"DrawCompSpring4", DrawCompSpring4, 3},
    {"DrawCompSpring5", DrawCompSpring5, 3}, {"DrawExteSpring1", DrawExteSpring1, 3},
    {"DrawExteSpring2", DrawExteSpring2, 3}, {"DrawExteSpring3", DrawExteSpring3, 3},
    {"DrawExteSpring4", DrawExteSpring4, 3}, {"DrawExteSpring5", DrawExteSpring5, 3},
    {"DrawTorSpring1", DrawTorSpring1, 2},   {"DrawTorSpring2", DrawTorSpring2, 2},
    {"DrawTorSpring3", DrawTorSpring3, 2},   {"DrawTorSpring4", DrawTorSpring4, 3},
    {"DrawTorSpring5", DrawTorSpring5, 2},
};
struct NamedForm {
  const char* name;
  Form draw;
};
inline constexpr NamedForm kForms[] = {
    {"GB1239_YI_1", GB1239_YI_1},     {"GB1239_YI_2", GB1239_YI_2},     {"GB1239_YII_1", GB1239_YII_1},
    {"GB1239_YII_2", GB1239_YII_2},   {"GB1239_YIII_1", GB1239_YIII_1}, {"GB1239_YIII_2", GB1239_YIII_2},
    {"GB1239_RYI_1", GB1239_RYI_1},   {"GB1239_RYI_2", GB1239_RYI_2},   {"GB1239_RYII_1", GB1239_RYII_1},
    {"GB1239_RYII_2", GB1239_RYII_2},
};
struct Sizes {
  double d, D, H0, n;
};
inline constexpr Sizes kSizes[] = {{2, 20, 50, 5}, {3, 23, 120, 5.7}, {0.8, 6, 40, 12}};

class SpringHost : public SymbolHost {
 protected:
  SpringHost() { std::wcscpy(SpringBlockName, L"KM_SPRING"); }
  void answer(const wchar_t* script) {
    host->editor().dropInput();
    host->editor().pushSource(std::make_unique<KvEdScriptSource>(CString(script)));
  }
};

}  // namespace test
