#pragma once
// The parts of a dimension's block: lines, arrows, text, in the plane of the dimension.
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/mtext.h"

/// A measured value in the codes of paragraph text: units, decimals, prefix and suffix, tolerances, limits.
/// Angles in radians.
CString kvdbDimensionText(const KvDbDimVars& vars, double value, bool isAngle, const wchar_t* prefix);

/// Collects the parts. Points are those of the dimension's plane; its height goes with them.
class KvDbDimLayout {
 public:
  explicit KvDbDimLayout(const KvDbDimension& dimension);

  KvGePoint2d inPlane(const KvGePoint3d& world) const;
  const KvDbDimVars& vars() const { return vars_; }
  /// A length variable, times the overall scale.
  double size(KvDbDimVar variable) const { return vars_.real(variable) * scale_; }
  double textWidth() const { return textWidth_; }
  double textHeight() const { return textHeight_; }
  bool hasText() const { return upper_ != nullptr; }
  bool isUserPlaced() const { return !dimension_.isUsingDefaultTextPosition(); }
  KvGePoint2d userPlace() const { return kvge::planar(dimension_.textMiddle_); }
  const KvGePoint3d& textMiddle() const { return middle_; }

  void line(KvGePoint2d from, KvGePoint2d to, bool isExtension = false, int which = 0);
  /// Counter-clockwise.
  void arc(KvGePoint2d center, double radius, double start, double sweep);
  /// An extension line from what is measured to the dimension line's end and beyond; left out where the
  /// variables say so (`which` 1 or 2).
  void extension(KvGePoint2d measured, KvGePoint2d foot, int which);
  /// With its tip at the point; `direction` (length 1) is that in which it points.
  void arrow(KvGePoint2d tip, KvGeVector2d direction, int which);
  /// Whether the dimension line ends before the arrow, and how long that is.
  double arrowLength() const;
  bool isTick() const;
  /// The text's middle; turned to be read from below or from the right.
  void text(KvGePoint2d middle, double angle);
  /// Above a line of this direction as it is read.
  KvGeVector2d above(double angle) const;
  double readable(double angle) const;
  void definitionPoint(KvGePoint2d point);
  void centerMark(KvGePoint2d center, double radius);
  /// A straight or round dimension line: places arrows and text. `along` gives the point at a distance from
  /// the first foot, `tangent` the direction there.
  struct Track {
    double length = 0;
    std::function<KvGePoint2d(double)> at;
    std::function<KvGeVector2d(double)> tangent;
    std::function<void(double from, double to)> draw;
  };
  void measureLine(const Track& track);

  std::vector<std::unique_ptr<KvDbEntity>> takeParts() { return std::move(parts_); }

 private:
  struct ArrowShape;
  template <class T>
  T& add(std::unique_ptr<T> part, KvDbDimVar color);
  KvGePoint3d toWorld(KvGePoint2d p) const;
  CString arrowName(int which) const;

  const KvDbDimension& dimension_;
  KvDbDimVars vars_;
  double scale_ = 1;
  KvGeMatrix3d planeToWorld_, worldToPlane_;
  double height_ = 0;
  std::unique_ptr<KvDbMText> upper_, lower_;
  double textWidth_ = 0, textHeight_ = 0;
  KvGePoint3d middle_;
  std::vector<std::unique_ptr<KvDbEntity>> parts_;
};
