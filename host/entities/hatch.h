#pragma once
// Hatches: areas filled with colour, with a pattern of lines, or with a gradient (drawn as one colour).
#include <functional>

#include "host/entities/patterns.h"
#include "host/entities/region.h"
#include "host/geometry/curve2d.h"
#include "host/geometry/polyline.h"

/// Boundaries and pattern are kept in the coordinates of the hatch's plane; lines of the pattern as files
/// have them, scaled and turned.
class KvDbHatch : public KvDbEntity {
  KVRX_DECLARE(KvDbHatch)
 public:
  enum HatchPatternType { kUserDefined = 0, kPreDefined = 1, kCustomDefined = 2 };
  enum HatchObjectType { kHatchObject = 0, kGradientObject = 1 };
  enum HatchStyle { kNormal = 0, kOuter = 1, kIgnore = 2 };
  /// Bits of a loop's type.
  enum HatchLoopType {
    kDefault = 0,
    kExternal = 1,
    kPolyline = 2,
    kDerived = 4,
    kTextbox = 8,
    kOutermost = 16
  };
  enum HatchEdgeType { kLine = 1, kCirArc = 2, kEllArc = 3, kSpline = 4 };

  struct Vertex {
    KvGePoint2d point;
    double bulge = 0;
  };
  /// An edge as files have it: angles in degrees, in the direction of the run.
  struct Edge {
    std::int16_t kind = kLine;
    KvGePoint2d first, second;  ///< ends; of arcs the centre, of ellipses also the end of the major axis
    double radius = 0;          ///< of ellipses the ratio of the axes
    double start = 0, end = 360;
    bool isCounterClockwise = true;
    // Splines.
    std::int32_t degree = 0;
    std::int16_t isRational = 0, isPeriodic = 0;
    bool saysFitPoints = false;
    std::vector<double> knots, weights;
    std::vector<KvGePoint2d> poles, fitPoints;
    std::vector<std::pair<int, KvGePoint2d>> tangents;  ///< by group
    /// Null for numbers that form no curve.
    std::unique_ptr<KvGeCurve3d> curve() const;
  };
  struct Loop {
    std::int32_t type = 0;
    bool hasBulges = false, isClosed = true;
    std::vector<Vertex> vertices;  ///< of a polyline
    std::vector<Edge> edges;
    KvDbObjectIdArray sources;
    bool isPolyline() const { return (type & kPolyline) != 0; }
  };
  struct PatternLine {
    double angle = 0;  ///< degrees
    KvGePoint2d base;
    KvGeVector2d offset;
    std::vector<double> dashes;
  };

  // Pattern.
  /// Sets the lines by name, scale and angle. eKeyNotFound for a predefined pattern that isn't known.
  Kvad::ErrorStatus setPattern(HatchPatternType kind, const wchar_t* name);
  const CString& patternName() const { return name_; }
  HatchPatternType patternType() const { return static_cast<HatchPatternType>(patternType_); }
  bool isSolidFill() const { return isSolid_ != 0; }
  bool isGradient() const;
  HatchObjectType hatchObjectType() const { return isGradient() ? kGradientObject : kHatchObject; }
  /// Only kHatchObject; eNotApplicable.
  Kvad::ErrorStatus setHatchObjectType(HatchObjectType type);
  double patternScale() const { return scale_; }
  double patternAngle() const { return angle_.radians(); }
  /// eInvalidInput for a scale that isn't above 0. The lines follow, also those of a custom pattern.
  Kvad::ErrorStatus setPatternScale(double scale);
  Kvad::ErrorStatus setPatternAngle(double angle);
  /// Distance between the lines of a user-defined pattern, and whether they cross.
  double patternSpace() const { return space_; }
  Kvad::ErrorStatus setPatternSpace(double space);
  bool patternDouble() const { return isDouble_ != 0; }
  Kvad::ErrorStatus setPatternDouble(bool isDouble);
  int numPatternDefinitions() const { return static_cast<int>(lines_.size()); }
  const std::vector<PatternLine>& patternLines() const { return lines_; }
  HatchStyle hatchStyle() const { return static_cast<HatchStyle>(style_); }
  Kvad::ErrorStatus setHatchStyle(HatchStyle style);

  // Plane.
  double elevation() const { return elevation_.z; }
  Kvad::ErrorStatus setElevation(double elevation);
  KvGeVector3d normal() const { return normal_; }
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);

  // Boundaries. eInvalidInput for lists that don't fit or numbers that aren't finite, eInvalidLoop for edges
  // that don't close within 1e-6.
  int numLoops() const { return static_cast<int>(loops_.size()); }
  /// No bulges: straight.
  Kvad::ErrorStatus appendLoop(int type, const KvGePoint2dArray& vertices,
                               const KvArray<double>& bulges = KvArray<double>());
  /// KvGeCurve2d*, which are copied; the types of edges follow from the curves.
  Kvad::ErrorStatus appendLoop(int type, const KvArray<void*>& edges, const KvArray<int>& edgeTypes);
  /// Of entities in the drawing; an associative hatch remembers them.
  Kvad::ErrorStatus appendLoop(int type, const KvDbObjectIdArray& ids);
  /// eInvalidIndex; eInvalidInput where the loop is of the other form.
  Kvad::ErrorStatus getLoopAt(int index, std::int32_t& type, KvGePoint2dArray& vertices,
                              KvArray<double>& bulges) const;
  /// The curves (KvGeCurve2d*) are new and the caller's.
  Kvad::ErrorStatus getLoopAt(int index, std::int32_t& type, KvArray<void*>& edges,
                              KvArray<int>& edgeTypes) const;
  Kvad::ErrorStatus removeLoopAt(int index);
  std::int32_t loopTypeAt(int index) const;
  const std::vector<Loop>& loops() const { return loops_; }
  bool associative() const { return isAssociative_ != 0; }
  Kvad::ErrorStatus setAssociative(bool associative);
  KvDbObjectIdArray assocObjIds() const;
  /// Takes the boundaries anew from the entities of an associative hatch. eNoContent without a loop.
  Kvad::ErrorStatus evaluateHatch(bool underEstimateLines = false);

  /// The area that is filled, as a new region in the world that the caller owns; null when there is none.
  KvDbRegion* getRegionArea() const;
  /// eNoContent, eInvalidLoop.
  Kvad::ErrorStatus getArea(double& area) const;
  /// Each stretch of the pattern's lines inside the area, in the plane's coordinates; a dot as a stretch of
  /// equal ends. False, without any, when there would be more than kMostLines.
  bool patternStretches(const std::function<void(KvGePoint2d, KvGePoint2d)>& take) const;
  static constexpr int kMostLines = 500'000;

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  /// The lines of the pattern, or the boundaries of a solid one as a region.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const override;
  /// The boundaries.
  void getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  void dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                    KvDxfResolver& resolver) override;

 private:
  class Reader;
  void writeLoop(KvDxfWriter& writer, const Loop& loop) const;
  void makeLines();
  bool isMetric() const;
  /// In the plane's coordinates, at height 0.
  static std::vector<std::unique_ptr<KvGeCurve3d>> curvesOf(const Loop& loop);
  static std::vector<KvGePolyline3d::Vertex> bulgesOf(const Loop& loop);
  /// Loops that count by the style.
  std::vector<const Loop*> filledLoops() const;
  bool regionInPlane(KvGeRegion& region) const;
  Kvad::ErrorStatus loopOf(const KvDbObjectIdArray& ids, Loop& loop) const;
  KvGeMatrix3d planeToWorld() const;

  KvGePoint3d elevation_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
  CString name_ = L"SOLID";
  std::int16_t isSolid_ = 1, isAssociative_ = 0, style_ = 0, patternType_ = kPreDefined, isDouble_ = 0;
  KvDbAngle angle_;
  double scale_ = 1, space_ = 1, pixelSize_ = 0;
  bool hasPixelSize_ = false, hasPattern_ = false;  // as the file had it
  std::vector<PatternLine> lines_;
  std::vector<Loop> loops_;
  std::vector<KvGePoint2d> seeds_;
};
