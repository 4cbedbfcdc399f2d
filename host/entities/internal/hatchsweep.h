#pragma once
// Cutting a family of parallel lines with outlines, by the even-odd rule, in one sweep.
#include <functional>
#include <vector>

#include "host/geometry/curve.h"

/// Outlines in a plane, each edge cut where it turns back across the lines' direction, so that every piece
/// meets a line at most once. Neighbours share the level of their common end exactly, so that none is lost or
/// counted twice.
class KvDbHatchSweep {
 public:
  /// Lines run along `direction` (length 1) through `base` + n * spacing to its left. The outlines live
  /// longer than this.
  KvDbHatchSweep(KvGePoint2d base, KvGeVector2d direction, double spacing);
  void addOutline(const std::vector<std::unique_ptr<KvGeCurve3d>>& outline);
  /// Numbers of the first and last line that could meet the outlines; the count may be beyond any int.
  double lineCount() const;
  /// For each line the stretches inside, as distances along it from the foot of the base.
  void forStretches(const std::function<void(long line, double from, double to)>& take) const;

 private:
  struct Piece {
    double low, high;          ///< levels of the ends, as numbers of lines (fractions between)
    double start, end;         ///< distances along the lines at these levels
    const KvGeCurve3d* curve;  ///< null for a straight piece
    int span;
    double from, to;  ///< own parameters of the span at low and high
  };
  double level(const KvGePoint3d& p) const {
    return ((p.x - base_.x) * across_.x + (p.y - base_.y) * across_.y) / spacing_;
  }
  double along(const KvGePoint3d& p) const { return (p.x - base_.x) * along_.x + (p.y - base_.y) * along_.y; }
  void addSpan(const KvGeCurve3d& curve, int index, double startLevel, double endLevel);
  void addPiece(Piece piece);
  double crossing(const Piece& piece, double line) const;

  KvGePoint2d base_;
  KvGeVector2d along_, across_;
  double spacing_;
  std::vector<Piece> pieces_;
  double lowest_ = 0, highest_ = 0;
};
