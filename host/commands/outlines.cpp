#include "host/commands/outlines.h"

#include <cmath>
#include <map>
#include <tuple>

#include "host/commands/internal/support.h"
#include "host/entities/curve.h"

namespace {

/// An open curve and its ends.
struct Piece {
  KvDbObjectId id;
  KvGePoint3d ends[2];
  bool isUsed = false;
};

/// Ends by the cell of a grid of twice the tolerance; neighbours are looked through too.
class EndIndex {
 public:
  explicit EndIndex(double tolerance) : tolerance_(tolerance), cell_(2 * tolerance) {}
  void add(const KvGePoint3d& point, std::size_t piece) { cells_.emplace(keyOf(point, 0, 0), piece); }
  /// The first unused piece with an end there; `end` tells which. Null when there is none.
  Piece* find(const KvGePoint3d& point, std::vector<Piece>& pieces, int& end) const {
    Piece* best = nullptr;
    for (int dx = -1; dx <= 1; ++dx)
      for (int dy = -1; dy <= 1; ++dy) {
        const auto [first, last] = cells_.equal_range(keyOf(point, dx, dy));
        for (auto at = first; at != last; ++at) {
          Piece& piece = pieces[at->second];
          if (piece.isUsed || (best && &piece >= best)) continue;
          for (int i = 0; i < 2; ++i)
            if (piece.ends[i].distanceTo(point) <= tolerance_) {
              best = &piece;
              end = i;
              break;
            }
        }
      }
    return best;
  }

 private:
  using Key = std::pair<long long, long long>;
  Key keyOf(const KvGePoint3d& point, int dx, int dy) const {
    return {std::llround(point.x / cell_) + dx, std::llround(point.y / cell_) + dy};
  }
  double tolerance_, cell_;
  std::multimap<Key, std::size_t> cells_;
};

/// Follows the pieces from one on; the ids when they come back to its start.
KvDbObjectIdArray follow(std::size_t first, std::vector<Piece>& pieces, const EndIndex& index,
                         double tolerance) {
  KvDbObjectIdArray ids;
  std::vector<Piece*> way = {&pieces[first]};
  pieces[first].isUsed = true;
  KvGePoint3d at = pieces[first].ends[1];
  while (at.distanceTo(pieces[first].ends[0]) > tolerance) {
    int end = 0;
    Piece* next = index.find(at, pieces, end);
    if (!next) {
      for (Piece* piece : way) piece->isUsed = false;
      return KvDbObjectIdArray();
    }
    next->isUsed = true;
    way.push_back(next);
    at = next->ends[1 - end];
  }
  for (const Piece* piece : way) ids.append(piece->id);
  return ids;
}

}  // namespace

std::vector<KvDbObjectIdArray> kvcmdClosedOutlines(const KvDbObjectIdArray& ids, double tolerance,
                                                   KvDbObjectIdArray* left) {
  std::vector<KvDbObjectIdArray> outlines;
  std::vector<Piece> pieces;
  EndIndex index(tolerance);
  for (KvDbObjectId id : ids) {
    const auto* curve = kvcmd::look<KvDbCurve>(id);
    Piece piece{id, {}, false};
    if (curve && curve->isClosed()) {
      outlines.emplace_back();
      outlines.back().append(id);
    } else if (curve && curve->getStartPoint(piece.ends[0]) == Kvad::eOk &&
               curve->getEndPoint(piece.ends[1]) == Kvad::eOk) {
      for (const KvGePoint3d& end : piece.ends) index.add(end, pieces.size());
      pieces.push_back(piece);
    } else if (left) {
      left->append(id);
    }
  }
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (pieces[i].isUsed) continue;
    KvDbObjectIdArray outline = follow(i, pieces, index, tolerance);
    if (!outline.isEmpty())
      outlines.push_back(outline);
    else if (left)
      left->append(pieces[i].id);
  }
  return outlines;
}
