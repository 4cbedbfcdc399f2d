#pragma once
// The light polyline: vertices in a plane, straight or curved segments between them, widths.
#include "host/entities/curve.h"
#include "host/geometry/arc.h"

/// Vertices are kept in the coordinates of the polyline's plane (arbitrary-axis rule of drawing files). A
/// bulge is the tangent of a quarter of the angle that the arc to the next vertex sweeps, positive
/// counter-clockwise; 0 is a straight segment. Indices outside the vertices answer eInvalidIndex.
class KvDbPolyline : public KvDbCurve {
  KVRX_DECLARE(KvDbPolyline)
 public:
  enum SegType { kLine, kArc, kCoincident, kPoint, kEmpty };
  struct Vertex {
    KvGePoint2d point;
    double bulge = 0, startWidth = 0, endWidth = 0;
    std::int32_t id = 0;
  };

  int numVerts() const { return static_cast<int>(corners_.size()); }
  /// Inserts before `index`; the number of vertices appends.
  Kvad::ErrorStatus addVertexAt(int index, const KvGePoint2d& point, double bulge = 0, double startWidth = -1,
                                double endWidth = -1);
  Kvad::ErrorStatus removeVertexAt(int index);
  /// In world coordinates.
  Kvad::ErrorStatus getPointAt(int index, KvGePoint3d& point) const;
  /// In the plane's coordinates.
  Kvad::ErrorStatus getPointAt(int index, KvGePoint2d& point) const;
  Kvad::ErrorStatus setPointAt(int index, const KvGePoint2d& point);
  Kvad::ErrorStatus getBulgeAt(int index, double& bulge) const;
  Kvad::ErrorStatus setBulgeAt(int index, double bulge);
  /// The segment that begins at the vertex; kEmpty behind the last vertex of an open polyline, kPoint for a
  /// single vertex.
  SegType segType(int index) const;

  /// eInvalidInput where the segment is of another kind.
  Kvad::ErrorStatus getLineSegAt(int index, KvGePoint3d& start, KvGePoint3d& end) const;
  Kvad::ErrorStatus getLineSegAt(int index, KvGeLineSeg3d& line) const;
  Kvad::ErrorStatus getArcSegAt(int index, KvGeCircArc3d& arc) const;
  Kvad::ErrorStatus getWidthsAt(int index, double& startWidth, double& endWidth) const;
  Kvad::ErrorStatus setWidthsAt(int index, double startWidth, double endWidth);
  bool hasBulges() const;
  bool hasWidth() const { return constantWidth_ != 0 || hasOwnWidths(); }
  bool isOnlyLines() const { return !hasBulges(); }

  bool isClosed() const override { return (flags_ & kClosedFlag) != 0; }
  void setClosed(bool closed);
  double elevation() const { return elevation_; }
  Kvad::ErrorStatus setElevation(double elevation);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  KvGeVector3d normal() const { return normal_; }
  /// The vertices keep their coordinates in the new plane. eInvalidInput.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  /// Linetype runs on over vertices.
  bool hasPlinegen() const { return (flags_ & kPlinegenFlag) != 0; }
  Kvad::ErrorStatus setPlinegen(bool on);
  /// Takes over the shape, widths and properties of a polyline of the old kind; `entity` becomes this one.
  /// With `transferId` this polyline goes into the old one's block (open for write afterwards) and the old
  /// one, which must be open for write, is erased and closed; outside a drawing it is deleted. Without it the
  /// old one stays. eInvalidInput for a splined polyline, eNotThatKindOfClass.
  Kvad::ErrorStatus convertFrom(KvDbEntity*& entity, bool transferId = true);
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  Kvad::ErrorStatus getArea(double& area) const override;
  Kvad::ErrorStatus reverseCurve() override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
  /// eInvalidInput when the widths differ.
  Kvad::ErrorStatus getConstantWidth(double& width) const;
  Kvad::ErrorStatus setConstantWidth(double width);

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 protected:
  std::unique_ptr<KvDbCurve> pieceEntity(std::unique_ptr<KvGeCurve3d> piece, double from,
                                         double to) const override;

 private:
  friend std::vector<KvGiPathVertex> kvgiVerticesOf(const KvDbPolyline& polyline, int from, int count,
                                                    KvGiPath& path);
  static constexpr int kClosedFlag = 1, kPlinegenFlag = 128;
  bool has(int index) const { return index >= 0 && index < numVerts(); }
  /// What nearly every vertex has, and what few polylines have: the second list is empty, or as long.
  struct Corner {
    KvGePoint2d point;
    double bulge = 0;
  };
  struct Extra {
    double startWidth = 0, endWidth = 0;
    std::int32_t id = 0;
  };
  const Corner& corner(int index) const { return corners_[static_cast<std::size_t>(index)]; }
  Extra extra(int index) const {
    return extras_.empty() ? Extra() : extras_[static_cast<std::size_t>(index)];
  }
  Vertex vertex(int index) const;
  void setVertex(int index, const Vertex& vertex);
  void insertVertex(int index, const Vertex& vertex);
  void clearWidths();
  bool hasOwnWidths() const;

  std::vector<Corner> corners_;
  std::vector<Extra> extras_;
  double constantWidth_ = 0, elevation_ = 0, thickness_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
  std::int16_t flags_ = 0;
  bool hasConstantWidth_ = false;  // as the file had it
};
