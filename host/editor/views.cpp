#include "host/editor/views.h"

#include <algorithm>
#include <cmath>

#include "host/base/context.h"
#include "host/database/header.h"
#include "host/database/names.h"
#include "host/editor/editor.h"
#include "host/editor/ucs.h"

namespace {

enum VportCode { kCenter = 12, kDirection = 16, kTarget = 17, kHeight = 40, kTwist = 51 };
constexpr int kModelViewport = 2, kLayoutViewport = 1;

bool isFinite(const KvGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}
bool isFinite(const double* p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

KvEdView viewOfLimits(const KvDbHeader& header, bool isModel) {
  KvEdView view;
  const KvGePoint3d low = header.point(isModel ? L"$LIMMIN" : L"$PLIMMIN");
  const KvGePoint3d high = header.point(isModel ? L"$LIMMAX" : L"$PLIMMAX");
  if (!(high.x > low.x && high.y > low.y)) return view;
  view.center = {(low.x + high.x) / 2, (low.y + high.y) / 2};
  view.height = high.y - low.y;
  return view;
}

bool isSensible(const KvEdView& view) {
  return std::isfinite(view.height) && view.height > 0 && std::isfinite(view.center.x) &&
         std::isfinite(view.center.y) && std::isfinite(view.twist) && isFinite(view.target) &&
         std::isfinite(view.direction.length()) && !view.direction.isZeroLength();
}

KvEdEditor* currentEditor() {
  return KvHostContext::current().editor;
}

}  // namespace

KvGeMatrix3d KvEdView::worldToView() const {
  return KvGeMatrix3d::rotation(twist, KvGeVector3d::kZAxis) *
         KvGeMatrix3d::worldToPlane(direction.normal()) * KvGeMatrix3d::translation(-target.asVector());
}

KvGeMatrix3d KvEdView::worldToDevice(const KvEdScreenSize& screen) const {
  return KvGeMatrix3d::translation({screen.width / 2.0, screen.height / 2.0, 0}) *
         KvGeMatrix3d::scaling(screen.height / height) *
         KvGeMatrix3d::translation({-center.x, -center.y, 0}) * worldToView();
}

int kvedCurrentViewport(const KvDbDatabase& database) {
  return database.tilemode() ? kModelViewport : kLayoutViewport;
}

KvEdView kvedViewOf(const KvDbDatabase& database) {
  const bool isModel = database.tilemode();
  const KvEdView plain = viewOfLimits(database.header(), isModel);
  KvDbViewportTableRecord* record = nullptr;
  if (!isModel || kvdbOpenObject(record, database.recordId(KvDbTable::Viewport, L"*Active")) != Kvad::eOk)
    return plain;
  KvEdView view;
  const KvGePoint3d center = record->storedPoint(kCenter, {plain.center.x, plain.center.y, 0});
  view.center = {center.x, center.y};
  view.height = record->storedReal(kHeight, plain.height);
  view.direction = record->storedPoint(kDirection, {0, 0, 1}).asVector();
  view.target = record->storedPoint(kTarget, {});
  view.twist = kvdxfRadians(record->storedReal(kTwist, 0));
  record->close();
  return isSensible(view) ? view : plain;
}

Kvad::ErrorStatus kvedSetViewOf(KvDbDatabase& database, const KvEdView& view) {
  if (!isSensible(view)) return Kvad::eInvalidInput;
  KvDbViewportTableRecord* record = nullptr;
  const KvDbObjectId id = database.recordId(KvDbTable::Viewport, L"*Active");
  if (auto status = kvdbOpenObject(record, id, KvDb::kForWrite); status != Kvad::eOk) return status;
  record->setStoredPoint(kCenter, {view.center.x, view.center.y, 0}, 2);
  record->setStoredPoint(kDirection, {view.direction.x, view.direction.y, view.direction.z}, 3);
  record->setStoredPoint(kTarget, view.target, 3);
  record->setStoredReal(kHeight, view.height);
  record->setStoredReal(kTwist, kvdxfDegrees(view.twist));
  record->close();
  if (KvEdEditor* editor = currentEditor()) editor->screen().invalidateAll();
  return Kvad::eOk;
}

void KvGsView::getViewport(KvGePoint2d& lowerLeft, KvGePoint2d& upperRight) const {
  const KvEdEditor* editor = currentEditor();
  const KvEdScreenSize size = editor ? const_cast<KvEdEditor*>(editor)->screen().size : KvEdScreenSize();
  lowerLeft = {0, 0};
  upperRight = {static_cast<double>(size.width), static_cast<double>(size.height)};
}

KvGeMatrix3d KvGsView::worldToDeviceMatrix() const {
  const KvDbDatabase* database = KvDbDatabase::ofSerial(drawing_);
  KvEdEditor* editor = currentEditor();
  if (!database) return {};
  return kvedViewOf(*database).worldToDevice(editor ? editor->screen().size : KvEdScreenSize());
}

void KvGsView::update() {
  isValid_ = true;
  ++updates_;
}

KvEdHighlightPath KvEdScreen::pathOf(KvDbObjectId entity, const KvDbFullSubentPath& path) {
  KvEdHighlightPath own;
  for (const KvDbObjectId id : path.objectIds()) own.objects.push_back(id);
  if (own.objects.empty()) own.objects.push_back(entity);
  own.type = path.subentId().type;
  own.index = path.subentId().index;
  return own;
}

void KvEdScreen::highlight(const KvEdHighlightPath& path) {
  if (!path.objects.empty()) ++highlights_[path];
}

void KvEdScreen::unhighlight(const KvEdHighlightPath& path) {
  const auto found = highlights_.find(path);
  if (found != highlights_.end() && --found->second == 0) highlights_.erase(found);
}

bool KvEdScreen::isHighlighted(KvDbObjectId entity) const {
  return std::any_of(highlights_.begin(), highlights_.end(), [&](const auto& entry) {
    const auto& objects = entry.first.objects;
    return std::find(objects.begin(), objects.end(), entity) != objects.end();
  });
}

std::vector<KvEdHighlightPath> KvEdScreen::highlighted() const {
  std::vector<KvEdHighlightPath> paths;
  for (const auto& [path, count] : highlights_) paths.push_back(path);
  return paths;
}

void KvEdScreen::setHidden(KvDbObjectId entity, bool isHidden) {
  if (isHidden)
    hidden_[entity] = true;
  else
    hidden_.erase(entity);
}

bool KvEdScreen::isHidden(KvDbObjectId entity) const {
  return !hidden_.empty() && hidden_.count(entity) > 0;
}

KvGsView* KvEdScreen::view(const KvDbDatabase& database, int number, bool create) {
  const auto key = std::pair(database.serial(), number);
  const auto found = views_.find(key);
  if (found != views_.end()) return found->second.get();
  if (!create || number < 1) return nullptr;
  return (views_[key] = std::make_unique<KvGsView>(number, database.serial())).get();
}

void KvEdScreen::invalidateAll() {
  for (auto& [key, view] : views_) view->invalidate();
}

KvGsView* kvgsGetGsView(int number, bool create) {
  KvEdEditor* editor = currentEditor();
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!editor || !database) return nullptr;
  return editor->screen().view(*database, number, create || number == kvedCurrentViewport(*database));
}

bool kvedCoordFromPixelToWorld(const KvGsPixel& pixel, KvGePoint3d& world) {
  world = {};
  KvEdEditor* editor = currentEditor();
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!editor || !database) return false;
  const KvEdView view = kvedViewOf(*database);
  // By hand, since the whole map's inverse would be lost in the tolerance of a singular one.
  const double scale = view.height / editor->screen().size.height;
  const KvGePoint3d seen(view.center.x + (pixel.x - editor->screen().size.width / 2.0) * scale,
                         view.center.y + (pixel.y - editor->screen().size.height / 2.0) * scale, 0);
  world = view.viewToWorld() * seen;
  return true;
}

bool kvedCoordFromPixelToWorld(const KvGsPixel& pixel, double* world) {
  if (!world) return false;
  KvGePoint3d point;
  const bool isDone = kvedCoordFromPixelToWorld(pixel, point);
  world[0] = point.x;
  world[1] = point.y;
  world[2] = point.z;
  return isDone;
}

bool kvedCoordFromWorldToPixel(const double* world, KvGsPixel& pixel) {
  KvEdEditor* editor = currentEditor();
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!editor || !database || !world) return false;
  const KvGePoint3d device =
      kvedViewOf(*database).worldToDevice(editor->screen().size) * KvGePoint3d(world[0], world[1], world[2]);
  constexpr double kFarthestPixel = 1e9;
  if (!(std::fabs(device.x) < kFarthestPixel && std::fabs(device.y) < kFarthestPixel)) return false;
  pixel = {static_cast<int>(std::lround(device.x)), static_cast<int>(std::lround(device.y))};
  return true;
}

void kvedUpdateDisplay() {
  KvEdEditor* editor = currentEditor();
  if (!editor) return;
  ++editor->screen().updates;
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database) return;
  for (const int number : {kLayoutViewport, kModelViewport})
    if (KvGsView* view = editor->screen().view(*database, number, false)) view->update();
}

int kvedGrDraw(const double* from, const double* to, int color, int highlight) {
  KvEdEditor* editor = currentEditor();
  constexpr std::size_t kMostLines = 1u << 20;  // a loop that draws for ever must not eat the memory
  if (!editor || !from || !to || !isFinite(from) || !isFinite(to)) return RTERROR;
  auto& lines = editor->screen().lines;
  if (lines.size() >= kMostLines) lines.erase(lines.begin(), lines.begin() + kMostLines / 2);
  const KvGeMatrix3d toWorld = kvedUserToWorld(kvdbDatabaseOrWorking(nullptr));
  lines.push_back({toWorld * KvGePoint3d(from[0], from[1], from[2]),
                   toWorld * KvGePoint3d(to[0], to[1], to[2]), color, highlight != 0});
  return RTNORM;
}

int kvedRedraw(const long long* name, int mode) {
  enum { kShow = 1, kHide = 2, kHighlight = 3, kUnhighlight = 4 };
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  KvEdScreen& screen = editor->screen();
  if (!name || kvds_isNull(name)) {
    screen.lines.clear();
    screen.invalidateAll();
    kvedUpdateDisplay();
    return RTNORM;
  }
  KvDbObjectId id;
  if (kvdbGetObjectId(id, name) != Kvad::eOk || id.isErased()) return RTERROR;
  switch (mode) {
    case kShow:
    case kHide:
      screen.setHidden(id, mode == kHide);
      return RTNORM;
    case kHighlight:
      // By name an entity is highlighted or not, however often it was asked for.
      if (!screen.isHighlighted(id)) screen.highlight(KvEdScreen::pathOf(id, {}));
      return RTNORM;
    case kUnhighlight:
      screen.unhighlight(KvEdScreen::pathOf(id, {}));
      return RTNORM;
    default:
      return RTERROR;
  }
}
