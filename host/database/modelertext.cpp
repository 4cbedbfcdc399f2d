#include "host/database/modelertext.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/geometry/arc.h"

namespace {

constexpr const wchar_t* kMarker = L"AcDbModelerGeometry";
constexpr int kLineCode = 1, kRestCode = 3;
constexpr double kFarthest = 1e100;

// --- Reading
// ---------------------------------------------------------------------------------------------------------------------

/// One record: its name, and what stands behind it. The meaning of a field follows from its kind, since
/// versions differ in how many there are.
struct Record {
  std::wstring_view name;
  std::vector<std::int64_t> references;
  std::vector<double> numbers;
  std::vector<std::wstring_view> words;
  std::size_t common = 0;  ///< how many numbers in front all records of this version have
  /// "straight-curve" is a "curve", straight.
  std::wstring_view kind() const { return name.substr(name.rfind(L'-') + 1); }
};

bool isReversed(const Record& record) {
  for (const std::wstring_view word : record.words) {
    if (word == L"reversed") return true;
    if (word == L"forward") return false;
  }
  return false;
}

std::optional<double> numberOf(std::wstring_view token) {
  char digits[64];
  if (token.empty() || token.size() > sizeof digits) return std::nullopt;
  std::transform(token.begin(), token.end(), digits,
                 [](wchar_t c) { return c < 128 ? static_cast<char>(c) : '?'; });
  double value = 0;
  const auto [end, error] = std::from_chars(digits, digits + token.size(), value);
  if (error != std::errc() || end != digits + token.size() || !(std::fabs(value) < kFarthest))
    return std::nullopt;
  return value;
}

/// Splits the text into tokens; texts of a told length ("@7 unknown") come as one word.
class Tokens {
 public:
  explicit Tokens(std::wstring_view text) : text_(text) {}
  std::wstring_view next() {
    while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
    const std::size_t from = at_;
    while (at_ < text_.size() && !isBlank(text_[at_])) ++at_;
    const std::wstring_view token = text_.substr(from, at_ - from);
    const auto length = token.size() > 1 && token[0] == L'@' ? numberOf(token.substr(1)) : std::nullopt;
    if (!length || !(*length >= 0) || !(*length < static_cast<double>(text_.size() - at_))) return token;
    const std::size_t begin = std::min(at_ + 1, text_.size());
    at_ = std::min(begin + static_cast<std::size_t>(*length), text_.size());
    return text_.substr(begin, at_ - begin);
  }
  bool atEnd() const { return at_ >= text_.size(); }

 private:
  static bool isBlank(wchar_t c) { return c == L' ' || c == L'\n' || c == L'\r' || c == L'\t'; }
  std::wstring_view text_;
  std::size_t at_ = 0;
};

void takeField(Record& record, std::wstring_view token) {
  constexpr double kMostRecords = 1e9;
  if (token.front() == L'$') {
    const auto index = numberOf(token.substr(1));
    // Later versions have a number between the first two references of every record.
    if (record.references.size() == 1) record.common = std::min<std::size_t>(record.numbers.size(), 1);
    record.references.push_back(index && std::fabs(*index) < kMostRecords ? static_cast<std::int64_t>(*index)
                                                                          : -1);
  } else if (const auto number = numberOf(token)) {
    record.numbers.push_back(*number);
  } else {
    record.words.push_back(token);
  }
}

std::vector<Record> recordsOf(std::wstring_view text) {
  std::vector<Record> records;
  bool isOpen = false;
  for (Tokens tokens(text); !tokens.atEnd();) {
    const std::wstring_view token = tokens.next();
    if (token.empty()) continue;
    if (token == L"#") {
      isOpen = false;
    } else if (isOpen) {
      takeField(records.back(), token);
    } else {
      // The end has a name of its own ("End-of-ACIS-data"); records may bear their number in front.
      if (token.starts_with(L"End-of-")) break;
      if (token.front() == L'-' && numberOf(token)) continue;
      records.push_back({token, {}, {}, {}, 0});
      isOpen = true;
    }
  }
  return records;
}

class Model {
 public:
  explicit Model(std::wstring_view text) : records_(recordsOf(text)) {}
  std::optional<KvDbModelerShape> shape() const;

 private:
  const Record* at(std::int64_t index) const {
    const bool isThere = index >= 0 && static_cast<std::size_t>(index) < records_.size();
    return isThere ? &records_[static_cast<std::size_t>(index)] : nullptr;
  }
  /// The nth record of a kind that a record refers to; null when there are fewer.
  const Record* referredTo(const Record& from, std::wstring_view kind, int nth = 0) const {
    for (const std::int64_t index : from.references)
      if (const Record* found = at(index); found && found->kind() == kind && nth-- == 0) return found;
    return nullptr;
  }
  std::optional<KvGePoint3d> pointOf(const Record* vertex) const {
    const Record* point = vertex ? referredTo(*vertex, L"point") : nullptr;
    if (!point || point->numbers.size() < point->common + 3) return std::nullopt;
    const double* n = point->numbers.data() + point->common;
    return KvGePoint3d(n[0], n[1], n[2]);
  }
  KvGeCurve3d::Ptr edgeOf(const Record& edge) const;
  KvGeMatrix3d transform() const;

  std::vector<Record> records_;
};

std::optional<KvDbModelerShape> Model::shape() const {
  KvDbModelerShape shape;
  bool isModel = false;
  for (const Record& record : records_) {
    isModel = isModel || record.kind() == L"body";
    if (record.kind() == L"face") {
      const Record* surface = referredTo(record, L"surface");
      shape.isFlat = shape.isFlat && surface && surface->name == L"plane-surface";
    }
    // An edge without a curve is a point, such as the tip of a cone.
    if (record.kind() != L"edge" || !referredTo(record, L"curve")) continue;
    if (auto edge = edgeOf(record))
      shape.edges.push_back(std::move(edge));
    else
      shape.isComplete = false;
  }
  if (!isModel) return std::nullopt;
  const KvGeMatrix3d map = transform();
  if (!map.isEqualTo(KvGeMatrix3d::kIdentity))
    for (KvGeCurve3d::Ptr& edge : shape.edges) edge = edge->transformed(map);
  return shape;
}

KvGeCurve3d::Ptr Model::edgeOf(const Record& edge) const {
  constexpr std::size_t kEllipseNumbers = 10;
  const Record* curve = referredTo(edge, L"curve");
  const Record* last = referredTo(edge, L"vertex", 1);
  const auto from = pointOf(referredTo(edge, L"vertex")), to = last ? pointOf(last) : from;
  if (!from || !to) return nullptr;
  if (curve->name == L"straight-curve")
    return from->isEqualTo(*to) ? nullptr : std::make_unique<KvGeLineSeg3d>(*from, *to);
  if (curve->name != L"ellipse-curve" || curve->numbers.size() < curve->common + kEllipseNumbers)
    return nullptr;
  // Centre, normal, major axis, ratio; bounds may follow.
  const double* n = curve->numbers.data() + curve->common;
  const KvGePoint3d center(n[0], n[1], n[2]);
  const KvGeVector3d normal(n[3], n[4], n[5]), major(n[6], n[7], n[8]);
  if (normal.isZeroLength() || major.isZeroLength() || !(n[9] > 0)) return nullptr;
  const KvGeVector3d minor = normal.normal().crossProduct(major) * n[9];
  if (minor.isZeroLength()) return nullptr;
  const auto paramOf = [&](const KvGePoint3d& p) {
    const KvGeVector3d out = p - center;
    return std::atan2(out.dotProduct(minor) / minor.lengthSqrd(), out.dotProduct(major) / major.lengthSqrd());
  };
  // An edge may run against its curve.
  const bool isBackward = isReversed(edge);
  const double start = paramOf(isBackward ? *to : *from);
  double end = paramOf(isBackward ? *from : *to);
  if (from->isEqualTo(*to))
    end = start + kvge::kTwoPi;
  else if (end <= start)
    end += kvge::kTwoPi;
  constexpr double kRound = 1e-12;
  if (std::fabs(n[9] - 1) < kRound)
    return std::make_unique<KvGeCircArc3d>(center, normal.normal(), major.normal(), major.length(), start,
                                           end);
  return std::make_unique<KvGeEllipArc3d>(center, major, minor, start, end);
}

/// Three rows of a rotation, a translation, a scale; a point is a row in front of it.
KvGeMatrix3d Model::transform() const {
  constexpr std::size_t kNumbers = 13;
  for (const Record& body : records_) {
    const Record* record = body.kind() == L"body" ? referredTo(body, L"transform") : nullptr;
    if (!record || record->numbers.size() < kNumbers) continue;
    // Words stand behind them, in front perhaps what all records have.
    const double* n = record->numbers.data() + (record->numbers.size() - kNumbers);
    const double scale = n[12] != 0 ? n[12] : 1;
    KvGeMatrix3d map;
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 3; ++column) map.entry[row][column] = n[column * 3 + row] * scale;
      map.entry[row][3] = n[9 + row];
    }
    return map;
  }
  return {};
}

// --- Writing
// ---------------------------------------------------------------------------------------------------------------------

std::wstring text(double value) {
  char digits[40];
  const auto end = std::to_chars(digits, digits + sizeof digits, value == 0 ? 0.0 : value).ptr;
  return std::wstring(digits, end);
}
std::wstring text(const KvGePoint3d& p) {
  return text(p.x) + L" " + text(p.y) + L" " + text(p.z);
}
std::wstring text(const KvGeVector3d& v) {
  return text(KvGePoint3d(v.x, v.y, v.z));
}

/// An edge, and which way its loop runs through it.
struct Bound {
  const KvGeCurve3d* curve;
  bool isForward = true;
  KvGePoint3d begin() const { return isForward ? curve->startPoint() : curve->endPoint(); }
  KvGePoint3d end() const { return isForward ? curve->endPoint() : curve->startPoint(); }
};

/// Twice the area that the bounds run round, by points on them; below 0 when they run clockwise.
double windingOf(const std::vector<Bound>& bounds, const KvGeVector3d& normal) {
  constexpr int kSteps = 16;
  KvGeVector3d sum;
  const KvGePoint3d origin = bounds.front().begin();
  KvGePoint3d last = origin;
  for (const Bound& bound : bounds)
    for (int i = 1; i <= kSteps; ++i) {
      const double share = static_cast<double>(bound.isForward ? i : kSteps - i) / kSteps;
      const double from = bound.curve->startParam(), to = bound.curve->endParam();
      const KvGePoint3d p = bound.curve->pointAtParam(from + (to - from) * share);
      sum = sum + (last - origin).crossProduct(p - origin);
      last = p;
    }
  return sum.dotProduct(normal);
}

/// Arcs are given counter-clockwise about the plane's normal whichever way the loop runs; this finds out.
/// False when the edges don't join.
bool orient(std::vector<Bound>& bounds, const KvGeVector3d& normal, bool isHole) {
  constexpr double kJoint = 1e-6;
  for (const bool isFirstForward : {true, false}) {
    bounds.front().isForward = isFirstForward;
    bool isJoined = true;
    for (std::size_t i = 1; i < bounds.size() && isJoined; ++i) {
      const KvGePoint3d at = bounds[i - 1].end();
      const double ahead = bounds[i].curve->startPoint().distanceTo(at),
                   back = bounds[i].curve->endPoint().distanceTo(at);
      // Both ends may lie there: of two halves, the second goes on as the first went.
      bounds[i].isForward = std::fabs(ahead - back) <= kJoint ? isFirstForward : ahead < back;
      isJoined = std::min(ahead, back) <= kJoint;
    }
    isJoined = isJoined && bounds.back().end().distanceTo(bounds.front().begin()) <= kJoint;
    if (isJoined && (windingOf(bounds, normal) < 0) == isHole) return true;
  }
  return false;
}

std::wstring ref(int index) {
  return L"$" + std::to_wstring(index);
}

/// Gives records their numbers while they are made, and their lines at the end. The fields are those of
/// version 7.0, which files of all versions with text may hold.
class ModelWriter {
 public:
  int add() {
    lines_.emplace_back();
    return static_cast<int>(lines_.size()) - 1;
  }
  int add(std::wstring_view name, const std::wstring& fields) {
    const int made = add();
    set(made, name, fields);
    return made;
  }
  void set(int index, std::wstring_view name, const std::wstring& fields) {
    lines_[static_cast<std::size_t>(index)] = std::wstring(name) + L" $-1 -1 $-1 " + fields + L" #";
  }
  /// One face of an area, in its lump: the shell's record; -1 when it holds what can't be written.
  int addArea(const KvGeRegion& area, const KvGePlane& plane, int lump);
  std::vector<std::wstring> takeLines() { return std::move(lines_); }

 private:
  /// The curve's record; -1 for a curve that can't be written.
  int addCurve(const KvGeCurve3d& curve);
  bool fillLoop(int loop, const std::vector<Bound>& bounds, int next, int face);

  std::vector<std::wstring> lines_;
};

int ModelWriter::addCurve(const KvGeCurve3d& curve) {
  const auto addEllipse = [&](const KvGePoint3d& center, const KvGeVector3d& major,
                              const KvGeVector3d& minor) {
    const KvGeVector3d normal = major.crossProduct(minor).normal();
    return add(L"ellipse-curve", text(center) + L" " + text(normal) + L" " + text(major) + L" " +
                                     text(minor.length() / major.length()) + L" I I");
  };
  if (curve.kind() == KvGeCurve3d::kLineSeg) {
    const KvGeVector3d along = (curve.endPoint() - curve.startPoint()).normal();
    return add(L"straight-curve", text(curve.startPoint()) + L" " + text(along) + L" I I");
  }
  if (curve.kind() == KvGeCurve3d::kCircArc) {
    const auto& arc = static_cast<const KvGeCircArc3d&>(curve);
    const KvGeVector3d major = arc.refVec() * arc.radius();
    return add(L"ellipse-curve",
               text(arc.center()) + L" " + text(arc.normal()) + L" " + text(major) + L" 1 I I");
  }
  if (curve.kind() != KvGeCurve3d::kEllipArc) return -1;
  const auto& arc = static_cast<const KvGeEllipArc3d&>(curve);
  return addEllipse(arc.center(), arc.majorAxis(), arc.minorAxis());
}

bool ModelWriter::fillLoop(int loop, const std::vector<Bound>& bounds, int next, int face) {
  const std::size_t count = bounds.size();
  std::vector<int> coedges, edges, vertices;
  for (std::size_t i = 0; i < count; ++i) {
    coedges.push_back(add());
    edges.push_back(add());
    vertices.push_back(add());
  }
  for (std::size_t i = 0; i < count; ++i) {
    const Bound& bound = bounds[i];
    const std::size_t after = (i + 1) % count, before = (i + count - 1) % count;
    const int curve = addCurve(*bound.curve);
    if (curve < 0) return false;
    // The vertex where an edge begins is its own, the other that of the next one.
    set(vertices[i], L"vertex", ref(edges[i]) + L" " + ref(add(L"point", text(bound.begin()))));
    const int first = vertices[bound.isForward ? i : after], second = vertices[bound.isForward ? after : i];
    const bool isLine = bound.curve->kind() == KvGeCurve3d::kLineSeg;
    const double from = isLine ? 0 : bound.curve->startParam(),
                 to = isLine ? bound.curve->length() : bound.curve->endParam();
    set(edges[i], L"edge",
        ref(first) + L" " + text(from) + L" " + ref(second) + L" " + text(to) + L" " + ref(coedges[i]) +
            L" " + ref(curve) + L" forward @7 unknown");
    set(coedges[i], L"coedge",
        ref(coedges[after]) + L" " + ref(coedges[before]) + L" $-1 " + ref(edges[i]) +
            (bound.isForward ? L" forward " : L" reversed ") + ref(loop) + L" $-1");
  }
  set(loop, L"loop", ref(next) + L" " + ref(coedges.front()) + L" " + ref(face));
  return true;
}

int ModelWriter::addArea(const KvGeRegion& area, const KvGePlane& plane, int lump) {
  const int shell = add(), face = add();
  const KvGeVector3d normal = plane.normal();
  const int surface = add(L"plane-surface", text(plane.pointOnPlane()) + L" " + text(normal) + L" " +
                                                text(normal.perpVector().normal()) + L" forward_v I I I I");
  std::vector<int> loops;
  for (int l = 0; l < area.loopCount(); ++l) loops.push_back(add());
  if (loops.empty()) return -1;
  for (int l = 0; l < area.loopCount(); ++l) {
    std::vector<KvGeCurve3d::Ptr> edges;
    area.explodeLoop(l, edges);
    std::vector<Bound> bounds;
    for (const KvGeCurve3d::Ptr& edge : edges) bounds.push_back({edge.get()});
    const auto index = static_cast<std::size_t>(l);
    const int next = index + 1 < loops.size() ? loops[index + 1] : -1;
    if (bounds.empty() || !orient(bounds, normal, area.outerLoopOf(l) >= 0) ||
        !fillLoop(loops[index], bounds, next, face))
      return -1;
  }
  set(shell, L"shell", L"$-1 $-1 " + ref(face) + L" $-1 " + ref(lump));
  set(face, L"face",
      L"$-1 " + ref(loops.front()) + L" " + ref(shell) + L" $-1 " + ref(surface) + L" forward double out");
  return shell;
}

}  // namespace

std::wstring kvdbModelerDecoded(std::wstring_view line) {
  constexpr wchar_t kSum = 159;
  std::wstring made;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const wchar_t c = line[i];
    made += c > L' ' && c < 127 ? static_cast<wchar_t>(kSum - c) : c;
    // A sign that begins a control code has a blank behind it.
    if (c == L'^' && i + 1 < line.size() && line[i + 1] == L' ') ++i;
  }
  return made;
}

std::wstring kvdbModelerEncoded(std::wstring_view line) {
  constexpr wchar_t kSum = 159;
  std::wstring made;
  for (const wchar_t c : line) {
    const wchar_t other = c > L' ' && c < 127 ? static_cast<wchar_t>(kSum - c) : c;
    made += other;
    if (other == L'^') made += L' ';
  }
  return made;
}

std::optional<KvDbModelerShape> kvdbReadModelerText(std::wstring_view text) {
  // In front stand three lines: counts, the program, tolerances.
  constexpr int kHeadLines = 3;
  for (int line = 0; line < kHeadLines; ++line) {
    const std::size_t end = text.find(L'\n');
    if (end == std::wstring_view::npos) return std::nullopt;
    text.remove_prefix(end + 1);
  }
  return Model(text).shape();
}

std::wstring kvdbModelerTextOf(const KvDbEntity& entity) {
  std::wstring whole;
  for (const KvDbUnknownSection& section : entity.unknownSections()) {
    if (section.marker.view() != kMarker) continue;
    for (const KvDxfGroup& group : section.groups) {
      if (group.code != kLineCode && group.code != kRestCode) continue;
      // The rest of a long line goes on where the line ended.
      if (group.code == kLineCode && !whole.empty()) whole += L'\n';
      whole += kvdbModelerDecoded(group.text);
    }
  }
  return whole;
}

std::vector<std::wstring> kvdbWriteModelerText(const KvGeRegion& region) {
  std::vector<KvGeRegion> areas;
  region.separate(areas);
  if (areas.empty()) return {};
  ModelWriter writer;
  const int body = writer.add();
  std::vector<int> lumps;
  for (std::size_t i = 0; i < areas.size(); ++i) lumps.push_back(writer.add());
  writer.set(body, L"body", ref(lumps.front()) + L" $-1 $-1");
  for (std::size_t i = 0; i < areas.size(); ++i) {
    const int shell = writer.addArea(areas[i], region.plane(), lumps[i]);
    if (shell < 0) return {};
    const int next = i + 1 < areas.size() ? lumps[i + 1] : -1;
    writer.set(lumps[i], L"lump", ref(next) + L" " + ref(shell) + L" " + ref(body));
  }
  std::vector<std::wstring> lines = {L"700 0 1 0 ",
                                     L"@7 Korvane @12 ACIS 32.0 NT @24 Thu Jan 01 00:00:00 1970 ",
                                     L"1 9.9999999999999995e-007 1e-010 "};
  for (std::wstring& line : writer.takeLines()) lines.push_back(std::move(line));
  lines.push_back(L"End-of-ACIS-data ");
  return lines;
}
