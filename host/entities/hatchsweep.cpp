#include <algorithm>
#include <cmath>

#include "host/entities/internal/hatchsweep.h"

KvDbHatchSweep::KvDbHatchSweep(KvGePoint2d base, KvGeVector2d direction, double spacing)
    : base_(base), along_(direction), across_(direction.perpVector()), spacing_(spacing) {}

void KvDbHatchSweep::addOutline(const std::vector<std::unique_ptr<KvGeCurve3d>>& outline) {
  // The level of each common end is that of the span which begins there.
  struct Place {
    const KvGeCurve3d* curve;
    int span;
    double level;
  };
  std::vector<Place> places;
  for (const auto& curve : outline)
    for (int i = 0; i < curve->spanCount(); ++i)
      places.push_back({curve.get(), i, level(kvge::startOf(curve->span(i)))});
  for (std::size_t i = 0; i < places.size(); ++i)
    addSpan(*places[i].curve, places[i].span, places[i].level, places[(i + 1) % places.size()].level);
}

void KvDbHatchSweep::addSpan(const KvGeCurve3d& curve, int index, double startLevel, double endLevel) {
  const kvge::Span span = curve.span(index);
  if (span.kind == kvge::SpanKind::kLine) {
    addPiece({startLevel, endLevel, along(kvge::startOf(span)), along(kvge::endOf(span)), nullptr, 0, 0, 0});
    return;
  }
  std::vector<double> turns;
  kvge::extremesOf(span, {across_.x, across_.y, 0}, turns);
  std::erase_if(turns, [&](double t) { return !(t > span.low && t < span.high); });
  std::sort(turns.begin(), turns.end());
  turns.push_back(span.high);
  double from = span.low, fromLevel = startLevel;
  for (std::size_t i = 0; i < turns.size(); ++i) {
    const bool isLast = i + 1 == turns.size();
    const double to = turns[i], toLevel = isLast ? endLevel : level(kvge::pointAt(span, to));
    addPiece({fromLevel, toLevel, along(kvge::pointAt(span, from)), along(kvge::pointAt(span, to)), &curve,
              index, from, to});
    from = to;
    fromLevel = toLevel;
  }
}

void KvDbHatchSweep::addPiece(Piece piece) {
  if (!std::isfinite(piece.low) || !std::isfinite(piece.high) || piece.low == piece.high) return;
  if (piece.low > piece.high) {
    std::swap(piece.low, piece.high);
    std::swap(piece.start, piece.end);
    std::swap(piece.from, piece.to);
  }
  lowest_ = pieces_.empty() ? piece.low : std::min(lowest_, piece.low);
  highest_ = pieces_.empty() ? piece.high : std::max(highest_, piece.high);
  pieces_.push_back(piece);
}

double KvDbHatchSweep::lineCount() const {
  return pieces_.empty() ? 0 : std::max(0.0, std::floor(highest_) - std::ceil(lowest_) + 1);
}

double KvDbHatchSweep::crossing(const Piece& piece, double line) const {
  const double share = (line - piece.low) / (piece.high - piece.low);
  if (!piece.curve) return piece.start + (piece.end - piece.start) * share;
  const kvge::Span span = piece.curve->span(piece.span);
  if (span.kind == kvge::SpanKind::kConic) {
    // level = middle + a cos t + b sin t = middle + size cos(t - top): two places, one of them on this piece.
    const KvGeVector3d up(across_.x / spacing_, across_.y / spacing_, 0);
    const double a = span.u.dotProduct(up), b = span.v.dotProduct(up), size = std::hypot(a, b);
    const double top = std::atan2(b, a),
                 open = std::acos(std::clamp((line - level(span.origin)) / size, -1.0, 1.0));
    const double middle = (piece.from + piece.to) / 2;
    // On this piece t - top keeps its sign, seen from the nearest whole turn.
    const double turns = std::floor((middle - top) / kvge::kTwoPi + 0.5) * kvge::kTwoPi;
    const double t = top + turns + (middle - top - turns >= 0 ? open : -open);
    return along(
        kvge::pointAt(span, std::clamp(t, std::min(piece.from, piece.to), std::max(piece.from, piece.to))));
  }
  // The level grows all the way from `from` to `to`: narrowed down by false position with halving.
  double from = piece.from, to = piece.to, under = piece.low - line, over = piece.high - line;
  double t = from + (to - from) * share;
  for (int round = 0; round < 100; ++round) {
    const double off = level(kvge::pointAt(span, t)) - line;
    if (off == 0 || std::fabs(to - from) <= 1e-15 * (1 + std::fabs(t))) break;
    (off < 0 ? from : to) = t;
    (off < 0 ? under : over) = off;
    const double guess = from + (to - from) * (under / (under - over));
    const double next = round % 3 == 2 ? (from + to) / 2 : guess;
    if (next == t) break;
    t = next;
  }
  return along(kvge::pointAt(span, t));
}

void KvDbHatchSweep::forStretches(const std::function<void(long line, double from, double to)>& take) const {
  if (pieces_.empty()) return;
  struct Hit {
    long line;
    double place;
  };
  std::vector<Hit> hits;
  for (const Piece& piece : pieces_) {
    // The lower end belongs to the piece, the upper one to the next.
    const double first = std::ceil(piece.low);
    for (double line = first; line < piece.high; ++line)
      hits.push_back({static_cast<long>(line), crossing(piece, line)});
  }
  std::sort(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) {
    return a.line != b.line ? a.line < b.line : a.place < b.place;
  });
  for (std::size_t i = 0; i + 1 < hits.size();) {
    if (hits[i].line != hits[i + 1].line) {
      ++i;
      continue;
    }
    // Stretches that touch are one.
    const double from = hits[i].place;
    double to = hits[i + 1].place;
    const long line = hits[i].line;
    i += 2;
    while (i + 1 < hits.size() && hits[i].line == line && hits[i + 1].line == line && hits[i].place <= to) {
      to = std::max(to, hits[i + 1].place);
      i += 2;
    }
    if (to > from) take(line, from, to);
  }
}
