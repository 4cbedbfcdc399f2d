#pragma once
// The interface through which an entity draws itself: traits, primitives, and the object that holds both.
//
// Coordinates are world coordinates of the innermost model transform, lengths are drawing units, angles
// radians counter-clockwise about the given normal. A sink (a renderer, a picker, a recorder) derives from
// the three classes; entities know nothing of what becomes of their primitives. Primitives answer true when
// drawing must stop (the sink has what it wants), false to go on.
#include <cstdint>
#include <vector>

#include "host/base/rxclass.h"
#include "host/database/objectid.h"
#include "host/geometry/matrix.h"
#include "host/geometry/point.h"
#include "host/lettering/textlook.h"

class KvDbPolyline;
class KvGiGeometry;
class KvGiSubEntityTraits;
class KvGiWorldDraw;

enum KvGiFillType { kKvGiFillAlways = 1, kKvGiFillNever = 2 };
enum KvGiArcType { kKvGiArcSimple = 0, kKvGiArcSector = 1, kKvGiArcChord = 2 };

/// A colour as entities carry it: by block, by layer, of the index table (1 to 255), or of red, green, blue.
class KvCmEntityColor {
 public:
  enum Method : std::uint8_t { kByLayer, kByBlock, kByACI, kByColor };
  constexpr KvCmEntityColor() = default;
  /// 0 by block, 256 by layer, 1 to 255 of the table.
  static constexpr KvCmEntityColor ofIndex(int index) {
    KvCmEntityColor color;
    color.method_ = index == 256 ? kByLayer : index == 0 ? kByBlock : kByACI;
    color.value_ = static_cast<std::uint32_t>(index);
    return color;
  }
  /// 0xRRGGBB.
  static constexpr KvCmEntityColor ofRgb(std::uint32_t rgb) {
    KvCmEntityColor color;
    color.method_ = kByColor;
    color.value_ = rgb & 0xFFFFFFu;
    return color;
  }
  constexpr Method colorMethod() const { return method_; }
  /// The index: 256 by layer, 0 by block; meaningless for red, green, blue.
  constexpr int colorIndex() const { return static_cast<int>(value_); }
  constexpr std::uint32_t rgb() const { return value_; }
  friend constexpr bool operator==(const KvCmEntityColor&, const KvCmEntityColor&) = default;

 private:
  Method method_ = kByLayer;
  std::uint32_t value_ = 256;
};

/// Something that can draw itself.
class KvGiDrawable : public KvRxObject {
 public:
  /// Sets its traits, then draws itself; false when there is nothing to draw.
  virtual bool worldDraw(KvGiWorldDraw* draw);
};

/// How the next primitives look.
class KvGiSubEntityTraits {
 public:
  virtual ~KvGiSubEntityTraits() = default;
  virtual void setColor(std::uint16_t color) = 0;
  virtual void setTrueColor(const KvCmEntityColor& color) = 0;
  virtual void setLayer(KvDbObjectId layer) = 0;
  virtual void setLineType(KvDbObjectId linetype) = 0;
  /// A number by which a picked part is told to its entity; 0: none.
  virtual void setSelectionMarker(long marker) = 0;
  virtual void setFillType(KvGiFillType type) = 0;
  /// A KvDb::LineWeight.
  virtual void setLineWeight(int weight) = 0;
  virtual void setLineTypeScale(double scale) = 0;
  virtual void setThickness(double thickness) = 0;

  virtual std::uint16_t color() const = 0;
  virtual KvCmEntityColor trueColor() const = 0;
  virtual KvDbObjectId layerId() const = 0;
  virtual KvDbObjectId lineTypeId() const = 0;
  virtual KvGiFillType fillType() const = 0;
  virtual int lineWeight() const = 0;
  virtual double lineTypeScale() const = 0;
  virtual double thickness() const = 0;
};

/// A corner of a path and the segment that begins there.
struct KvGiPathVertex {
  KvGePoint2d point;  ///< in the plane's coordinates (arbitrary-axis rule of drawing files)
  double bulge = 0;   ///< tangent of a quarter of the angle that the arc to the next vertex sweeps
  double startWidth = 0, endWidth = 0;
};

/// A path in a plane: straight and curved segments, with widths.
struct KvGiPath {
  const KvGiPathVertex* vertices = nullptr;
  int count = 0;
  bool isClosed = false;
  double elevation = 0;
  KvGeVector3d normal = KvGeVector3d::kZAxis;
  bool isLinetypeContinuous = false;  ///< the dash pattern runs on over the corners
};

/// A region that clips what is drawn until it is popped: a closed outline in the XY plane of `toPlane`.
struct KvGiClipBoundary {
  KvGeMatrix3d toPlane;  ///< from coordinates of the present model transform
  const KvGePoint2d* points = nullptr;
  int count = 0;            ///< 2: opposite corners of a rectangle
  bool isInverted = false;  ///< what lies inside is hidden
};

/// A picture of points that lies in the drawing.
struct KvGiImage {
  KvGePoint3d origin;          ///< its lower left corner
  KvGeVector3d width, height;  ///< along its lower and its left edge
  CString file;                ///< as the drawing names it
};

/// The vertices of a polyline from a segment on, each with its widths; `count` 0: all. Stands with the class
/// of polylines.
std::vector<KvGiPathVertex> kvgiVerticesOf(const KvDbPolyline& polyline, int from, int count, KvGiPath& path);

class KvGiGeometry {
 public:
  virtual ~KvGiGeometry() = default;

  virtual bool circle(const KvGePoint3d& center, double radius, const KvGeVector3d& normal) = 0;
  virtual bool circle(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third) = 0;
  virtual bool circularArc(const KvGePoint3d& center, double radius, const KvGeVector3d& normal,
                           const KvGeVector3d& startVector, double sweepAngle,
                           KvGiArcType type = kKvGiArcSimple) = 0;
  virtual bool circularArc(const KvGePoint3d& start, const KvGePoint3d& point, const KvGePoint3d& end,
                           KvGiArcType type = kKvGiArcSimple) = 0;
  /// Angles are those of the ellipse's parameters, from the major axis; `tilt` turns the major axis.
  virtual bool ellipticalArc(const KvGePoint3d& center, const KvGeVector3d& normal, double majorLength,
                             double minorLength, double startAngle, double endAngle, double tilt,
                             KvGiArcType type = kKvGiArcSimple) = 0;
  virtual bool polyline(int count, const KvGePoint3d* points, const KvGeVector3d* normal = nullptr,
                        long marker = -1) = 0;
  /// An outline, or a filled area with kKvGiFillAlways.
  virtual bool polygon(int count, const KvGePoint3d* points) = 0;
  /// Areas bounded by several outlines, filled by the even-odd rule; `counts` points for each outline.
  virtual bool polyPolygon(int outlines, const int* counts, const KvGePoint3d* points) = 0;
  virtual bool text(const KvGePoint3d& position, const KvGeVector3d& normal, const KvGeVector3d& direction,
                    const KvGiTextLook& look, const CString& text) = 0;
  /// `count` segments from vertex `from` on; 0: all. Widths are drawn.
  virtual bool pline(const KvDbPolyline& polyline, int from = 0, int count = 0) = 0;
  /// The same of a path that is no polyline of a drawing. By default its middle line, as a polyline.
  virtual bool path(const KvGiPath& path);
  /// A row of lines and cubic curves: a start, then one point or three for each by its degree (1 or 3). By
  /// default a polyline.
  virtual bool segments(const KvGePoint3d* poles, const unsigned char* degrees, int count);
  /// Strokes of a curve of class KvGeCurve3d come as polylines; this one is for exact sinks that want the
  /// spline itself. By default it is reduced by the sink.
  virtual bool polypoint(int count, const KvGePoint3d* points) = 0;
  virtual bool shell(int points, const KvGePoint3d* vertices, int faceListSize,
                     const std::int32_t* faces) = 0;
  virtual bool mesh(int rows, int columns, const KvGePoint3d* vertices) = 0;
  /// An area in the colour of the ground: it covers what was drawn before it. By default nothing.
  virtual bool mask(int count, const KvGePoint3d* points);
  /// By default nothing.
  virtual bool image(const KvGiImage& image);
  virtual bool ray(const KvGePoint3d& base, const KvGePoint3d& through) = 0;
  virtual bool xline(const KvGePoint3d& first, const KvGePoint3d& second) = 0;
  /// Another drawable with traits of its own; "by block" in it means the traits of this moment. Layer state
  /// and visibility are the sink's business.
  virtual bool draw(KvGiDrawable* drawable) = 0;

  virtual void pushModelTransform(const KvGeMatrix3d& transform) = 0;
  virtual void popModelTransform() = 0;
  virtual bool pushClipBoundary(const KvGiClipBoundary& boundary) = 0;
  virtual bool popClipBoundary() = 0;
};

class KvGiWorldDraw {
 public:
  virtual ~KvGiWorldDraw() = default;
  virtual KvGiGeometry& geometry() = 0;
  virtual KvGiSubEntityTraits& subEntityTraits() = 0;
  /// How far a chord may lie from its curve, in units of the innermost model transform near `at`; for
  /// entities that make polylines of curves themselves.
  virtual double deviation(const KvGePoint3d& at) const = 0;
  /// True while the sink asks only for extents or for what can be picked; entities may leave out costly
  /// fills.
  virtual bool isOutlineOnly() const { return false; }
  /// True for a plot: what only helps at the screen is left out.
  virtual bool isForPaper() const { return false; }
  /// The drawing; null for entities outside one.
  virtual class KvDbDatabase* database() const { return nullptr; }
};
