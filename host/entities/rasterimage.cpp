#include "host/entities/rasterimage.h"

#include <cmath>

#include "host/database/database.h"
#include "host/database/dictionary.h"

KVRX_DEFINE(KvDbRasterImage, KvDbKeptEntity, L"IMAGE")
KVRX_DEFINE(KvDbWipeout, KvDbRasterImage, L"WIPEOUT")

namespace {

constexpr double kHalf = 0.5;  // pixels are counted from their middles
constexpr const wchar_t* kWipeoutVariables = L"ACAD_WIPEOUT_VARS";

const KvDxfGroup* groupOf(const KvDbObject& object, int code, KvDxfGroup& found) {
  for (const KvDbUnknownSection& section : object.unknownSections())
    for (const KvDxfGroup& group : section.groups)
      if (group.code == code) return &(found = group);
  return nullptr;
}

class WipeoutVariables : public KvDbProxyObject {
 public:
  explicit WipeoutVariables(KvDbFrameMode mode) : KvDbProxyObject(CString(L"WIPEOUTVARIABLES")) {
    KvDxfGroup group;
    group.code = 70;
    group.kind = kvdxfKind(group.code);
    group.integer = static_cast<std::int64_t>(mode);
    editUnknownSections().push_back(
        {KvDbSharedText(L"AcDbWipeoutVariables"), KvDbGroupList(std::vector<KvDxfGroup>{group})});
  }
};

/// The area and its direction, by the corners as they follow one another (Newell).
KvGeVector3d areaOf(const std::vector<KvGePoint3d>& corners) {
  KvGeVector3d sum;
  for (std::size_t i = 1; i + 1 < corners.size(); ++i)
    sum = sum + (corners[i] - corners[0]).crossProduct(corners[i + 1] - corners[0]);
  return sum * kHalf;
}

}  // namespace

KvGePoint2d KvDbRasterImage::imageSize() const {
  const KvGePoint3d size = point(13, {1, 1, 0});
  const auto sound = [](double v) { return v > 0 && std::isfinite(v) ? v : 1.0; };
  return {sound(size.x), sound(size.y)};
}

Kvad::ErrorStatus KvDbRasterImage::setOrientation(const KvGePoint3d& origin, const KvGeVector3d& width,
                                                  const KvGeVector3d& height) {
  if (!(width.crossProduct(height).length() > 0) || !std::isfinite(width.length() + height.length()))
    return Kvad::eInvalidInput;
  const KvGePoint2d size = imageSize();
  if (auto status = putPoint(10, origin); status != Kvad::eOk) return status;
  putPoint(11, KvGePoint3d() + width / size.x);
  return putPoint(12, KvGePoint3d() + height / size.y);
}

KvDbObjectId KvDbRasterImage::imageDefId() const {
  return database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(whole(340))))
                    : KvDbObjectId();
}

CString KvDbRasterImage::sourceFile() const {
  const KvDbObjectId id = imageDefId();
  KvDxfGroup name;
  return id.isValid() && groupOf(*id.stub()->object, 1, name) ? CString(name.text) : CString();
}

std::vector<KvGePoint3d> KvDbRasterImage::boundary() const {
  const KvGePoint2d size = imageSize();
  std::vector<KvGePoint3d> corners;
  if (isClipped())
    for (const KvDxfGroup& group : all(14)) corners.push_back(group.point);
  if (corners.size() < 2) corners = {{-kHalf, -kHalf, 0}, {size.x - kHalf, size.y - kHalf, 0}};
  if (corners.size() == 2) {
    const KvGePoint3d a = corners[0], b = corners[1];
    corners = {a, {b.x, a.y, 0}, b, {a.x, b.y, 0}};
  }
  if (corners.size() > 3 && corners.front() == corners.back()) corners.pop_back();
  // Rows of pixels run downwards.
  const KvGePoint3d from = origin();
  const KvGeVector3d u = width() / size.x, v = height() / size.y;
  for (KvGePoint3d& corner : corners)
    corner = from + u * (corner.x + kHalf) + v * (size.y - corner.y - kHalf);
  return corners;
}

KvDbFrameMode KvDbRasterImage::frameModeOf(const wchar_t* dictionaryName) const {
  if (!database()) return KvDbFrameMode::Always;
  const KvDbObjectId rootId = database()->namedObjectsDictionaryId();
  const KvDbDictionary* root = rootId.isValid() ? KvDbDictionary::cast(rootId.stub()->object) : nullptr;
  KvDbObjectId id;
  KvDxfGroup mode;
  if (!root || root->getAt(dictionaryName, id) != Kvad::eOk || !id.isValid() ||
      !groupOf(*id.stub()->object, 70, mode))
    return KvDbFrameMode::Always;
  return mode.integer == 0   ? KvDbFrameMode::Never
         : mode.integer == 2 ? KvDbFrameMode::ScreenOnly
                             : KvDbFrameMode::Always;
}

KvDbFrameMode KvDbRasterImage::frameMode() const {
  return frameModeOf(L"ACAD_IMAGE_VARS");
}
KvDbFrameMode KvDbWipeout::frameMode() const {
  return frameModeOf(kWipeoutVariables);
}

Kvad::ErrorStatus KvDbRasterImage::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  if (isClipped() && isClipInverted()) {
    const KvGePoint3d corner = origin();
    for (const KvGePoint3d& p : {corner, corner + width(), corner + height(), corner + width() + height()})
      extents.addPoint(p);
    return Kvad::eOk;
  }
  for (const KvGePoint3d& corner : boundary()) extents.addPoint(corner);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbRasterImage::transformBy(const KvGeMatrix3d& matrix) {
  const KvGeVector3d u = matrix * width(), v = matrix * height();
  return setOrientation(matrix * origin(), u, v);
}

void KvDbRasterImage::drawFrame(KvGiWorldDraw& draw, const std::vector<KvGePoint3d>& corners) const {
  const KvDbFrameMode mode = frameMode();
  if (mode == KvDbFrameMode::Never || (mode == KvDbFrameMode::ScreenOnly && draw.isForPaper())) return;
  std::vector<KvGePoint3d> closed = corners;
  closed.push_back(corners.front());
  draw.geometry().polyline(static_cast<int>(closed.size()), closed.data());
}

void KvDbRasterImage::drawClipped(KvGiGeometry& geometry, const std::vector<KvGePoint3d>& corners,
                                  const std::function<void()>& content) const {
  // The boundary in the picture's plane, lengths as they are in the drawing.
  const KvGeVector3d along = width().normal(), normal = width().crossProduct(height()).normal();
  const KvGeVector3d up = normal.crossProduct(along);
  const KvGeMatrix3d fromPlane = KvGeMatrix3d().setCoordSystem(origin(), along, up, normal);
  std::vector<KvGePoint2d> outline;
  for (const KvGePoint3d& corner : corners)
    outline.emplace_back((corner - origin()).dotProduct(along), (corner - origin()).dotProduct(up));
  geometry.pushClipBoundary(
      {fromPlane.inverse(), outline.data(), static_cast<int>(outline.size()), isClipInverted()});
  content();
  geometry.popClipBoundary();
}

bool KvDbRasterImage::subWorldDraw(KvGiWorldDraw* draw) {
  const std::vector<KvGePoint3d> corners = boundary();
  KvGiGeometry& geometry = draw->geometry();
  if (isShown() && width().crossProduct(height()).length() > 0) {
    const auto picture = [&] { geometry.image({origin(), width(), height(), sourceFile()}); };
    if (isClipped())
      drawClipped(geometry, corners, picture);
    else
      picture();
  }
  drawFrame(*draw, corners);
  return true;
}

bool KvDbWipeout::subWorldDraw(KvGiWorldDraw* draw) {
  const std::vector<KvGePoint3d> corners = boundary();
  KvGiGeometry& geometry = draw->geometry();
  if (isShown() && !(isClipped() && isClipInverted())) {
    geometry.mask(static_cast<int>(corners.size()), corners.data());
  } else if (isShown()) {
    const KvGePoint3d low = origin(), high = low + width() + height();
    const KvGePoint3d whole[] = {low, low + width(), high, low + height()};
    drawClipped(geometry, corners, [&] { geometry.mask(4, whole); });
  }
  drawFrame(*draw, corners);
  return true;
}

std::unique_ptr<KvDbWipeout> KvDbWipeout::make(const std::vector<KvGePoint3d>& corners) {
  const KvGeVector3d area = areaOf(corners);
  if (!(area.length() > 0) || !std::isfinite(area.length())) return nullptr;
  // A picture of one pixel, square, whose clip boundary is the polygon.
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(area.z < 0 ? -area.normal() : area.normal());
  KvGePoint3d low = toPlane * corners[0], high = low;
  for (const KvGePoint3d& corner : corners) {
    const KvGePoint3d p = toPlane * corner;
    low = {std::min(low.x, p.x), std::min(low.y, p.y), low.z};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), high.z};
  }
  const double side = std::max(high.x - low.x, high.y - low.y);
  const KvGeMatrix3d toWorld = toPlane.inverse();
  auto made = std::make_unique<KvDbWipeout>();
  made->putWhole(90, 0);
  made->putPoint(10, toWorld * low);
  made->putPoint(11, KvGePoint3d() + toWorld * KvGeVector3d(side, 0, 0));
  made->putPoint(12, KvGePoint3d() + toWorld * KvGeVector3d(0, side, 0));
  made->putPoint(13, {1, 1, 0}, 2);
  constexpr int kAllShown = 7, kMiddle = 50, kPolygon = 2;
  made->putWhole(340, 0);
  made->putWhole(70, kAllShown);
  made->putWhole(280, 1);
  made->putWhole(281, kMiddle);
  made->putWhole(282, kMiddle);
  made->putWhole(283, 0);
  made->putWhole(360, 0);
  made->putWhole(71, kPolygon);
  made->putWhole(91, static_cast<std::int64_t>(corners.size()) + 1);
  std::vector<KvDxfGroup> row;
  for (std::size_t i = 0; i <= corners.size(); ++i) {
    const KvGePoint3d p = toPlane * corners[i % corners.size()];
    KvDxfGroup& group = row.emplace_back();
    group.code = 14;
    group.kind = KvDxfKind::Point;
    group.dimensions = 2;
    group.point = {(p.x - low.x) / side - kHalf, kHalf - (p.y - low.y) / side, 0};
  }
  made->rewrite([](KvDxfGroup&) { return true; }, row);
  return made;
}

Kvad::ErrorStatus kvdbSetWipeoutFrames(KvDbDatabase& database, KvDbFrameMode mode) {
  KvDbDictionary* root = nullptr;
  if (auto status = database.getNamedObjectsDictionary(root, KvDb::kForWrite); status != Kvad::eOk)
    return status;
  auto variables = std::make_unique<WipeoutVariables>(mode);
  KvDbObjectId id;
  const auto status = root->setAt(kWipeoutVariables, variables.get(), id);
  if (status == Kvad::eOk) variables.release()->close();
  root->close();
  return status;
}
