#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

#include "host/commands/outlines.h"
#include "host/database/block.h"
#include "host/database/tables.h"
#include "host/entities/polyline.h"
#include "host/entities/text.h"
#include "host/io/drawing_file.h"
#include "platform/text/cstring.h"
#include "platform/text/number.h"
#include "siblings/tools/cli/nest_plan.h"

namespace korvane {
namespace {

constexpr double kMeeting = 1e-6;

struct Box {
  KvDbObjectId id;
  double x0, y0, x1, y1;
  std::size_t order;
  double area() const { return (x1 - x0) * (y1 - y0); }
  bool holds(const Box& other) const {
    return other.x0 >= x0 - kMeeting && other.y0 >= y0 - kMeeting && other.x1 <= x1 + kMeeting &&
           other.y1 <= y1 + kMeeting;
  }
};

bool boxOf(const KvDbObjectIdArray& outline, Box& box) {
  KvDbExtents whole;
  for (KvDbObjectId id : outline) {
    KvDbEntity* entity = nullptr;
    KvDbExtents own;
    if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) return false;
    const bool hasExtents = entity->getGeomExtents(own) == Kvad::eOk;
    entity->close();
    if (!hasExtents) return false;
    whole.addExt(own);
  }
  if (whole.isEmpty()) return false;
  box.id = outline[0];
  box.x0 = whole.minPoint().x;
  box.y0 = whole.minPoint().y;
  box.x1 = whole.maxPoint().x;
  box.y1 = whole.maxPoint().y;
  return std::isfinite(box.area()) && box.x1 - box.x0 > kMeeting && box.y1 - box.y0 > kMeeting;
}

/// Those that no other one holds, in the drawing's order. Of equal ones the first stays.
std::vector<Box> outermost(std::vector<Box> boxes) {
  // From the left; at one x the larger first, so that a holder comes before what it holds.
  std::sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) {
    if (a.x0 != b.x0) return a.x0 < b.x0;
    return a.area() != b.area() ? a.area() > b.area() : a.order < b.order;
  });
  std::vector<Box> outer;
  std::vector<std::size_t> open;  // of `outer`: those that reach the present x
  for (const Box& box : boxes) {
    std::erase_if(open, [&](std::size_t i) { return outer[i].x1 < box.x0 - kMeeting; });
    if (std::any_of(open.begin(), open.end(), [&](std::size_t i) { return outer[i].holds(box); })) continue;
    open.push_back(outer.size());
    outer.push_back(box);
  }
  std::sort(outer.begin(), outer.end(), [](const Box& a, const Box& b) { return a.order < b.order; });
  return outer;
}

/// Adds entities to a drawing's model space, each on one of the plan's layers.
class PlanDrawing {
 public:
  explicit PlanDrawing(KvDbDatabase& database) : database_(database) {
    kvdbOpenObject(space_, database.modelSpaceId(), KvDb::kForWrite);
    constexpr int kGrey = 8, kBlack = 7, kCyan = 4;
    addLayer(L"SHEETS", kGrey);
    addLayer(L"ITEMS", kBlack);
    addLayer(L"LABELS", kCyan);
  }
  ~PlanDrawing() {
    if (space_) space_->close();
  }
  PlanDrawing(const PlanDrawing&) = delete;
  PlanDrawing& operator=(const PlanDrawing&) = delete;

  bool isWhole() const { return space_ && isWhole_; }
  void rectangle(const wchar_t* layer, double x, double y, double width, double height) {
    auto outline = std::make_unique<KvDbPolyline>();
    const KvGePoint2d corners[] = {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
    for (const KvGePoint2d& corner : corners) outline->addVertexAt(outline->numVerts(), corner);
    outline->setClosed(true);
    add(layer, std::move(outline));
  }
  /// Centred in the rectangle and not larger than it.
  void label(double x, double y, double width, double height, const std::string& words) {
    constexpr double kShare = 0.2, kFill = 0.8;
    const CString text = platform::wideFromUtf8(words);
    auto one = std::make_unique<KvDbText>(KvGePoint3d(x, y, 0), text, KvDbObjectId(),
                                          kShare * std::min(width, height));
    const double wide = one->textWidth();
    if (wide > kFill * width) one->setHeight(one->height() * kFill * width / wide);
    one->setHorizontalMode(KvDb::kTextCenter);
    one->setVerticalMode(KvDb::kTextVertMid);
    one->setAlignmentPoint(KvGePoint3d(x + width / 2, y + height / 2, 0));
    one->adjustAlignment(&database_);
    add(L"LABELS", std::move(one));
  }

 private:
  void addLayer(const wchar_t* name, int colour) {
    KvDbLayerTable* table = nullptr;
    if (kvdbOpenObject(table, database_.layerTableId(), KvDb::kForWrite) != Kvad::eOk) {
      isWhole_ = false;
      return;
    }
    auto layer = std::make_unique<KvDbLayerTableRecord>();
    layer->setName(name);
    layer->setColorIndex(colour);
    layer->setLinetypeObjectId(database_.recordId(KvDbTable::Linetype, L"CONTINUOUS"));
    KvDbObjectId id;
    if (table->add(id, layer.get()) == Kvad::eOk)
      layer.release()->close();
    else
      isWhole_ = false;
    table->close();
    layers_[name] = id;
  }
  void add(const wchar_t* layer, std::unique_ptr<KvDbEntity> entity) {
    if (!space_) return;
    entity->setDatabaseDefaults(&database_);
    entity->setLayer(layers_[layer]);
    if (space_->appendKvDbEntity(entity.get()) == Kvad::eOk)
      entity.release()->close();
    else
      isWhole_ = false;
  }

  KvDbDatabase& database_;
  KvDbBlockTableRecord* space_ = nullptr;
  std::map<std::wstring, KvDbObjectId> layers_;
  bool isWhole_ = true;
};

}  // namespace

std::string NestPlan::labelOf(std::size_t item) const {
  const CsvItem& one = items[item];
  return one.name.empty() ? platform::shortest(one.width) + " x " + platform::shortest(one.height) : one.name;
}

bool isDrawingName(const std::filesystem::path& file) {
  std::string extension = file.extension().string();
  for (char& c : extension)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return extension == ".dxf" || extension == ".dwg";
}

bool readItemsDrawing(const std::filesystem::path& file, std::vector<CsvItem>& items, std::string& error) {
  KvDbDatabase database(false, true);
  KvIoReport report;
  if (kvdbReadDrawing(database, file, report) != Kvad::eOk) {
    error = platform::utf8From(report.error.describe());
    return false;
  }
  KvDbBlockTableRecord* space = nullptr;
  if (kvdbOpenObject(space, database.modelSpaceId(), KvDb::kForRead) != Kvad::eOk) {
    error = "the drawing has no model space";
    return false;
  }
  const KvDbObjectIdArray ids = space->entities();
  space->close();
  std::vector<Box> boxes;
  for (const KvDbObjectIdArray& outline : kvcmdClosedOutlines(ids, kMeeting)) {
    Box box{};
    box.order = boxes.size();
    if (!outline.isEmpty() && boxOf(outline, box)) boxes.push_back(box);
  }
  boxes = outermost(std::move(boxes));
  if (boxes.empty()) {
    error = "no closed outline in model space";
  } else if (boxes.size() > static_cast<std::size_t>(kMostCsvItems)) {
    error = "expected at most " + std::to_string(kMostCsvItems) + " closed outlines, found " +
            std::to_string(boxes.size());
  } else {
    items.clear();
    for (const Box& box : boxes)
      items.push_back({platform::utf8From(box.id.handle().toText()), box.x1 - box.x0, box.y1 - box.y0,
                       static_cast<int>(items.size()) + 1});
    return true;
  }
  return false;
}

bool savePlanDrawing(const NestPlan& plan, const std::filesystem::path& file, std::string& error) {
  KvDbDatabase database(true, true);
  const double pitch = plan.length + plan.between;
  {
    PlanDrawing drawing(database);
    for (int sheet = 0; sheet < plan.sheets; ++sheet)
      if (plan.length > 0) drawing.rectangle(L"SHEETS", sheet * pitch, 0, plan.length, plan.height);
    for (std::size_t i = 0; i < plan.items.size(); ++i) {
      const FramePlace& place = plan.places[i];
      if (!place.placed) continue;
      const double x = (place.sheet - 1) * pitch + place.x;
      drawing.rectangle(L"ITEMS", x, place.y, place.width, place.height);
      drawing.label(x, place.y, place.width, place.height, plan.labelOf(i));
    }
    if (!drawing.isWhole()) {
      error = file.string() + ": the plan could not be drawn";
      return false;
    }
  }
  KvIoReport report;
  if (kvdbSaveDrawing(database, file, report, kvdbSaveOptionsFor(file)) == Kvad::eOk) return true;
  error = platform::utf8From(report.error.describe());
  return false;
}

}  // namespace korvane
