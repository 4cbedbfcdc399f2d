#include "host/graphics/internal/records.h"

#include <algorithm>
#include <cmath>

#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/storedgroup.h"

namespace kvgr {
namespace {

constexpr double kMillimetresPerInch = 25.4;

/// Gathers an object's groups with the marker behind which each stands.
class Collector : public KvDxfWriter {
 public:
  struct Group {
    std::wstring marker;
    int code;
    double x = 0, y = 0, z = 0;
    std::int64_t whole = 0;
    std::wstring text;
  };
  std::vector<Group> groups;

  void text(int code, std::wstring_view value) override {
    if (code == 100) marker_ = value;
    groups.push_back({marker_, code, 0, 0, 0, 0, std::wstring(value)});
  }
  void real(int code, double value) override { groups.push_back({marker_, code, value, 0, 0, 0, {}}); }
  void integer(int code, std::int64_t value) override {
    groups.push_back({marker_, code, static_cast<double>(value), 0, 0, value, {}});
  }
  void handleValue(int code, std::uint64_t handle) override {
    groups.push_back({marker_, code, 0, 0, 0, static_cast<std::int64_t>(handle), {}});
  }
  void point(int code, const KvGePoint3d& p) override {
    groups.push_back({marker_, code, p.x, p.y, p.z, 0, {}});
  }
  void point2d(int code, const KvGePoint2d& p) override {
    groups.push_back({marker_, code, p.x, p.y, 0, 0, {}});
  }
  void binary(int, std::span<const std::uint8_t>) override {}

 private:
  std::wstring marker_;
};

void setFinite(double& to, double value) {
  if (std::isfinite(value)) to = value;
}

void takePlotGroup(const Collector::Group& g, LayoutRecord& layout, double& numerator, double& denominator,
                   int& units, int& flags, double& standard) {
  switch (g.code) {
    case 40:
      return setFinite(layout.marginLeft, g.x);
    case 41:
      return setFinite(layout.marginBottom, g.x);
    case 42:
      return setFinite(layout.marginRight, g.x);
    case 43:
      return setFinite(layout.marginTop, g.x);
    case 44:
      return setFinite(layout.paperWidth, g.x);
    case 45:
      return setFinite(layout.paperHeight, g.x);
    case 46:
      return setFinite(layout.originX, g.x);
    case 47:
      return setFinite(layout.originY, g.x);
    case 142:
      return setFinite(numerator, g.x);
    case 143:
      return setFinite(denominator, g.x);
    case 147:
      return setFinite(standard, g.x);
    case 70:
      flags = static_cast<int>(g.whole);
      return;
    case 72:
      units = static_cast<int>(g.whole);
      return;
    case 73:
      layout.rotation = static_cast<int>(g.whole & 3);
      return;
    default:
      return;
  }
}

LayoutRecord readLayout(const KvDbObject& object, const KvDbDatabase& database) {
  constexpr int kStandardScale = 16;
  Collector collected;
  object.dxfOut(collected);
  LayoutRecord layout;
  double numerator = 1, denominator = 1, standard = 1;
  int units = 1, flags = 0;
  for (const Collector::Group& g : collected.groups) {
    if (g.marker == L"AcDbPlotSettings") {
      takePlotGroup(g, layout, numerator, denominator, units, flags, standard);
    } else if (g.marker == L"AcDbLayout") {
      if (g.code == 1) layout.name = CString(g.text);
      if (g.code == 71) layout.tabOrder = static_cast<int>(g.whole);
      if (g.code == 330)
        layout.block = database.idFromHandle(KvDbHandle(static_cast<std::uint64_t>(g.whole)));
    }
  }
  const double own = denominator > 0 && numerator > 0 ? numerator / denominator : 1;
  layout.scale = (flags & kStandardScale) != 0 && standard > 0 ? standard : own;
  if (units == 0) layout.scale *= kMillimetresPerInch;
  layout.isModel = !layout.block.isNull() && layout.block == database.modelSpaceId();
  return layout;
}

}  // namespace

std::vector<LayoutRecord> layoutsOf(const KvDbDatabase& database) {
  std::vector<LayoutRecord> layouts;
  const auto* root = KvDbDictionary::cast(database.namedObjectsDictionaryId().stub()
                                              ? database.namedObjectsDictionaryId().stub()->object
                                              : nullptr);
  KvDbObjectId id;
  if (root && root->getAt(L"ACAD_LAYOUT", id) == Kvad::eOk) {
    const auto* dictionary = KvDbDictionary::cast(id.stub() ? id.stub()->object : nullptr);
    if (dictionary)
      for (const auto& entry : dictionary->entries()) {
        if (!entry.id.stub() || !entry.id.stub()->object) continue;
        LayoutRecord layout = readLayout(*entry.id.stub()->object, database);
        if (layout.name.IsEmpty()) layout.name = entry.name;
        layouts.push_back(std::move(layout));
      }
  }
  // The oldest files have one sheet and no layouts.
  const bool hasSheet = std::any_of(layouts.begin(), layouts.end(), [](const auto& l) { return !l.isModel; });
  if (!hasSheet && !database.paperSpaceId().isNull()) {
    LayoutRecord sheet;
    sheet.name = L"Layout1";
    sheet.tabOrder = 1;
    sheet.block = database.paperSpaceId();
    layouts.push_back(std::move(sheet));
  }
  std::stable_sort(layouts.begin(), layouts.end(),
                   [](const auto& a, const auto& b) { return a.tabOrder < b.tabOrder; });
  return layouts;
}

bool readViewport(const KvDbObject& object, ViewportRecord& viewport) {
  if (object.fileTypeView() != L"VIEWPORT") return false;
  constexpr std::int64_t kOffFlag = 0x20000;
  Collector collected;
  object.dxfOut(collected);
  const KvDbDatabase* database = object.database();
  for (const Collector::Group& g : collected.groups) {
    if (g.marker != L"AcDbViewport") continue;
    switch (g.code) {
      case 10:
        viewport.center = {g.x, g.y, g.z};
        break;
      case 40:
        viewport.width = g.x;
        break;
      case 41:
        viewport.height = g.x;
        break;
      case 68:
        viewport.isOn = viewport.isOn && g.whole != 0;
        break;
      case 69:
        viewport.number = static_cast<int>(g.whole);
        break;
      case 12:
        viewport.viewCenter = {g.x, g.y};
        break;
      case 16:
        viewport.direction = {g.x, g.y, g.z};
        break;
      case 17:
        viewport.target = {g.x, g.y, g.z};
        break;
      case 45:
        viewport.viewHeight = g.x;
        break;
      case 51:
        viewport.twist = kvdxfRadians(g.x);
        break;
      case 90:
        viewport.isOn = viewport.isOn && (g.whole & kOffFlag) == 0;
        break;
      case 331:
      case 341:
        if (database)
          viewport.frozenLayers.insert(
              database->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(g.whole))));
        break;
      case 340:
        if (database) viewport.clip = database->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(g.whole)));
        break;
      default:
        break;
    }
  }
  return true;
}

}  // namespace kvgr
