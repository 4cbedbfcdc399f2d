#pragma once
// The base of everything that wants to see what entities draw: renderers, pickers, measuring.
//
// A tracer takes the primitives of entities, resolves layers, colours, linetypes and line weights ("by
// layer", "by block", layer "0" inside blocks), applies the model transforms and the clip boundaries, leaves
// out what can't be seen, and hands over strokes and filled areas in world coordinates. A class derived from
// it gives `stroke` and `fill`; the other calls may be overridden.
#include <memory>
#include <unordered_map>
#include <vector>

#include "host/database/entity.h"
#include "host/database/worlddraw.h"
#include "host/geometry/box.h"

namespace kvdb {
class OutlineClip;
}

/// How a stroke or an area looks, everything resolved.
struct KvGiStyle {
  KvCmEntityColor color = KvCmEntityColor::ofIndex(7);  ///< of the table, or red, green, blue
  KvDbObjectId layer;
  KvDbObjectId linetype;  ///< null: continuous
  double linetypeScale = 1;
  int lineWeight = KvDb::kLnWtByLwDefault;  ///< in 1/100 mm, or kLnWtByLwDefault
  friend bool operator==(const KvGiStyle&, const KvGiStyle&) = default;
};

/// What a layer adds to the look of what stands on it.
struct KvGiLayerLook {
  KvCmEntityColor color = KvCmEntityColor::ofIndex(7);
  KvDbObjectId linetype;
  int lineWeight = KvDb::kLnWtByLwDefault;
  bool isHidden = false;  ///< off: what stands on it isn't seen
  bool isFrozen = false;  ///< neither is what a block reference on it brings along
};

/// A filled area: outlines one behind the other, by the even-odd rule.
struct KvGiArea {
  const KvGePoint3d* points = nullptr;
  const int* counts = nullptr;
  int outlines = 0;
};

class KvGiTracer : public KvGiWorldDraw, private KvGiGeometry, private KvGiSubEntityTraits {
 public:
  explicit KvGiTracer(KvDbDatabase* database = nullptr);
  ~KvGiTracer() override;
  KvGiTracer(const KvGiTracer&) = delete;
  KvGiTracer& operator=(const KvGiTracer&) = delete;

  /// Draws one drawable; to be called for each entity of a space in order. Erased and invisible entities and
  /// those on frozen layers give nothing. True when the sink wants no more.
  bool trace(KvGiDrawable* drawable) { return draw(drawable); }
  /// All entities of a block, in their order of drawing (kvdbDrawOrder).
  bool traceBlock(KvDbObjectId block);

  KvGiGeometry& geometry() override { return *this; }
  KvGiSubEntityTraits& subEntityTraits() override { return *this; }
  double deviation(const KvGePoint3d& at) const override;
  KvDbDatabase* database() const override { return database_; }

  /// Chords lie no farther than this from their curves, in world units.
  void setDeviation(double worldUnits) { deviation_ = worldUnits; }
  /// Endless lines are cut at this box of the XY plane; without one they give nothing.
  void setEndlessBox(const KvGeBox3d& box) { endlessBox_ = box; }
  /// A transform in front of all others, from the world to the sink's own coordinates; only while nothing is
  /// drawn.
  void setBaseTransform(const KvGeMatrix3d& transform);

 protected:
  // What the sink gives. One point is a dot. Calls come with `style`, `marker` and `path` as they stand.
  virtual void stroke(const KvGePoint3d* points, int count) = 0;
  virtual void fill(const KvGiArea& area) = 0;
  /// An arc center + u cos t + v sin t, t from `start` over `sweep`, in world coordinates. False: it comes
  /// as a stroke. Not called while a clip boundary cuts.
  virtual bool strokeConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v,
                           double start, double sweep);
  /// A row of lines and cubic curves in world coordinates: a start, then one point or three for each by its
  /// degree (1 or 3). False: it comes as a stroke. Not called while a clip boundary cuts.
  virtual bool strokeSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count);
  /// One line of text, from its own coordinates (the base line's start at 0, capitals 1 high before the
  /// look's height applies) to the world; true: the sink has taken it. By default it comes as areas.
  virtual bool takeText(const KvGeMatrix3d& toWorld, const KvGiTextLook& look, const CString& text);
  /// An area, cut by the clips, that covers what came before it.
  virtual void cover(const KvGiArea&) {}
  /// A picture in world coordinates.
  virtual void takeImage(const KvGiImage&) {}
  /// A closed outline in world coordinates that clips what follows, until the call of endClip. False: the
  /// tracer cuts strokes and areas itself.
  virtual bool beginClip(const std::vector<KvGePoint2d>& outline, bool isInverted);
  virtual void endClip() {}
  /// An entity (or other drawable) begins: false leaves it out. Each begun one ends.
  virtual bool beginDrawable(const KvGiDrawable& drawable);
  virtual void endDrawable(const KvGiDrawable&) {}
  /// What a sink changes in the look of a layer: overrides of a viewport, layers that don't plot.
  virtual void adjustLayer(KvDbObjectId, KvGiLayerLook&) const {}

  /// The look of what comes now.
  const KvGiStyle& style();
  /// Selection marker; 0: none.
  long marker() const { return marker_; }
  /// Drawables that are being drawn, outermost first.
  const std::vector<const KvGiDrawable*>& drawables() const { return stack_; }
  /// From the coordinates of what is being drawn to the world.
  const KvGeMatrix3d& modelToWorld() const { return transforms_.back(); }
  bool isLinetypeContinuous() const { return isLinetypeContinuous_; }
  /// No more is wanted: the drawables' calls answer true from now on.
  void stop() { isStopped_ = true; }
  bool isStopped() const { return isStopped_; }
  const KvGiLayerLook& layerLook(KvDbObjectId layer);
  /// Whatever was resolved of layers and linetypes is asked anew.
  void forgetLooks();

 private:
  enum class LinetypeKind : std::uint8_t { Own, ByLayer, ByBlock, Continuous };
  struct Traits {
    KvCmEntityColor color;
    KvDbObjectId layer, linetype;
    double linetypeScale = 1, thickness = 0;
    int lineWeight = KvDb::kLnWtByLayer;
    KvGiFillType fillType = kKvGiFillNever;
  };
  struct Clip;
  struct Block {  // what stands around the drawable
    KvGiStyle style;
    KvDbObjectId owner;  // null outside blocks
  };

  // KvGiSubEntityTraits
  void setColor(std::uint16_t color) override;
  void setTrueColor(const KvCmEntityColor& color) override;
  void setLayer(KvDbObjectId layer) override;
  void setLineType(KvDbObjectId linetype) override;
  void setSelectionMarker(long marker) override { marker_ = marker; }
  void setFillType(KvGiFillType type) override { traits_.fillType = type; }
  void setLineWeight(int weight) override;
  void setLineTypeScale(double scale) override;
  void setThickness(double thickness) override { traits_.thickness = thickness; }
  std::uint16_t color() const override;
  KvCmEntityColor trueColor() const override { return traits_.color; }
  KvDbObjectId layerId() const override { return traits_.layer; }
  KvDbObjectId lineTypeId() const override { return traits_.linetype; }
  KvGiFillType fillType() const override { return traits_.fillType; }
  int lineWeight() const override { return traits_.lineWeight; }
  double lineTypeScale() const override { return traits_.linetypeScale; }
  double thickness() const override { return traits_.thickness; }

  // KvGiGeometry
  bool circle(const KvGePoint3d& center, double radius, const KvGeVector3d& normal) override;
  bool circle(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third) override;
  bool circularArc(const KvGePoint3d& center, double radius, const KvGeVector3d& normal,
                   const KvGeVector3d& startVector, double sweepAngle, KvGiArcType type) override;
  bool circularArc(const KvGePoint3d& start, const KvGePoint3d& point, const KvGePoint3d& end,
                   KvGiArcType type) override;
  bool ellipticalArc(const KvGePoint3d& center, const KvGeVector3d& normal, double majorLength,
                     double minorLength, double startAngle, double endAngle, double tilt,
                     KvGiArcType type) override;
  bool polyline(int count, const KvGePoint3d* points, const KvGeVector3d* normal, long marker) override;
  bool polygon(int count, const KvGePoint3d* points) override;
  bool polyPolygon(int outlines, const int* counts, const KvGePoint3d* points) override;
  bool text(const KvGePoint3d& position, const KvGeVector3d& normal, const KvGeVector3d& direction,
            const KvGiTextLook& look, const CString& text) override;
  bool pline(const KvDbPolyline& polyline, int from, int count) override;
  bool path(const KvGiPath& path) override;
  bool segments(const KvGePoint3d* poles, const unsigned char* degrees, int count) override;
  bool polypoint(int count, const KvGePoint3d* points) override;
  bool shell(int points, const KvGePoint3d* vertices, int faceListSize, const std::int32_t* faces) override;
  bool mesh(int rows, int columns, const KvGePoint3d* vertices) override;
  bool mask(int count, const KvGePoint3d* points) override;
  bool image(const KvGiImage& image) override;
  bool ray(const KvGePoint3d& base, const KvGePoint3d& through) override;
  bool xline(const KvGePoint3d& first, const KvGePoint3d& second) override;
  bool draw(KvGiDrawable* drawable) override;
  void pushModelTransform(const KvGeMatrix3d& transform) override;
  void popModelTransform() override;
  bool pushClipBoundary(const KvGiClipBoundary& boundary) override;
  bool popClipBoundary() override;

  void drawInside(KvGiDrawable* drawable, KvDbObjectId owner);
  bool isCut() const;
  bool isShown();
  KvDbObjectId effectiveLayer(KvDbObjectId layer);
  bool isLayerZero(KvDbObjectId layer);
  LinetypeKind linetypeKind(KvDbObjectId linetype);
  void resolveStyle();
  KvGePoint3d toWorld(const KvGePoint3d& p) const { return isIdentity_ ? p : transforms_.back() * p; }
  /// Points of the model, through transform and clips.
  void strokeModel(const KvGePoint3d* points, int count);
  void strokeWorld(const KvGePoint3d* points, int count, std::size_t clip = 0);
  void fillWorld(std::vector<KvGePoint3d>& points, std::vector<int>& counts);
  /// What the clips leave of an area, in place.
  void cutArea(std::vector<KvGePoint3d>& points, std::vector<int>& counts) const;
  void conic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
             double sweep, KvGiArcType type);
  bool strokeExactly(const KvGiPath& path, const KvGeMatrix3d& toModel);
  void endless(const KvGePoint3d& base, const KvGeVector3d& direction, bool isBothWays);
  void drawGlyphs(const KvGeMatrix3d& toWorld, const KvGiTextLook& look, const CString& text);

  KvDbDatabase* database_;
  double deviation_ = 0.01;
  KvGeBox3d endlessBox_;
  Traits traits_;
  KvGiStyle style_;
  bool isStyleValid_ = false, isStopped_ = false, isIdentity_ = true, isLinetypeContinuous_ = false;
  bool isStyleHidden_ = false;
  long marker_ = 0;
  std::uint64_t drawn_ = 0;
  Block block_;
  std::vector<KvGeMatrix3d> transforms_;
  std::vector<Clip> clips_;
  std::vector<const KvGiDrawable*> stack_;
  std::unordered_map<KvDbObjectId, KvGiLayerLook> layers_;
  std::unordered_map<KvDbObjectId, LinetypeKind> linetypes_;
  KvDbObjectId layerZero_, lastLayer_;
  const KvGiLayerLook* lastLook_ = nullptr;
  std::vector<KvGePoint3d> scratch_, outline_;
  std::vector<KvGePoint2d> flat_;
  std::vector<int> outlineCounts_;
  std::vector<unsigned char> degrees_;
};
