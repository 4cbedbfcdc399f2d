#include "host/database/storedgraphics.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/database/database.h"
#include "host/database/internal/picture_bytes.h"
#include "platform/text/codepage.h"
#include "platform/text/utf.h"

namespace {

using kvdb::Bits;
using kvdb::Bytes;
using kvdb::kPointBytes;

/// Kinds of primitives, and of what changes the look of those behind.
enum Kind : std::uint32_t {
  kCircle = 2,
  kCircle3 = 3,
  kArc = 4,
  kArc3 = 5,
  kPolyline = 6,
  kPolygon = 7,
  kMesh = 8,
  kShell = 9,
  kText = 10,
  kText2 = 11,
  kXline = 12,
  kRay = 13,
  kColor = 14,
  kLayer = 16,
  kLinetype = 18,
  kMarker = 19,
  kFill = 20,
  kTrueColor = 22,
  kLineWeight = 23,
  kLinetypeScale = 24,
  kThickness = 25,
  kPushMatrix = 29,
  kPushMatrix2 = 30,
  kPopMatrix = 31,
  kPolylineNormal = 32,
  kLightPolyline = 33,
  kUnicodeText = 36,
  kUnicodeText2 = 38,
  kEllipticArc = 44
};

constexpr std::size_t kHeadBytes = 8;

std::vector<KvDbObjectId> recordsOf(KvDbObjectId table) {
  const auto* records = table.isValid() ? KvDbSymbolTable::cast(table.stub()->object) : nullptr;
  std::vector<KvDbObjectId> all;
  if (records)
    for (KvDbObjectId id : records->records()) all.push_back(id);
  return all;
}

class Picture {
 public:
  Picture(const KvDbDatabase* drawing, KvGiWorldDraw& draw)
      : drawing_(drawing), geometry_(draw.geometry()), traits_(draw.subEntityTraits()) {}
  ~Picture() {
    while (depth_ > 0) pop();
  }
  bool hasDrawn() const { return hasDrawn_; }

  void take(std::uint32_t kind, Bytes bytes) {
    if (takeLook(kind, bytes) || takeCurve(kind, bytes) || takeFaces(kind, bytes)) return;
    takeText(kind, bytes);
  }

 private:
  bool takeLook(std::uint32_t kind, Bytes& bytes);
  bool takeCurve(std::uint32_t kind, Bytes& bytes);
  bool takeFaces(std::uint32_t kind, Bytes& bytes);
  void takeText(std::uint32_t kind, Bytes& bytes);
  void takeShell(Bytes& bytes);
  void takeLightPolyline(Bytes& bytes);
  void takeColor(std::uint32_t packed);
  void push(Bytes& bytes);
  void pop();
  CString textOf(const std::string& bytes) const;
  void noteDrawn() { hasDrawn_ = true; }

  const KvDbDatabase* drawing_;
  KvGiGeometry& geometry_;
  KvGiSubEntityTraits& traits_;
  std::optional<std::vector<KvDbObjectId>> layers_, linetypes_;
  int depth_ = 0;
  bool hasDrawn_ = false;
};

/// The highest byte tells the kind of colour.
void Picture::takeColor(std::uint32_t packed) {
  constexpr std::uint32_t kByLayer = 0xC0, kByBlock = 0xC1, kRgb = 0xC2, kIndexed = 0xC3;
  switch (packed >> 24) {
    case kByLayer:
      traits_.setTrueColor(KvCmEntityColor::ofIndex(kKvColorByLayer));
      break;
    case kByBlock:
      traits_.setTrueColor(KvCmEntityColor::ofIndex(kKvColorByBlock));
      break;
    case kRgb:
      traits_.setTrueColor(KvCmEntityColor::ofRgb(packed & 0xFFFFFFu));
      break;
    case kIndexed:
      traits_.setTrueColor(KvCmEntityColor::ofIndex(static_cast<int>(std::min(packed & 0xFFFFu, 256u))));
      break;
    default:
      break;
  }
}

void Picture::push(Bytes& bytes) {
  constexpr int kMostNested = 64;
  KvGeMatrix3d matrix;
  for (auto& row : matrix.entry)
    for (double& value : row) value = bytes.real();
  if (!bytes.isGood() || depth_ >= kMostNested) matrix = KvGeMatrix3d::kIdentity;
  if (depth_ < kMostNested) geometry_.pushModelTransform(matrix);
  ++depth_;
}

void Picture::pop() {
  constexpr int kMostNested = 64;
  if (depth_ == 0) return;
  if (--depth_ < kMostNested) geometry_.popModelTransform();
}

bool Picture::takeLook(std::uint32_t kind, Bytes& bytes) {
  constexpr std::uint32_t kByLayerLinetype = 32767, kByBlockLinetype = 32766, kFillAlways = 1;
  switch (kind) {
    case kColor: {
      const std::uint32_t color = bytes.whole();
      traits_.setTrueColor(
          KvCmEntityColor::ofIndex(color <= 256 ? static_cast<int>(color) : kKvColorByLayer));
      return true;
    }
    case kTrueColor:
      takeColor(bytes.whole());
      return true;
    case kLayer: {
      const std::uint32_t index = bytes.whole();
      if (!layers_) layers_ = drawing_ ? recordsOf(drawing_->layerTableId()) : std::vector<KvDbObjectId>();
      if (index < layers_->size()) traits_.setLayer((*layers_)[index]);
      return true;
    }
    case kLinetype: {
      const std::uint32_t index = bytes.whole();
      if (!linetypes_)
        linetypes_ = drawing_ ? recordsOf(drawing_->linetypeTableId()) : std::vector<KvDbObjectId>();
      if (index == kByBlockLinetype && drawing_)
        traits_.setLineType(drawing_->recordId(KvDbTable::Linetype, L"ByBlock"));
      else if (index >= linetypes_->size() || index == kByLayerLinetype)
        traits_.setLineType({});
      else
        traits_.setLineType((*linetypes_)[index]);
      return true;
    }
    case kMarker:
      traits_.setSelectionMarker(bytes.number());
      return true;
    case kFill:
      traits_.setFillType(bytes.whole() == kFillAlways ? kKvGiFillAlways : kKvGiFillNever);
      return true;
    case kLineWeight: {
      constexpr int kWidest = 211;
      const int weight = bytes.number();
      traits_.setLineWeight(weight >= KvDb::kLnWtByLwDefault && weight <= kWidest ? weight
                                                                                  : int{KvDb::kLnWtByLayer});
      return true;
    }
    case kLinetypeScale:
      if (const double scale = bytes.real(); bytes.isGood() && scale > 0) traits_.setLineTypeScale(scale);
      return true;
    case kThickness:
      if (const double thickness = bytes.real(); bytes.isGood()) traits_.setThickness(thickness);
      return true;
    case kPushMatrix:
    case kPushMatrix2:
      push(bytes);
      return true;
    case kPopMatrix:
      pop();
      return true;
    default:
      return false;
  }
}

bool Picture::takeCurve(std::uint32_t kind, Bytes& bytes) {
  const auto arcType = [&] {
    // Not all writers give it.
    const std::uint32_t type = bytes.left() >= 4 ? bytes.whole() : 0;
    return type <= kKvGiArcChord ? static_cast<KvGiArcType>(type) : kKvGiArcSimple;
  };
  switch (kind) {
    case kCircle: {
      const KvGePoint3d center = bytes.point();
      const double radius = bytes.real();
      const KvGeVector3d normal = bytes.vector();
      if (!bytes.isGood() || !(radius > 0) || normal.isZeroLength()) return true;
      geometry_.circle(center, radius, normal.normal());
      break;
    }
    case kCircle3:
    case kArc3: {
      const KvGePoint3d a = bytes.point(), b = bytes.point(), c = bytes.point();
      if (!bytes.isGood() || (b - a).crossProduct(c - a).isZeroLength()) return true;
      if (kind == kCircle3)
        geometry_.circle(a, b, c);
      else
        geometry_.circularArc(a, b, c, arcType());
      break;
    }
    case kArc: {
      const KvGePoint3d center = bytes.point();
      const double radius = bytes.real();
      const KvGeVector3d normal = bytes.vector(), start = bytes.vector();
      const double sweep = bytes.real();
      if (!bytes.isGood() || !(radius > 0) || normal.isZeroLength() || start.isZeroLength()) return true;
      geometry_.circularArc(center, radius, normal.normal(), start.normal(),
                            std::clamp(sweep, -kvge::kTwoPi, kvge::kTwoPi), arcType());
      break;
    }
    case kEllipticArc: {
      const KvGePoint3d center = bytes.point();
      const KvGeVector3d normal = bytes.vector();
      const double major = bytes.real(), minor = bytes.real(), start = bytes.real(), end = bytes.real(),
                   tilt = bytes.real();
      if (!bytes.isGood() || !(major > 0) || !(minor > 0) || normal.isZeroLength()) return true;
      if (std::fabs(end - start) > 2 * kvge::kTwoPi) return true;
      geometry_.ellipticalArc(center, normal.normal(), major, minor, start, end, tilt, arcType());
      break;
    }
    case kXline:
    case kRay: {
      const KvGePoint3d a = bytes.point(), b = bytes.point();
      if (!bytes.isGood() || a.isEqualTo(b)) return true;
      if (kind == kXline)
        geometry_.xline(a, b);
      else
        geometry_.ray(a, b);
      break;
    }
    case kPolyline:
    case kPolylineNormal: {
      const auto points = bytes.points(bytes.whole());
      if (!bytes.isGood() || points.empty()) return true;
      geometry_.polyline(static_cast<int>(points.size()), points.data());
      break;
    }
    case kLightPolyline:
      takeLightPolyline(bytes);
      return true;
    default:
      return false;
  }
  noteDrawn();
  return true;
}

/// A light polyline as the drawing format packs it into bits, behind the number of its bytes.
void Picture::takeLightPolyline(Bytes& bytes) {
  enum {
    kHasNormal = 1,
    kHasThickness = 2,
    kHasWidth = 4,
    kHasElevation = 8,
    kHasBulges = 16,
    kHasWidths = 32,
    kIsClosed = 512
  };
  const std::uint32_t size = bytes.whole();
  if (!bytes.isGood()) return;
  Bits bits(bytes.rest().first(std::min<std::size_t>(size, bytes.left())));
  const std::uint32_t flags = bits.shortNumber();
  const double width = (flags & kHasWidth) != 0 ? bits.real() : 0;
  KvGiPath path;
  if ((flags & kHasElevation) != 0) path.elevation = bits.real();
  if ((flags & kHasThickness) != 0) bits.real();
  if ((flags & kHasNormal) != 0) {
    const double x = bits.real(), y = bits.real(), z = bits.real();
    path.normal = KvGeVector3d(x, y, z);
  }
  const std::uint32_t count = bits.longNumber();
  const std::uint32_t bulges = (flags & kHasBulges) != 0 ? bits.longNumber() : 0;
  const bool hasNumbers = drawing_ && drawing_->extras().version >= KvDbFileVersion::R2010;
  const std::uint32_t numbers = hasNumbers ? bits.longNumber() : 0;
  const std::uint32_t widths = (flags & kHasWidths) != 0 ? bits.longNumber() : 0;
  // Each vertex takes four bits at least.
  if (!bits.isGood() || count < 2 || count > bits.left() / 4 || bulges > count || widths > count ||
      numbers > count || path.normal.isZeroLength())
    return;
  std::vector<KvGiPathVertex> vertices(count);
  vertices[0].point.x = bits.rawReal();
  vertices[0].point.y = bits.rawReal();
  for (std::size_t i = 1; i < count; ++i) {
    vertices[i].point.x = bits.realLike(vertices[i - 1].point.x);
    vertices[i].point.y = bits.realLike(vertices[i - 1].point.y);
  }
  for (std::size_t i = 0; i < bulges; ++i) vertices[i].bulge = bits.real();
  for (std::size_t i = 0; i < numbers; ++i) bits.longNumber();
  for (KvGiPathVertex& vertex : vertices) vertex.startWidth = vertex.endWidth = width;
  for (std::size_t i = 0; i < widths; ++i) {
    vertices[i].startWidth = bits.real();
    vertices[i].endWidth = bits.real();
  }
  if (!bits.isGood()) return;
  path.normal = path.normal.normal();
  path.vertices = vertices.data();
  path.count = static_cast<int>(count);
  path.isClosed = (flags & kIsClosed) != 0;
  geometry_.path(path);
  noteDrawn();
}

bool Picture::takeFaces(std::uint32_t kind, Bytes& bytes) {
  switch (kind) {
    case kPolygon: {
      const auto points = bytes.points(bytes.whole());
      if (!bytes.isGood() || points.empty()) return true;
      geometry_.polygon(static_cast<int>(points.size()), points.data());
      break;
    }
    case kMesh: {
      const std::size_t rows = bytes.whole(), columns = bytes.whole();
      if (!bytes.isGood() || rows < 2 || columns < 2 || rows > bytes.left() / kPointBytes / columns)
        return true;
      const auto points = bytes.points(rows * columns);
      if (!bytes.isGood()) return true;
      geometry_.mesh(static_cast<int>(rows), static_cast<int>(columns), points.data());
      break;
    }
    case kShell:
      takeShell(bytes);
      return true;
    default:
      return false;
  }
  noteDrawn();
  return true;
}

/// Vertices, then faces: how many corners (below 0: a hole in the face before), and which.
void Picture::takeShell(Bytes& bytes) {
  const auto points = bytes.points(bytes.whole());
  const std::size_t size = bytes.whole();
  if (!bytes.isGood() || points.empty() || size == 0 || size > bytes.left() / 4) return;
  std::vector<std::int32_t> faces(size);
  for (std::int32_t& entry : faces) entry = bytes.number();
  std::size_t edges = 0;
  for (std::size_t at = 0; at < size;) {
    const auto corners = static_cast<std::size_t>(std::abs(std::int64_t{faces[at++]}));
    if (corners == 0 || corners > size - at) return;
    for (const std::int32_t corner : std::span(faces).subspan(at, corners))
      if (corner < 0 || static_cast<std::size_t>(corner) >= points.size()) return;
    at += corners;
    edges += corners;
  }
  noteDrawn();
  if (traits_.fillType() == kKvGiFillAlways) {
    // A background: each face is filled.
    std::vector<KvGePoint3d> outline;
    for (std::size_t at = 0; at < size;) {
      const auto corners = static_cast<std::size_t>(std::abs(std::int64_t{faces[at++]}));
      outline.clear();
      for (; outline.size() < corners; ++at) outline.push_back(points[static_cast<std::size_t>(faces[at])]);
      geometry_.polygon(static_cast<int>(outline.size()), outline.data());
    }
    return;
  }
  // Behind them may stand what is told of single edges; hidden ones aren't drawn.
  constexpr std::uint32_t kHasVisibility = 0x40;
  const std::uint32_t told = bytes.left() >= 4 ? bytes.whole() : 0;
  constexpr std::uint32_t kBefore[] = {1, 2, 4, 0x20};  // colours, layers, linetypes, markers
  for (const std::uint32_t flag : kBefore)
    for (std::size_t i = 0; (told & flag) != 0 && bytes.isGood() && i < edges; ++i) bytes.whole();
  std::vector<bool> isHidden;
  for (std::size_t i = 0; (told & kHasVisibility) != 0 && bytes.isGood() && i < edges; ++i)
    isHidden.push_back(bytes.whole() == 0);
  if (!bytes.isGood() || isHidden.empty()) {
    geometry_.shell(static_cast<int>(points.size()), points.data(), static_cast<int>(size), faces.data());
    return;
  }
  std::size_t edge = 0;
  for (std::size_t at = 0; at < size;) {
    const auto corners = static_cast<std::size_t>(std::abs(std::int64_t{faces[at++]}));
    for (std::size_t i = 0; i < corners; ++i) {
      const auto corner = [&](std::size_t k) {
        return points[static_cast<std::size_t>(faces[at + k % corners])];
      };
      const KvGePoint3d ends[] = {corner(i), corner(i + 1)};
      if (!isHidden[edge++]) geometry_.polyline(2, ends);
    }
    at += corners;
  }
}

CString Picture::textOf(const std::string& bytes) const {
  if (platform::isUtf8(bytes)) return CString(platform::fromUtf8(bytes));
  const auto page = drawing_
                        ? platform::codePageFromDrawingName(platform::utf8From(drawing_->extras().codePage))
                        : std::nullopt;
  constexpr std::uint32_t kWestern = 1252;
  return CString(platform::fromCodePage(bytes, page.value_or(kWestern)));
}

void Picture::takeText(std::uint32_t kind, Bytes& bytes) {
  if (kind != kText && kind != kText2 && kind != kUnicodeText && kind != kUnicodeText2) return;
  const bool isUnicode = kind == kUnicodeText || kind == kUnicodeText2;
  const bool hasFonts = kind == kText2 || kind == kUnicodeText2;
  const auto words = [&] { return isUnicode ? CString(bytes.wideText()) : textOf(bytes.text()); };
  const KvGePoint3d position = bytes.point();
  const KvGeVector3d normal = bytes.vector(), direction = bytes.vector();
  KvGiTextLook look;
  CString text;
  if (hasFonts) {
    text = words();
    const std::int32_t length = bytes.number();
    look.isRaw = bytes.number() != 0;
    if (length >= 0 && length < text.GetLength()) text = text.Left(length);
  }
  look.height = bytes.real();
  look.widthFactor = bytes.real();
  look.oblique = bytes.real();
  if (hasFonts) {
    look.trackingFactor = bytes.real();
    for (bool* flag :
         {&look.isBackward, &look.isUpsideDown, &look.isVertical, &look.isUnderlined, &look.isOverlined})
      *flag = bytes.whole() != 0;
    if (isUnicode) {
      look.isBold = bytes.whole() != 0;
      look.isItalic = bytes.whole() != 0;
      bytes.whole();  // character set
      bytes.whole();  // pitch and family
      look.typeface = words();
    }
    look.fontFile = words();
    look.bigFontFile = words();
  } else {
    text = words();
  }
  if (!bytes.isGood() || text.IsEmpty() || !(look.height > 0) || normal.isZeroLength() ||
      direction.isZeroLength())
    return;
  if (!(look.widthFactor > 0)) look.widthFactor = 1;
  if (!(look.trackingFactor > 0)) look.trackingFactor = 1;
  if (!(std::fabs(look.oblique) < kvge::kPi / 2)) look.oblique = 0;
  geometry_.text(position, normal.normal(), direction.normal(), look, text);
  noteDrawn();
}

}  // namespace

std::vector<std::uint8_t> kvdbStoredGraphicsOf(const KvDbEntity& entity) {
  constexpr int kCount = 92, kLongCount = 160, kBytes = 310;
  constexpr std::wstring_view kMarkers[] = {L"AcDbEntity", L"AcDbProxyEntity", L"AcDbZombieEntity"};
  constexpr std::int64_t kMostBytes = 256 << 20;
  std::vector<std::uint8_t> bytes;
  for (const KvDbUnknownSection& section : entity.unknownSections()) {
    if (std::find(std::begin(kMarkers), std::end(kMarkers), section.marker.view()) == std::end(kMarkers))
      continue;
    std::int64_t wanted = 0;
    for (const KvDxfGroup& group : section.groups) {
      const bool isCount = group.code == kCount || group.code == kLongCount;
      if (wanted == 0 && isCount) wanted = std::clamp<std::int64_t>(group.integer, 0, kMostBytes);
      // What belongs to something else stands behind the picture.
      if (wanted > 0 && !isCount && group.code != kBytes) break;
      if (group.code != kBytes || static_cast<std::int64_t>(bytes.size()) >= wanted) continue;
      for (const wchar_t c : group.text) bytes.push_back(static_cast<std::uint8_t>(c));
    }
    if (static_cast<std::int64_t>(bytes.size()) > wanted) bytes.resize(static_cast<std::size_t>(wanted));
    if (!bytes.empty()) break;
  }
  return bytes;
}

bool kvdbDrawStoredGraphics(std::span<const std::uint8_t> bytes, const KvDbDatabase* drawing,
                            KvGiWorldDraw& draw) {
  // In front stand the number of bytes and that of primitives.
  if (bytes.size() < kHeadBytes) return false;
  Picture picture(drawing, draw);
  for (std::size_t at = kHeadBytes; at + kHeadBytes <= bytes.size();) {
    Bytes head(bytes.subspan(at));
    const std::uint32_t size = head.whole(), kind = head.whole();
    if (size < kHeadBytes || size > bytes.size() - at) break;
    picture.take(kind, Bytes(bytes.subspan(at + kHeadBytes, size - kHeadBytes)));
    at += size;
  }
  return picture.hasDrawn();
}
