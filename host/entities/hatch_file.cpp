// How hatches stand in files and snapshots.
#include <algorithm>

#include "host/database/database.h"
#include "host/entities/hatch.h"

namespace {

constexpr const wchar_t* kMarker = L"AcDbHatch";

std::int16_t shortOf(const KvDxfGroup& group) {
  return static_cast<std::int16_t>(group.integer);
}

void writeNumbers(KvDbDwgFiler& filer, const std::vector<double>& numbers) {
  filer.writeUInt32(static_cast<std::uint32_t>(numbers.size()));
  for (double number : numbers) filer.writeDouble(number);
}
void readNumbers(KvDbDwgFiler& filer, std::vector<double>& numbers) {
  numbers.assign(filer.readUInt32(), 0);
  for (double& number : numbers) number = filer.readDouble();
}
void writePoints(KvDbDwgFiler& filer, const std::vector<KvGePoint2d>& points) {
  filer.writeUInt32(static_cast<std::uint32_t>(points.size()));
  for (const KvGePoint2d& point : points) filer.writePoint2d(point);
}
void readPoints(KvDbDwgFiler& filer, std::vector<KvGePoint2d>& points) {
  points.assign(filer.readUInt32(), {});
  for (KvGePoint2d& point : points) point = filer.readPoint2d();
}

void writeEdge(KvDbDwgFiler& filer, const KvDbHatch::Edge& edge) {
  filer.writeInt16(edge.kind);
  filer.writePoint2d(edge.first);
  filer.writePoint2d(edge.second);
  for (double number : {edge.radius, edge.start, edge.end}) filer.writeDouble(number);
  filer.writeBool(edge.isCounterClockwise);
  filer.writeInt32(edge.degree);
  filer.writeInt16(edge.isRational);
  filer.writeInt16(edge.isPeriodic);
  filer.writeBool(edge.saysFitPoints);
  writeNumbers(filer, edge.knots);
  writeNumbers(filer, edge.weights);
  writePoints(filer, edge.poles);
  writePoints(filer, edge.fitPoints);
  filer.writeUInt32(static_cast<std::uint32_t>(edge.tangents.size()));
  for (const auto& [code, tangent] : edge.tangents) {
    filer.writeInt32(code);
    filer.writePoint2d(tangent);
  }
}

void readEdge(KvDbDwgFiler& filer, KvDbHatch::Edge& edge) {
  edge.kind = filer.readInt16();
  edge.first = filer.readPoint2d();
  edge.second = filer.readPoint2d();
  for (double* number : {&edge.radius, &edge.start, &edge.end}) *number = filer.readDouble();
  edge.isCounterClockwise = filer.readBool();
  edge.degree = filer.readInt32();
  edge.isRational = filer.readInt16();
  edge.isPeriodic = filer.readInt16();
  edge.saysFitPoints = filer.readBool();
  readNumbers(filer, edge.knots);
  readNumbers(filer, edge.weights);
  readPoints(filer, edge.poles);
  readPoints(filer, edge.fitPoints);
  edge.tangents.resize(filer.readUInt32());
  for (auto& [code, tangent] : edge.tangents) {
    code = filer.readInt32();
    tangent = filer.readPoint2d();
  }
}

void writeEdge(KvDxfWriter& writer, const KvDbHatch::Edge& edge) {
  writer.integer(72, edge.kind);
  if (edge.kind == KvDbHatch::kLine || edge.kind == KvDbHatch::kEllArc) {
    writer.point2d(10, edge.first);
    writer.point2d(11, edge.second);
  } else if (edge.kind == KvDbHatch::kCirArc) {
    writer.point2d(10, edge.first);
  }
  if (edge.kind == KvDbHatch::kCirArc || edge.kind == KvDbHatch::kEllArc) {
    writer.real(40, edge.radius);
    writer.real(50, edge.start);
    writer.real(51, edge.end);
    writer.integer(73, edge.isCounterClockwise);
  }
  if (edge.kind != KvDbHatch::kSpline) return;
  writer.integer(94, edge.degree);
  writer.integer(73, edge.isRational);
  writer.integer(74, edge.isPeriodic);
  writer.integer(95, static_cast<std::int64_t>(edge.knots.size()));
  writer.integer(96, static_cast<std::int64_t>(edge.poles.size()));
  for (double knot : edge.knots) writer.real(40, knot);
  for (std::size_t i = 0; i < edge.poles.size(); ++i) {
    writer.point2d(10, edge.poles[i]);
    if (i < edge.weights.size()) writer.real(42, edge.weights[i]);
  }
  if (!edge.saysFitPoints) return;
  writer.integer(97, static_cast<std::int64_t>(edge.fitPoints.size()));
  for (const KvGePoint2d& point : edge.fitPoints) writer.point2d(11, point);
  for (const auto& [code, tangent] : edge.tangents) writer.point2d(code, tangent);
}

}  // namespace

// --- Reading: one pass over the groups, which stand in a fixed order
// ----------------------------------------------------------

class KvDbHatch::Reader {
 public:
  Reader(KvDbHatch& hatch, std::span<const KvDxfGroup> groups, KvDxfResolver& resolver)
      : hatch_(hatch), groups_(groups), resolver_(resolver) {}

  void read(std::wstring_view marker) {
    while (has()) {
      const KvDxfGroup& group = groups_[at_];
      if (readHead(group)) continue;
      ++at_;
      hatch_.keepUnknown(marker, group);
    }
  }

 private:
  bool has() const { return at_ < groups_.size(); }
  bool is(int code) const { return has() && groups_[at_].code == code; }
  const KvDxfGroup& next() { return groups_[at_++]; }
  template <class T>
  bool takeInt(int code, T& value) {
    if (!is(code)) return false;
    value = static_cast<T>(next().integer);
    return true;
  }
  bool takeReal(int code, double& value) {
    if (!is(code)) return false;
    value = next().real();
    return true;
  }
  bool takePoint(int code, KvGePoint2d& value) {
    if (!is(code)) return false;
    value = kvge::planar(next().point);
    return true;
  }

  bool readHead(const KvDxfGroup& group) {
    switch (group.code) {
      case 10:
        if (hasLoops_) return false;
        hatch_.elevation_ = next().point;
        return true;
      case 210:
        hatch_.normal_ = next().point.asVector();
        return true;
      case 2:
        hatch_.name_ = CString(next().text);
        return true;
      case 70:
        hatch_.isSolid_ = shortOf(next());
        return true;
      case 71:
        hatch_.isAssociative_ = shortOf(next());
        return true;
      case 91:
        next();
        hasLoops_ = true;
        while (is(92)) readLoop();
        return true;
      case 75:
        hatch_.style_ = shortOf(next());
        return true;
      case 76:
        hatch_.patternType_ = shortOf(next());
        return true;
      default:
        return hasLoops_ && readTail(group);
    }
  }

  bool readTail(const KvDxfGroup& group) {
    switch (group.code) {
      case 52:
        hatch_.angle_.setDegrees(next().real());
        hatch_.hasPattern_ = true;
        return true;
      case 41:
        hatch_.scale_ = hatch_.space_ = next().real();
        return true;
      case 77:
        hatch_.isDouble_ = shortOf(next());
        return true;
      case 78:
        next();
        while (is(53)) readLine();
        return true;
      case 47:
        hatch_.pixelSize_ = next().real();
        hatch_.hasPixelSize_ = true;
        return true;
      case 98:
        next();
        for (KvGePoint2d seed; takePoint(10, seed);) hatch_.seeds_.push_back(seed);
        return true;
      default:
        return false;
    }
  }

  void readLine() {
    PatternLine& line = hatch_.lines_.emplace_back();
    takeReal(53, line.angle);
    takeReal(43, line.base.x);
    takeReal(44, line.base.y);
    takeReal(45, line.offset.x);
    takeReal(46, line.offset.y);
    if (is(79)) next();
    for (double dash = 0; takeReal(49, dash);) line.dashes.push_back(dash);
  }

  void readLoop() {
    Loop& loop = hatch_.loops_.emplace_back();
    takeInt(92, loop.type);
    if (loop.isPolyline()) {
      takeInt(72, loop.hasBulges);
      takeInt(73, loop.isClosed);
      if (is(93)) next();
      for (Vertex vertex; takePoint(10, vertex.point); vertex = {}) {
        takeReal(42, vertex.bulge);
        loop.vertices.push_back(vertex);
      }
    } else {
      if (is(93)) next();
      while (is(72)) readEdge(loop.edges.emplace_back());
    }
    if (is(97)) next();
    while (is(330)) loop.sources.append(resolver_.object(next().integer));
  }

  void readEdge(Edge& edge) {
    takeInt(72, edge.kind);
    if (edge.kind == kSpline) {
      readSpline(edge);
      return;
    }
    takePoint(10, edge.first);
    takePoint(11, edge.second);
    takeReal(40, edge.radius);
    takeReal(50, edge.start);
    takeReal(51, edge.end);
    takeInt(73, edge.isCounterClockwise);
  }

  void readSpline(Edge& edge) {
    takeInt(94, edge.degree);
    takeInt(73, edge.isRational);
    takeInt(74, edge.isPeriodic);
    if (is(95)) next();
    if (is(96)) next();
    for (double knot = 0; takeReal(40, knot);) edge.knots.push_back(knot);
    for (KvGePoint2d pole; takePoint(10, pole);) {
      edge.poles.push_back(pole);
      if (double weight = 0; takeReal(42, weight)) edge.weights.push_back(weight);
    }
    // The number of fit points has the code of the number of sources; what follows tells which it is.
    if (!is(97)) return;
    const int after = at_ + 1 < groups_.size() ? groups_[at_ + 1].code : 0;
    edge.saysFitPoints = after == 11 || after == 72 || after == 97;
    if (!edge.saysFitPoints) return;
    next();
    for (KvGePoint2d point; takePoint(11, point);) edge.fitPoints.push_back(point);
    while (is(12) || is(13)) {
      const int code = groups_[at_].code;
      edge.tangents.emplace_back(code, kvge::planar(next().point));
    }
  }

  KvDbHatch& hatch_;
  std::span<const KvDxfGroup> groups_;
  KvDxfResolver& resolver_;
  std::size_t at_ = 0;
  bool hasLoops_ = false;
};

bool KvDbHatch::knowsMarker(std::wstring_view marker) const {
  return marker == kMarker || KvDbEntity::knowsMarker(marker);
}

void KvDbHatch::dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                             KvDxfResolver& resolver) {
  if (marker != kMarker)
    KvDbEntity::dxfInSection(marker, groups, resolver);
  else
    Reader(*this, groups, resolver).read(marker);
}

void KvDbHatch::writeLoop(KvDxfWriter& writer, const Loop& loop) const {
  writer.integer(92, loop.type);
  if (loop.isPolyline()) {
    writer.integer(72, loop.hasBulges);
    writer.integer(73, loop.isClosed);
    writer.integer(93, static_cast<std::int64_t>(loop.vertices.size()));
    for (const Vertex& vertex : loop.vertices) {
      writer.point2d(10, vertex.point);
      if (loop.hasBulges) writer.real(42, vertex.bulge);
    }
  } else {
    writer.integer(93, static_cast<std::int64_t>(loop.edges.size()));
    for (const Edge& edge : loop.edges) writeEdge(writer, edge);
  }
  writer.integer(97, loop.sources.length());
  for (KvDbObjectId id : loop.sources) writer.handle(330, id);
}

void KvDbHatch::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  writer.marker(kMarker);
  writer.point(10, elevation_);
  writer.vector(210, normal_);
  writer.text(2, name_.view());
  writer.integer(70, isSolid_);
  writer.integer(71, isAssociative_);
  writer.integer(91, numLoops());
  for (const Loop& loop : loops_) writeLoop(writer, loop);
  writer.integer(75, style_);
  writer.integer(76, patternType_);
  if (!isSolid_ || hasPattern_) {
    writer.real(52, angle_.degrees());
    writer.real(41, patternType_ == kUserDefined ? space_ : scale_);
    writer.integer(77, isDouble_);
    writer.integer(78, numPatternDefinitions());
    for (const PatternLine& line : lines_) {
      writer.real(53, line.angle);
      writer.real(43, line.base.x);
      writer.real(44, line.base.y);
      writer.real(45, line.offset.x);
      writer.real(46, line.offset.y);
      writer.integer(79, static_cast<std::int64_t>(line.dashes.size()));
      for (double dash : line.dashes) writer.real(49, dash);
    }
  }
  if (hasPixelSize_) writer.real(47, pixelSize_);
  writer.integer(98, static_cast<std::int64_t>(seeds_.size()));
  for (const KvGePoint2d& seed : seeds_) writer.point2d(10, seed);
  writeUnknown(writer, kMarker);
}

void KvDbHatch::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  filer.writePoint3d(elevation_);
  filer.writeVector3d(normal_);
  filer.writeString(name_);
  for (std::int16_t number : {isSolid_, isAssociative_, style_, patternType_, isDouble_})
    filer.writeInt16(number);
  for (double number : {angle_.degrees(), scale_, space_, pixelSize_}) filer.writeDouble(number);
  filer.writeBool(hasPixelSize_);
  filer.writeBool(hasPattern_);
  filer.writeUInt32(static_cast<std::uint32_t>(lines_.size()));
  for (const PatternLine& line : lines_) {
    filer.writeDouble(line.angle);
    filer.writePoint2d(line.base);
    filer.writePoint2d(KvGePoint2d(line.offset.x, line.offset.y));
    writeNumbers(filer, line.dashes);
  }
  filer.writeUInt32(static_cast<std::uint32_t>(loops_.size()));
  for (const Loop& loop : loops_) {
    filer.writeInt32(loop.type);
    filer.writeBool(loop.hasBulges);
    filer.writeBool(loop.isClosed);
    filer.writeUInt32(static_cast<std::uint32_t>(loop.vertices.size()));
    for (const Vertex& vertex : loop.vertices) {
      filer.writePoint2d(vertex.point);
      filer.writeDouble(vertex.bulge);
    }
    filer.writeUInt32(static_cast<std::uint32_t>(loop.edges.size()));
    for (const Edge& edge : loop.edges) writeEdge(filer, edge);
    filer.writeUInt32(static_cast<std::uint32_t>(loop.sources.length()));
    for (KvDbObjectId id : loop.sources) filer.writeId(id, KvDbReference::SoftPointer);
  }
  writePoints(filer, seeds_);
}

void KvDbHatch::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  elevation_ = filer.readPoint3d();
  normal_ = filer.readVector3d();
  name_ = filer.readString();
  for (std::int16_t* number : {&isSolid_, &isAssociative_, &style_, &patternType_, &isDouble_})
    *number = filer.readInt16();
  angle_.setDegrees(filer.readDouble());
  for (double* number : {&scale_, &space_, &pixelSize_}) *number = filer.readDouble();
  hasPixelSize_ = filer.readBool();
  hasPattern_ = filer.readBool();
  lines_.assign(filer.readUInt32(), {});
  for (PatternLine& line : lines_) {
    line.angle = filer.readDouble();
    line.base = filer.readPoint2d();
    line.offset = filer.readPoint2d().asVector();
    readNumbers(filer, line.dashes);
  }
  loops_.clear();
  loops_.resize(filer.readUInt32());
  for (Loop& loop : loops_) {
    loop.type = filer.readInt32();
    loop.hasBulges = filer.readBool();
    loop.isClosed = filer.readBool();
    loop.vertices.resize(filer.readUInt32());
    for (Vertex& vertex : loop.vertices) {
      vertex.point = filer.readPoint2d();
      vertex.bulge = filer.readDouble();
    }
    loop.edges.resize(filer.readUInt32());
    for (Edge& edge : loop.edges) readEdge(filer, edge);
    const std::uint32_t sources = filer.readUInt32();
    for (std::uint32_t i = 0; i < sources; ++i)
      if (const KvDbObjectId id = filer.readId(KvDbReference::SoftPointer); !id.isNull())
        loop.sources.append(id);
  }
  readPoints(filer, seeds_);
}
