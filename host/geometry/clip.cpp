#include "host/geometry/clip.h"

#include "host/geometry/internal/overlay.h"

using kvge::FlatHit;
using kvge::Span;
using kvge::SpanKind;

namespace {

size_t ix(int i) {
  return static_cast<size_t>(i);
}

enum class Cell : unsigned char { kOutside, kInside, kMixed };

/// Buffers of one call; kept by the thread, so that a call allocates nothing once they have grown.
struct Scratch {
  std::vector<double> cuts, store;
  std::vector<FlatHit> hits;
  std::vector<int> edges;
  std::vector<unsigned> seen;
  unsigned turn = 0;
};

Scratch& scratch() {
  thread_local Scratch one;
  return one;
}

}  // namespace

struct KvGeClipper::Data {
  double tol = 0;
  std::vector<Span> edges;
  std::vector<std::unique_ptr<std::vector<double>>> poles;
  KvGeBox3d box;
  int size = 1;  ///< cells along each side
  double scaleX = 0, scaleY = 0;
  std::vector<Cell> cells;
  std::vector<int> first;  ///< where a cell's edges begin in `entries`; one more at the end
  std::vector<int> entries;
  std::vector<kvge::Loop> whole;  ///< the edges by rows of the grid, for the parity of a point

  int column(double x) const { return std::clamp(static_cast<int>((x - box.low.x) * scaleX), 0, size - 1); }
  int row(double y) const { return std::clamp(static_cast<int>((y - box.low.y) * scaleY), 0, size - 1); }
  int cellOf(int c, int r) const { return r * size + c; }

  void build() {
    for (const Span& e : edges) box.add(kvge::boxOf(e));
    box = box.grown(16 * tol + 1e-9 * (box.high.x - box.low.x + box.high.y - box.low.y));
    size = std::clamp(static_cast<int>(6 * std::sqrt(static_cast<double>(edges.size()))), 24, 512);
    scaleX = size / (box.high.x - box.low.x);
    scaleY = size / (box.high.y - box.low.y);
    std::vector<std::vector<int>> lists(ix(size * size));
    whole.resize(ix(size));
    for (size_t i = 0; i < edges.size(); ++i) place(static_cast<int>(i), edges[i], lists);
    cells.assign(lists.size(), Cell::kMixed);
    first.push_back(0);
    for (int r = 0; r < size; ++r)
      for (int c = 0; c < size; ++c) {
        const auto& list = lists[ix(cellOf(c, r))];
        entries.insert(entries.end(), list.begin(), list.end());
        first.push_back(static_cast<int>(entries.size()));
        if (!list.empty()) continue;
        // A cell without an edge is as its left neighbour without one.
        const Cell before = c > 0 ? cells[ix(cellOf(c - 1, r))] : Cell::kOutside;
        const KvGePoint2d middle(box.low.x + (c + 0.5) / scaleX, box.low.y + (r + 0.5) / scaleY);
        cells[ix(cellOf(c, r))] = before != Cell::kMixed ? before
                                  : isInside(middle)     ? Cell::kInside
                                                         : Cell::kOutside;
      }
  }

  /// Puts an edge into every cell that it may touch: long ones are halved until their boxes are no larger
  /// than cells.
  void place(int index, const Span& e, std::vector<std::vector<int>>& lists) {
    const KvGeBox3d b = kvge::boxOf(e).grown(4 * tol);
    for (int r = row(b.low.y); r <= row(b.high.y); ++r) whole[ix(r)].push_back({e, false});
    spread(index, e, lists, 0);
  }

  void spread(int index, const Span& e, std::vector<std::vector<int>>& lists, int depth) {
    const KvGeBox3d b = kvge::boxOf(e).grown(4 * tol);
    const int c0 = column(b.low.x), c1 = column(b.high.x), r0 = row(b.low.y), r1 = row(b.high.y);
    constexpr int kDeepest = 12;
    if ((c1 - c0 > 0 && r1 - r0 > 0 && (c1 - c0 > 1 || r1 - r0 > 1)) && depth < kDeepest) {
      Span left = e, right = e;
      left.high = right.low = (e.low + e.high) / 2;
      spread(index, left, lists, depth + 1);
      spread(index, right, lists, depth + 1);
      return;
    }
    for (int r = r0; r <= r1; ++r)
      for (int c = c0; c <= c1; ++c) {
        auto& list = lists[ix(cellOf(c, r))];
        if (list.empty() || list.back() != index) list.push_back(index);
      }
  }

  bool isInside(KvGePoint2d p) const {
    if (p.x < box.low.x || p.x > box.high.x || p.y < box.low.y || p.y > box.high.y) return false;
    return kvge::windingOf(whole[ix(row(p.y))], p) % 2 != 0;
  }

  bool isOn(KvGePoint2d p) const {
    const int c = cellOf(column(p.x), row(p.y));
    for (int k = first[ix(c)]; k < first[ix(c) + 1]; ++k) {
      const Span& e = edges[ix(entries[ix(k)])];
      const KvGePoint3d q = kvge::spatial(p);
      if (kvge::pointAt(e, kvge::nearestOn(e, q)).distanceTo(q) <= tol) return true;
    }
    return false;
  }

  KvGe::PointContainment sideOf(KvGePoint2d p) const {
    if (!box.contains({p.x, p.y, 0})) return KvGe::kOutside;
    const Cell cell = cells[ix(cellOf(column(p.x), row(p.y)))];
    if (cell != Cell::kMixed) return cell == Cell::kInside ? KvGe::kInside : KvGe::kOutside;
    if (isOn(p)) return KvGe::kOnBoundary;
    return isInside(p) ? KvGe::kInside : KvGe::kOutside;
  }

  /// The side of a stretch that meets the outline nowhere inside; only one between two meetings can lie on
  /// it.
  KvGe::PointContainment sideOfStretch(const Span& span, double start, double end, bool mayLieOn) const {
    const KvGePoint2d middle = kvge::planar(kvge::pointAt(span, (start + end) / 2));
    if (mayLieOn) return sideOf(middle);
    for (const double t : {(start + end) / 2, start, end}) {
      const KvGePoint2d p = kvge::planar(kvge::pointAt(span, t));
      if (p.x < box.low.x || p.x > box.high.x || p.y < box.low.y || p.y > box.high.y) return KvGe::kOutside;
      const Cell cell = cells[ix(cellOf(column(p.x), row(p.y)))];
      if (cell != Cell::kMixed) return cell == Cell::kInside ? KvGe::kInside : KvGe::kOutside;
    }
    return isInside(middle) ? KvGe::kInside : KvGe::kOutside;
  }

  /// Cuts a line without end down to what can reach the outline; true when its start was cut.
  bool trim(Span& line) const {
    if (std::isfinite(line.low) && std::isfinite(line.high)) return false;
    const KvGePoint3d center = kvge::midpoint(box.low, box.high);
    const double foot = (center - line.origin).dotProduct(line.u), reach = (box.high - box.low).length();
    const bool isCut = foot - reach > line.low;
    line.low = std::max(line.low, foot - reach);
    line.high = std::max(line.low, std::min(line.high, foot + reach));
    return isCut;
  }

  /// Adds the edges of a cell that this turn hasn't seen yet.
  void look(int c, int r, Scratch& s) const {
    const size_t cell = ix(cellOf(c, r));
    for (int k = first[cell]; k < first[cell + 1]; ++k) {
      const int e = entries[ix(k)];
      if (s.seen[ix(e)] == s.turn) continue;
      s.seen[ix(e)] = s.turn;
      s.edges.push_back(e);
    }
  }

  /// The cells that a straight span passes, column by column.
  void walk(const Span& line, Scratch& s) const {
    KvGePoint3d a = kvge::startOf(line), b = kvge::endOf(line);
    if (a.x > b.x) std::swap(a, b);
    const double left = std::max(a.x, box.low.x), right = std::min(b.x, box.high.x);
    const double slope = b.x > a.x ? (b.y - a.y) / (b.x - a.x) : 0;
    const int c0 = column(left - 2 * tol), c1 = column(right + 2 * tol);
    for (int c = c0; c <= c1; ++c) {
      const double x0 = std::max(left, box.low.x + (c - 0.001) / scaleX),
                   x1 = std::min(right, box.low.x + (c + 1.001) / scaleX);
      double y0 = b.x > a.x ? a.y + slope * (x0 - a.x) : std::min(a.y, b.y),
             y1 = b.x > a.x ? a.y + slope * (x1 - a.x) : std::max(a.y, b.y);
      if (y0 > y1) std::swap(y0, y1);
      if (y1 < box.low.y || y0 > box.high.y) continue;
      for (int r = row(y0 - 2 * tol), r1 = row(y1 + 2 * tol); r <= r1; ++r) look(c, r, s);
    }
  }

  /// Where a flat span with the box `b` meets the outline, in no order.
  void cross(const Span& span, const KvGeBox3d& b, Scratch& s) const {
    s.edges.clear();
    if (s.seen.size() < edges.size()) s.seen.resize(edges.size(), 0);
    if (++s.turn == 0) std::fill(s.seen.begin(), s.seen.end(), 0u), s.turn = 1;
    const int c0 = column(b.low.x), c1 = column(b.high.x), r0 = row(b.low.y), r1 = row(b.high.y);
    if (span.kind == SpanKind::kLine && c1 - c0 + r1 - r0 > 3)
      walk(span, s);
    else
      for (int r = r0; r <= r1; ++r)
        for (int c = c0; c <= c1; ++c) look(c, r, s);
    s.hits.clear();
    if (s.edges.empty()) return;
    for (const int e : s.edges) kvge::crossFlat(span, edges[ix(e)], tol, s.hits);
  }
};

namespace {

/// A box that may be a little larger than needed but takes no inverse tangents.
KvGeBox3d quickBox(const Span& span) {
  KvGeBox3d box;
  if (span.kind == SpanKind::kBezier) {
    for (int i = 0; i <= span.degree; ++i) {
      const double* p = span.poles + 4 * i;
      box.add(KvGePoint3d(p[0] / p[3], p[1] / p[3], 0));
    }
    return box;
  }
  if (span.radius == 0 || span.high - span.low >= 1) return kvge::boxOf(span);
  const double middle = (span.low + span.high) / 2, reach = 1 / std::cos((span.high - span.low) / 2);
  box.add(kvge::startOf(span));
  box.add(kvge::endOf(span));
  box.add(span.origin + (kvge::pointAt(span, middle) - span.origin) * reach);  // where the end tangents meet
  return box;
}

/// Adds a stretch to a list; one that goes on from the last is joined to it.
void add(std::vector<KvGeParamRange>& list, double from, double to, bool goesOn) {
  const double slack = std::isfinite(from) ? 1e-12 * std::max(1.0, std::fabs(from)) : 0;
  if (goesOn && !list.empty() && std::fabs(list.back().to - from) <= slack)
    list.back().to = to;
  else
    list.push_back({from, to});
}

}  // namespace

KvGeClipper::KvGeClipper() = default;
KvGeClipper::~KvGeClipper() = default;

std::unique_ptr<KvGeClipper> KvGeClipper::create(const std::vector<const KvGeCurve3d*>& outlines,
                                                 const KvGeTol& tol) {
  auto data = std::make_unique<Data>();
  data->tol = tol.equalPoint();
  for (const KvGeCurve3d* c : outlines) {
    if (!c || !c->isClosed(tol)) return nullptr;
    for (int i = 0, n = c->spanCount(); i < n; ++i) {
      auto store = std::make_unique<std::vector<double>>();
      Span s = kvge::flattened(c->span(i), kvge::Frame(), *store);
      if (s.isPoint() || !(s.low < s.high)) continue;
      s.base = 0;
      s.scale = 1;
      data->edges.push_back(s);
      if (!store->empty()) data->poles.push_back(std::move(store));
    }
  }
  KvGeBox3d box;
  for (const Span& e : data->edges) box.add(kvge::boxOf(e));
  if (box.isEmpty() || !std::isfinite(box.low.x + box.high.x + box.low.y + box.high.y)) return nullptr;
  if (!(box.high.x - box.low.x > data->tol) || !(box.high.y - box.low.y > data->tol)) return nullptr;
  data->build();
  std::unique_ptr<KvGeClipper> clipper(new KvGeClipper);
  clipper->data_ = std::move(data);
  return clipper;
}

KvGe::PointContainment KvGeClipper::contains(KvGePoint2d point) const {
  return data_->sideOf(point);
}

void KvGeClipper::clip(const KvGeCurve3d& curve, std::vector<KvGeParamRange>& inside,
                       std::vector<KvGeParamRange>& outside) const {
  inside.clear();
  outside.clear();
  Scratch& s = scratch();
  const kvge::Frame world;
  for (int i = 0, n = curve.spanCount(); i < n; ++i) {
    Span span = kvge::flattened(curve.span(i), world, s.store);
    if (!(span.low < span.high)) continue;
    const double end = span.toCurve(span.high);
    if (const double start = span.toCurve(span.low); data_->trim(span))
      add(outside, start, span.toCurve(span.low), i > 0);
    const double from = span.toCurve(span.low), to = span.toCurve(span.high);
    const KvGeBox3d box = quickBox(span);
    if (!box.meetsXY(data_->box)) {
      add(outside, from, end, i > 0);
      continue;
    }
    data_->cross(span, box.grown(2 * data_->tol), s);
    if (s.edges.empty()) {
      // The cells passed hang together and have no edges: all lie on one side.
      const KvGePoint3d start = kvge::startOf(span);
      const bool isInside =
          data_->box.contains({start.x, start.y, 0}) &&
          data_->cells[ix(data_->cellOf(data_->column(start.x), data_->row(start.y)))] == Cell::kInside;
      add(isInside ? inside : outside, from, end, i > 0);
      continue;
    }
    s.cuts.assign(1, span.low);
    for (const FlatHit& hit : s.hits) s.cuts.push_back(hit.ta);
    if (s.cuts.size() > 2) std::sort(s.cuts.begin() + 1, s.cuts.end());
    s.cuts.push_back(span.high);
    const double least =
        span.kind == SpanKind::kLine ? 4 * data_->tol : 1e-12 * std::max(1.0, std::fabs(span.high));
    double start = span.low;
    for (size_t k = 1; k < s.cuts.size(); ++k) {
      const double stop = s.cuts[k];
      if (stop - start <= least && s.cuts.size() > 2 && k + 1 < s.cuts.size()) continue;
      if (!(stop > start)) continue;
      const KvGe::PointContainment side = data_->sideOfStretch(span, start, stop, !s.hits.empty());
      if (side != KvGe::kOnBoundary)
        add(side == KvGe::kInside ? inside : outside, span.toCurve(start),
            k + 1 == s.cuts.size() ? to : span.toCurve(stop), true);
      start = stop;
    }
    if (end > to) add(outside, to, end, true);
  }
}
