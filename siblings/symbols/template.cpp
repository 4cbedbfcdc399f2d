#include "siblings/symbols/template.h"

#include "host/database/header.h"
#include "host/io/drawing_file.h"
#include "siblings/symbols/layer_table.h"
#include "siblings/symbols/layers.h"
#include "siblings/symbols/records.h"
#include "siblings/symbols/styles.h"

namespace kmsymb {

CString templatePlace(Standard standard) {
  return L"\\share\\korvane\\templates\\korvane_" + CString(rowOf(standard).name).MakeLower() + L".dxf";
}

std::unique_ptr<KvDbDatabase> makeTemplate(Standard standard) {
  auto drawing = std::make_unique<KvDbDatabase>(true, true);
  constexpr int kMetric = 1, kMillimetres = 4;
  drawing->header().setWhole(L"$MEASUREMENT", kMetric);
  drawing->header().setWhole(L"$INSUNITS", kMillimetres);
  setStandard(*drawing, standard);
  for (const KindRow& kind : kindRows()) ensureLayer(kind.kind, *drawing, standard);
  drawing->setTextstyle(ensureTextStyle(*drawing, standard));
  drawing->setDimstyle(ensureDimStyle(*drawing, standard));
  return drawing;
}

std::string formatTemplate(Standard standard) {
  return kvdbFormatDrawing(*makeTemplate(standard));
}

}  // namespace kmsymb
