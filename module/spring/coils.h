#pragma once
// A row of coils seen from the side: each coil's front strand runs between an upper and a lower wire centre,
// the rear strand from there to the next coil. Told for front strands that lead from the upper row down to
// the right.
#include <vector>

#include "module/spring/frame.h"

namespace mek {

/// One front strand by the X of its two wire centres.
struct Coil {
  double upper, lower;
};

/// How the wire ends at an outer coil.
enum class CoilEnd {
  Round,   ///< as any other coil: the wire goes on behind
  Ground,  ///< cut by a plane across the axis: at the wire's half radius beyond or before its centre
  Arm,     ///< the front strand goes straight on, beyond its row
  Cut,     ///< the wire ends on the strand's row, cut square
};

class CoilRow {
 public:
  /// `row` is half the diameter from wire centre to wire centre. Mirrored, front strands lead from the lower
  /// row up.
  CoilRow(SpringFrame& frame, double row, double wire, std::vector<Coil> coils, bool isMirrored = false)
      : frame_(frame), row_(row), radius_(wire / 2), isMirrored_(isMirrored), coils_(std::move(coils)) {}

  /// `arm`: how far an arm reaches beyond its row.
  void setEnds(CoilEnd first, CoilEnd last, double arm = 0) { first_ = first, last_ = last, arm_ = arm; }

  /// Outlines of the front strands, and what of the rear ones stands out between them.
  void drawFull();
  /// The wire's sections on both rows: all of them, or the upper or the lower ones. Ground ends are cut.
  void drawSections(bool upper);
  /// The rear strands, whole.
  void drawRear();

  double row() const { return row_; }
  int count() const { return static_cast<int>(coils_.size()); }
  /// The edges of a front strand, from the upper row to the lower.
  Segment leftFlank(int coil) const;
  Segment rightFlank(int coil) const;
  /// The edges of the rear strand that leads to this coil, from the lower row of the one before.
  Segment rearLeft(int coil) const;
  Segment rearRight(int coil) const;

  // Drawing in the row's own sense.
  void line(const Segment& segment);
  void arc(const KvGePoint2d& start, const KvGePoint2d& end);
  KvGePoint2d upper(int coil) const { return {coils_[static_cast<std::size_t>(coil)].upper, row_}; }
  KvGePoint2d lower(int coil) const { return {coils_[static_cast<std::size_t>(coil)].lower, -row_}; }
  double radius() const { return radius_; }

 private:
  bool isGround(int coil) const {
    return (coil == 0 && first_ == CoilEnd::Ground) || (coil == count() - 1 && last_ == CoilEnd::Ground);
  }
  KvGePoint2d shown(KvGePoint2d point) const {
    if (isMirrored_) point.y = -point.y;
    return point;
  }
  double slant(int coil) const;
  double rearSlant(int coil) const;
  void drawCaps(int coil);
  void drawGroundSection(bool upper, int coil);
  void drawGap(int coil);

  SpringFrame& frame_;
  double row_, radius_;
  bool isMirrored_;
  std::vector<Coil> coils_;
  CoilEnd first_ = CoilEnd::Round, last_ = CoilEnd::Round;
  double arm_ = 0;
};

}  // namespace mek
