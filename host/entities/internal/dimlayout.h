#pragma once
// The parts of a dimension's block: lines, arrows, text, in the plane of the dimension.
#include "host/entities/arrowhead.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/mtext.h"

/// A measured value in the codes of paragraph text: units, decimals, prefix and suffix, tolerances, limits.
/// Angles in radians.
CString kvdbDimensionText(const KvDbDimVars& vars, double value, bool isAngle, const wchar_t* prefix);
/// The same length in the alternate units (DIMALTF and the like), in brackets.
CString kvdbAlternateDimensionText(const KvDbDimVars& vars, double value, const wchar_t* prefix);
/// The value, and behind it the alternate one where the variables want it.
CString kvdbWholeDimensionText(const KvDbDimVars& vars, double value, bool isAngle, const wchar_t* prefix);
/// A dimension's text with "<>" and "[]" resolved; empty for one that shows none. Alternate units that the
/// text asks for itself are shown whether the variables want them or not.
CString kvdbDimensionContents(const KvDbDimVars& vars, const CString& text, double value, bool isAngle,
                              const wchar_t* prefix);

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
  double arrowLength() const;
  bool isTick() const;
  /// A stroke across the line's end, or nothing: it needs no room along the line.
  bool isStroke(int which) const;
  /// How much shorter the dimension line is for its arrow; below 0: it runs on beyond.
  double arrowCut(int which) const;
  /// The text's middle; turned to be read from below or from the right.
  void text(KvGePoint2d middle, double angle);
  /// Above a line of this direction as it is read.
  KvGeVector2d above(double angle) const;
  double readable(double angle) const;
  /// The angle of what counts as level.
  double level() const { return dimension_.horizontalRotation(); }
  void definitionPoint(KvGePoint2d point);
  void centerMark(KvGePoint2d center, double radius);
  /// A straight or round dimension line: places arrows and text. `along` gives the point at a distance from
  /// the first foot, `tangent` the direction there.
  struct Track {
    double length = 0;
    std::function<KvGePoint2d(double)> at;
    std::function<KvGeVector2d(double)> tangent;
    std::function<void(double from, double to)> draw;
    /// The distance along the track that is nearest to a point, and how far to the left the point lies.
    std::function<std::pair<double, double>(KvGePoint2d)> placeOf;
    /// The direction of the first (1) or second (2) extension line, away from what is measured.
    std::function<KvGeVector2d(int which)> rise;
  };
  void measureLine(const Track& track);

  std::vector<std::unique_ptr<KvDbEntity>> takeParts() { return std::move(parts_); }

 private:
  template <class T>
  T& add(std::unique_ptr<T> part, KvDbDimVar color);
  KvGePoint3d toWorld(KvGePoint2d p) const;
  KvDbObjectId arrowBlock(int which) const;
  KvDbArrowHead head(int which) const;
  void fillBehind(KvDbMText& text) const;

  /// Where arrows and text of a dimension line stand.
  struct Placement {
    bool arrowsInside = true, textInside = true;
    bool isInLine = false;  ///< the text stands in the line, which is broken for it
    double wanted = 0;      ///< how much of the line a text of this direction takes
    double place = 0;       ///< the text's middle along the line
    double beside = 0;      ///< of a text that was moved: how far to the left of the line
    double angle = 0;
    KvGePoint2d at;
  };
  double taken(const Track& track, bool isLevel, double place) const;
  void fit(const Track& track, Placement& placement) const;
  void placeText(const Track& track, Placement& placement) const;
  void placeMovedText(const Track& track, Placement& placement) const;
  void drawLine(const Track& track, const Placement& placement);
  void drawOutside(const Track& track, const Placement& placement);
  void drawToMovedText(const Track& track, const Placement& placement);

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
