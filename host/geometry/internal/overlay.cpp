#include "host/geometry/internal/overlay.h"

#include <cstdint>
#include <numeric>

namespace kvge {

namespace {

size_t ix(int i) {
  return static_cast<size_t>(i);
}

/// Points made one where they are nearer than a tolerance; a hash grid of cells much larger than it.
class VertexPool {
 public:
  VertexPool(double tolerance, size_t expected) : tol_(tolerance), cell_(tolerance * 64) {
    size_t size = 64;
    while (size < expected * 2) size *= 2;
    heads_.assign(size, -1);
  }
  int add(KvGePoint2d p) {
    const double x = p.x / cell_, y = p.y / cell_, border = tol_ / cell_;
    const std::int64_t cx = static_cast<std::int64_t>(std::floor(x)),
                       cy = static_cast<std::int64_t>(std::floor(y));
    const int left = x - static_cast<double>(cx) < border ? -1 : 0,
              right = static_cast<double>(cx) + 1 - x < border ? 1 : 0;
    const int below = y - static_cast<double>(cy) < border ? -1 : 0,
              above = static_cast<double>(cy) + 1 - y < border ? 1 : 0;
    for (int i = left; i <= right; ++i)
      for (int k = below; k <= above; ++k)
        for (int v = heads_[slot(cx + i, cy + k)]; v >= 0; v = next_[ix(v)])
          if (std::fabs(points[ix(v)].x - p.x) <= tol_ && std::fabs(points[ix(v)].y - p.y) <= tol_) return v;
    const int made = static_cast<int>(points.size());
    points.push_back(p);
    next_.push_back(heads_[slot(cx, cy)]);
    heads_[slot(cx, cy)] = made;
    return made;
  }
  std::vector<KvGePoint2d> points;

 private:
  size_t slot(std::int64_t x, std::int64_t y) const {
    std::uint64_t h = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15u ^
                      static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu;
    return (h ^ (h >> 29)) & (heads_.size() - 1);
  }
  double tol_, cell_;
  std::vector<int> heads_, next_;
};

/// A stretch of an edge that rises in Y, or runs to the right where it is level; equal stretches are one,
/// with both windings.
struct Piece {
  int source = 0;
  double t0 = 0, t1 = 0;   ///< own parameters, ascending
  bool isFlipped = false;  ///< the parameter falls along from -> to
  int from = 0, to = 0;
  int delta[2] = {0, 0};  ///< winding to the left less winding to the right
  int left[2] = {0, 0}, right[2] = {0, 0};
  bool isWound = false, isLevel = false;
  KvGePoint2d middle;
};

struct Source {
  Edge edge;
  int operand = 0;
  KvGeBox3d box;
  KvGePoint2d start, end;
};

class Arrangement {
 public:
  explicit Arrangement(const OverlayInput& input)
      : input_(input), tol_(input.tolerance), pool_(input.tolerance, countOf(input) * 2) {}

  bool run(const std::function<bool(int, int)>& keep, Loops& result) {
    addSources();
    findCuts();
    makePieces();
    levelVertices();
    for (Piece& p : pieces_) orient(p);
    mergeEqual();
    connect();
    windAll();
    if (!trace(keep)) return false;
    finish(result);
    return true;
  }

 private:
  static size_t countOf(const OverlayInput& input) {
    size_t n = 8;
    for (const auto& side : input.loops)
      for (const Loop* loop : side) n += loop->size();
    return n;
  }

  void addSources() {
    sources_.reserve(countOf(input_));
    for (int operand = 0; operand < 2; ++operand)
      for (const Loop* loop : input_.loops[operand])
        for (const Edge& edge : *loop) {
          const KvGePoint3d a = startOf(edge.span), b = endOf(edge.span);
          sources_.push_back({edge, operand, boxOf(edge.span).grown(tol_), planar(a), planar(b)});
        }
    cuts_.resize(sources_.size());
  }

  void findCuts() {
    std::vector<int> order(sources_.size()), open[2];
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](int i, int k) { return sources_[ix(i)].box.low.x < sources_[ix(k)].box.low.x; });
    for (const int now : order) {
      const Source& a = sources_[ix(now)];
      for (int operand = 0; operand < 2; ++operand) {
        if (operand == a.operand && input_.isClean[operand]) continue;
        auto& others = open[operand];
        std::erase_if(others, [&](int i) { return sources_[ix(i)].box.high.x < a.box.low.x; });
        for (const int i : others)
          if (a.box.meetsXY(sources_[ix(i)].box)) cross(now, i);
      }
      open[a.operand].push_back(now);
    }
    for (size_t i = 0; i < sources_.size(); ++i)
      extremesOf(sources_[i].edge.span, KvGeVector3d::kYAxis, cuts_[i]);
  }

  void cross(int i, int k) {
    hits_.clear();
    crossFlat(sources_[ix(i)].edge.span, sources_[ix(k)].edge.span, tol_, hits_);
    for (const FlatHit& hit : hits_) {
      cuts_[ix(i)].push_back(hit.ta);
      cuts_[ix(k)].push_back(hit.tb);
    }
  }

  void makePieces() {
    pieces_.reserve(sources_.size() * 2);
    for (size_t i = 0; i < sources_.size(); ++i) {
      const Span& s = sources_[i].edge.span;
      auto& cuts = cuts_[i];
      std::sort(cuts.begin(), cuts.end());
      const bool isWhole = s.isWhole();
      int before = pool_.add(sources_[i].start);
      double t0 = s.low;
      const auto add = [&](double t, int vertex) {
        if (vertex == before && lengthOf(s, t0, t) <= 8 * tol_) return;  // two cuts at one place
        addPiece(static_cast<int>(i), t0, t, before, vertex);
        t0 = t;
        before = vertex;
      };
      for (const double t : cuts)
        if (t > t0 && t < s.high) add(t, pool_.add(planar(pointAt(s, t))));
      add(s.high, isWhole ? pool_.add(sources_[i].start) : pool_.add(sources_[i].end));
    }
  }

  void addPiece(int source, double t0, double t1, int v0, int v1) {
    if (v0 == v1) return;
    Piece p;
    p.source = source;
    p.t0 = t0;
    p.t1 = t1;
    p.from = v0;
    p.to = v1;
    pieces_.push_back(p);
  }

  /// Heights within the tolerance become one, so that a level stretch is level through and through and rays
  /// can't tell its parts apart.
  void levelVertices() {
    std::vector<int> order(pool_.points.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](int i, int k) { return pool_.points[ix(i)].y < pool_.points[ix(k)].y; });
    double level = -KvGeBox3d::kFar;
    for (const int v : order) {
      double& y = pool_.points[ix(v)].y;
      if (y - level > tol_) level = y;
      y = level;
    }
  }

  void orient(Piece& p) const {
    const KvGePoint2d a = pool_.points[ix(p.from)], b = pool_.points[ix(p.to)];
    p.isLevel = a.y == b.y;
    p.isFlipped = p.isLevel ? a.x > b.x : a.y > b.y;
    if (p.isFlipped) std::swap(p.from, p.to);
    const Source& s = sources_[ix(p.source)];
    p.delta[s.operand] = s.edge.isReversed == p.isFlipped ? 1 : -1;
    const bool isLine = s.edge.span.kind == SpanKind::kLine;
    p.middle = isLine ? a + (b - a) * 0.5 : planar(pointAt(s.edge.span, (p.t0 + p.t1) / 2));
  }

  KvGePoint3d middleOf(const Piece& p) const {
    return pointAt(sources_[ix(p.source)].edge.span, (p.t0 + p.t1) / 2);
  }

  bool isSame(const Piece& a, const Piece& b) const {
    const Span &sa = sources_[ix(a.source)].edge.span, &sb = sources_[ix(b.source)].edge.span;
    if (sa.kind == SpanKind::kLine && sb.kind == SpanKind::kLine) return true;  // between the same two points
    if (a.middle.distanceTo(b.middle) <= 4 * tol_) return true;
    if (sa.radius > 0 && sb.radius > 0) return false;
    Span part = sb;
    part.low = b.t0;
    part.high = b.t1;
    const KvGePoint3d m = spatial(a.middle);
    return pointAt(part, nearestOn(part, m)).distanceTo(m) <= 4 * tol_;
  }

  void mergeEqual() {
    std::vector<int> latest(pool_.points.size(), -1), earlier;
    std::vector<Piece> kept;
    kept.reserve(pieces_.size());
    earlier.reserve(pieces_.size());
    for (const Piece& p : pieces_) {
      int i = latest[ix(p.from)];
      while (i >= 0 && (kept[ix(i)].to != p.to || !isSame(kept[ix(i)], p))) i = earlier[ix(i)];
      if (i >= 0) {
        kept[ix(i)].delta[0] += p.delta[0];
        kept[ix(i)].delta[1] += p.delta[1];
        continue;
      }
      earlier.push_back(latest[ix(p.from)]);
      latest[ix(p.from)] = static_cast<int>(kept.size());
      kept.push_back(p);
    }
    std::erase_if(kept, [](const Piece& p) { return p.delta[0] == 0 && p.delta[1] == 0; });
    pieces_ = std::move(kept);
  }

  void connect() {
    touching_.assign(pool_.points.size(), {-1, -1, 0});
    for (size_t i = 0; i < pieces_.size(); ++i)
      for (const int v : {pieces_[i].from, pieces_[i].to}) {
        Touch& t = touching_[ix(v)];
        if (t.count < 2) (t.count == 0 ? t.first : t.second) = static_cast<int>(i);
        ++t.count;
      }
    // Bands in Y, so that a ray looks at few pieces.
    low_ = KvGeBox3d::kFar;
    double high = -KvGeBox3d::kFar;
    for (const Piece& p : pieces_) {
      low_ = std::min(low_, pool_.points[ix(p.from)].y);
      high = std::max(high, pool_.points[ix(p.to)].y);
    }
    const size_t count = std::max<size_t>(1, pieces_.size() / 8);
    bands_.assign(count, {});
    bandScale_ = high > low_ ? static_cast<double>(count) / (high - low_) : 0;
    for (size_t i = 0; i < pieces_.size(); ++i) {
      if (pieces_[i].isLevel) continue;
      const size_t first = bandAt(pool_.points[ix(pieces_[i].from)].y),
                   last = bandAt(pool_.points[ix(pieces_[i].to)].y);
      for (size_t k = first; k <= last; ++k) bands_[k].push_back(static_cast<int>(i));
    }
  }

  size_t bandAt(double y) const {
    const double at = (y - low_) * bandScale_;
    return at <= 0 ? 0 : std::min(bands_.size() - 1, static_cast<size_t>(at));
  }

  /// Windings just right of a rising piece, just above a level one.
  void wind(Piece& p) {
    const KvGePoint2d m = p.middle;
    const double bottom = pool_.points[ix(p.from)].y, top = pool_.points[ix(p.to)].y;
    // A level piece is looked at from just above: what begins at its height counts, what ends there doesn't.
    const double y = p.isLevel ? bottom : std::clamp(m.y, bottom, std::nextafter(top, bottom));
    int sum[2] = {0, 0};
    for (const int i : bands_[bandAt(y)]) {
      const Piece& q = pieces_[ix(i)];
      const KvGePoint2d a = pool_.points[ix(q.from)], b = pool_.points[ix(q.to)];
      if (&q == &p || a.y > y || b.y <= y) continue;
      if (xAt(sources_[ix(q.source)].edge.span, q.t0, q.t1, a, b, q.middle, y) <= m.x) continue;
      sum[0] += q.delta[0];
      sum[1] += q.delta[1];
    }
    for (int k = 0; k < 2; ++k) {
      p.right[k] = p.isLevel ? sum[k] - p.delta[k] : sum[k];
      p.left[k] = p.right[k] + p.delta[k];
    }
    p.isWound = true;
  }

  void windAll() {
    std::vector<int> chain;
    for (size_t i = 0; i < pieces_.size(); ++i) {
      if (pieces_[i].isWound) continue;
      chain.assign(1, static_cast<int>(i));
      pieces_[i].isWound = true;
      // Where just two pieces meet, the places on both sides go on from one to the other.
      for (size_t k = 0; k < chain.size(); ++k)
        for (const int v : {pieces_[ix(chain[k])].from, pieces_[ix(chain[k])].to}) {
          const Touch& t = touching_[ix(v)];
          if (t.count != 2) continue;
          const int other = t.first == chain[k] ? t.second : t.first;
          if (pieces_[ix(other)].isWound) continue;
          pieces_[ix(other)].isWound = true;
          chain.push_back(other);
        }
      const auto rise = [&](int index) {
        const Piece& p = pieces_[ix(index)];
        return pool_.points[ix(p.to)].y - pool_.points[ix(p.from)].y;
      };
      const int best =
          *std::max_element(chain.begin(), chain.end(), [&](int a, int b) { return rise(a) < rise(b); });
      for (const int index : chain) pieces_[ix(index)].isWound = false;
      wind(pieces_[ix(best)]);
      spread(best);
    }
  }

  void spread(int start) {
    std::vector<int> stack{start};
    while (!stack.empty()) {
      const Piece p = pieces_[ix(stack.back())];
      const int self = stack.back();
      stack.pop_back();
      for (const int v : {p.from, p.to}) {
        const Touch& t = touching_[ix(v)];
        if (t.count != 2) continue;
        const int other = t.first == self ? t.second : t.first;
        Piece& q = pieces_[ix(other)];
        if (q.isWound) continue;
        const bool goesOn = (p.to == v) == (q.from == v);
        for (int k = 0; k < 2; ++k) {
          q.left[k] = goesOn ? p.left[k] : p.right[k];
          q.right[k] = goesOn ? p.right[k] : p.left[k];
        }
        q.isWound = true;
        stack.push_back(other);
      }
    }
  }

  /// One piece of the answer, run with the area on its left.
  struct Half {
    int piece, from, to;
    bool isBackward;  ///< against the piece's own direction
  };

  /// Direction in which a piece leaves a vertex, and how it bends to the left there.
  void leaving(const Half& h, bool atEnd, double& angle, double& bend) const {
    const Piece& p = pieces_[ix(h.piece)];
    const bool fromStart = h.isBackward == atEnd;  // the vertex is the piece's `from`
    const Span& s = sources_[ix(p.source)].edge.span;
    const bool atT0 = fromStart != p.isFlipped;
    const Jet j = jetAt(s, atT0 ? p.t0 : p.t1);
    const KvGeVector2d d(j.first.x, j.first.y), dd(j.second.x, j.second.y), out = atT0 ? d : -d;
    angle = out.angle();
    bend = out.lengthSqrd() > 0 ? out.crossProduct(dd) / std::pow(out.lengthSqrd(), 1.5) : 0;
  }

  /// The first of the halves leaving a vertex, clockwise from where `in` came from: the next edge of the
  /// place on the left.
  int nextOf(const Half& in, const std::vector<int>& candidates) const {
    if (candidates.size() == 1) return candidates[0];
    double back, backBend;
    leaving(in, true, back, backBend);
    constexpr double kSameAngle = 1e-7;
    int best = -1;
    double bestTurn = 0, bestBend = 0;
    for (const int c : candidates) {
      double angle, bend;
      leaving(halves_[ix(c)], false, angle, bend);
      double turn = normalizedAngle(back - angle);
      // A tangent one lies on the side that it bends to.
      if (turn < kSameAngle || turn > kTwoPi - kSameAngle) turn = bend < backBend ? 0 : kTwoPi;
      const bool isTie = best >= 0 && std::fabs(turn - bestTurn) < kSameAngle;
      if (best < 0 || (isTie ? bend > bestBend : turn < bestTurn)) best = c, bestTurn = turn, bestBend = bend;
    }
    return best;
  }

  bool trace(const std::function<bool(int, int)>& keep) {
    std::vector<std::vector<int>> leavingAt(pool_.points.size());
    for (size_t i = 0; i < pieces_.size(); ++i) {
      const Piece& p = pieces_[i];
      const bool left = keep(p.left[0], p.left[1]), right = keep(p.right[0], p.right[1]);
      if (left == right) continue;
      const Half h{static_cast<int>(i), left ? p.from : p.to, left ? p.to : p.from, !left};
      leavingAt[ix(h.from)].push_back(static_cast<int>(halves_.size()));
      halves_.push_back(h);
    }
    std::vector<bool> isUsed(halves_.size());
    for (size_t i = 0; i < halves_.size(); ++i) {
      if (isUsed[i]) continue;
      std::vector<int> ring;
      int now = static_cast<int>(i);
      do {
        isUsed[ix(now)] = true;
        ring.push_back(now);
        auto& candidates = leavingAt[ix(halves_[ix(now)].to)];
        if (candidates.empty()) return false;
        now = nextOf(halves_[ix(now)], candidates);
        if (now != static_cast<int>(i)) std::erase(candidates, now);
      } while (now != static_cast<int>(i));
      std::erase(leavingAt[ix(halves_[i].from)], static_cast<int>(i));
      splitAtRepeats(ring);
    }
    return true;
  }

  /// A ring that comes back to a vertex is an outline that touches itself: the part between the visits is a
  /// loop of its own.
  void splitAtRepeats(const std::vector<int>& ring) {
    std::vector<int> path;
    for (const int h : ring) {
      path.push_back(h);
      const int v = halves_[ix(h)].to;
      for (size_t k = 0; k < path.size(); ++k) {
        if (halves_[ix(path[k])].from != v) continue;
        rings_.emplace_back(path.begin() + static_cast<long>(k), path.end());
        path.resize(k);
        break;
      }
    }
  }

  Edge edgeOf(const Half& h) const {
    const Piece& p = pieces_[ix(h.piece)];
    Edge e;
    e.span = sources_[ix(p.source)].edge.span;
    e.isReversed = h.isBackward != p.isFlipped;
    if (e.span.kind == SpanKind::kLine) {
      e.span = lineSpan(spatial(pool_.points[ix(h.from)]), spatial(pool_.points[ix(h.to)]));
      e.isReversed = false;
      return e;
    }
    e.span.low = p.t0;
    e.span.high = p.t1;
    return e;
  }

  /// One edge instead of two that go on along the same line or curve.
  bool join(Edge& a, const Edge& b) const {
    if (a.span.kind != b.span.kind) return false;
    if (a.span.kind == SpanKind::kLine) {
      const KvGePoint3d from = startOf(a.span), to = endOf(b.span);
      const Span whole = lineSpan(from, to);
      const KvGePoint3d joint = endOf(a.span);
      const double along = (joint - from).dotProduct(whole.u);
      if (along <= 0 || along >= whole.high || pointAt(whole, along).distanceTo(joint) > tol_) return false;
      a.span = whole;
      return true;
    }
    if (a.isReversed != b.isReversed) return false;
    const Span &first = a.isReversed ? b.span : a.span, &second = a.isReversed ? a.span : b.span;
    Span joined = first;
    if (a.span.kind == SpanKind::kConic) {
      const bool isSame = first.origin.distanceTo(second.origin) <= tol_ &&
                          (first.u - second.u).length() + (first.v - second.v).length() <= 2 * tol_;
      const bool isSameCircle =
          first.radius > 0 && second.radius > 0 && first.origin.distanceTo(second.origin) <= tol_ &&
          std::fabs(first.radius - second.radius) <= tol_ &&
          (first.u.crossProduct(first.v).z > 0) == (second.u.crossProduct(second.v).z > 0);
      if (!isSame && !isSameCircle) return false;
      joined.high = std::min(first.high + (second.high - second.low), first.low + kTwoPi);
    } else {
      if (first.poles != second.poles || first.high != second.low) return false;
      joined.high = second.high;
    }
    a.span = joined;
    return true;
  }

  Loop loopOf(const std::vector<int>& ring) const {
    Loop loop;
    for (const int h : ring) {
      const Edge e = edgeOf(halves_[ix(h)]);
      if (loop.empty() || !join(loop.back(), e)) loop.push_back(e);
    }
    while (loop.size() > 1) {
      Edge last = loop.back();
      if (!join(last, loop.front())) break;
      loop.front() = last;
      loop.pop_back();
    }
    return loop;
  }

  void finish(Loops& result) const {
    std::vector<Loop> outers, holes;
    std::vector<double> areas;
    for (const auto& ring : rings_) {
      Loop loop = loopOf(ring);
      const double area = areaOf(loop);
      double reach = 0;
      for (const Edge& e : loop) reach += lengthOf(e.span, e.span.low, e.span.high);
      if (std::fabs(area) <= tol_ * reach) continue;  // a sliver between edges that are one
      if (area > 0) areas.push_back(area);
      (area > 0 ? outers : holes).push_back(std::move(loop));
    }
    std::vector<std::vector<size_t>> holesOf(outers.size());
    for (size_t h = 0; h < holes.size(); ++h) {
      const Edge& e = holes[h][0];
      const KvGePoint2d p = planar(pointAt(e.span, (e.span.low + e.span.high) / 2));
      size_t best = outers.size();
      for (size_t o = 0; o < outers.size(); ++o)
        if ((best == outers.size() || areas[o] < areas[best]) &&
            (outers.size() == 1 || windingOf(outers[o], p) != 0))
          best = o;
      if (best < outers.size()) holesOf[best].push_back(h);
    }
    result = Loops();
    for (size_t o = 0; o < outers.size(); ++o) {
      const int at = static_cast<int>(result.rows.size());
      result.rows.push_back(std::move(outers[o]));
      result.outerOf.push_back(-1);
      for (const size_t h : holesOf[o]) {
        result.rows.push_back(std::move(holes[h]));
        result.outerOf.push_back(at);
      }
    }
  }

  struct Touch {
    int first, second, count;
  };

  const OverlayInput& input_;
  double tol_;
  VertexPool pool_;
  std::vector<Source> sources_;
  std::vector<std::vector<double>> cuts_;
  std::vector<FlatHit> hits_;
  std::vector<Piece> pieces_;
  std::vector<Touch> touching_;
  std::vector<std::vector<int>> bands_;
  double low_ = 0, bandScale_ = 0;
  std::vector<Half> halves_;
  std::vector<std::vector<int>> rings_;
};

}  // namespace

bool overlay(const OverlayInput& input, const std::function<bool(int, int)>& keep, Loops& result) {
  return Arrangement(input).run(keep, result);
}

}  // namespace kvge
