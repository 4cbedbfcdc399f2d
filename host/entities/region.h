#pragma once
// Flat areas. Files of R2000 to R2010 carry their shape as text of a solid modeller, which is read and
// written where all edges are lines and parts of ellipses (host/database/modelertext.h); other data of a
// modeller are kept as they are.
#include "host/database/entity.h"
#include "host/geometry/region.h"

class KvDbRegion : public KvDbProxyEntity {
  KVRX_DECLARE(KvDbRegion)
 public:
  enum BoolOperType { kBoolUnite = 0, kBoolIntersect = 1, kBoolSubtract = 2 };

  KvDbRegion() : KvDbProxyEntity(CString(L"REGION")) {}
  explicit KvDbRegion(const KvGeRegion& shape) : KvDbRegion() { shape_ = shape; }

  /// One region (KvDbRegion*) for each closed loop that the curves (KvDbCurve*) form; appended, owned by the
  /// caller. eInvalidInput for null or other entities, eInvalidLoop when nothing closes, eNonPlanarEntity,
  /// eSelfIntersecting.
  static Kvad::ErrorStatus createFromCurves(const KvDbVoidPtrArray& curves, KvDbVoidPtrArray& regions);
  /// This region becomes the union, the common part, or itself less the other, which becomes empty.
  /// eNonPlanarEntity when they lie in different planes; nothing is changed then. eNullEntityPointer.
  Kvad::ErrorStatus booleanOper(BoolOperType operation, KvDbRegion* other);
  /// True when it encloses nothing, or its shape stands in a modeller's data that can't be read.
  bool isNull() const { return shape_.isNull(); }
  const KvGeRegion& shape() const { return shape_; }
  /// eNoContent for a region without a shape.
  Kvad::ErrorStatus getArea(double& area) const;
  Kvad::ErrorStatus getPerimeter(double& length) const;
  Kvad::ErrorStatus getNormal(KvGeVector3d& normal) const;

  /// The edges as lines, arcs, circles, ellipses and splines; separate areas come as regions first.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  void getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  void dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                    KvDxfResolver& resolver) override;
  void dxfInEnd(KvDxfResolver& resolver) override;

 private:
  /// An edge as it is filed.
  struct EdgeNumbers {
    int kind;
    std::vector<double> numbers;
  };
  using Edges = std::vector<EdgeNumbers>;
  /// A shape that is no longer the one of the modeller's data; these go.
  void setShape(const KvGeRegion& shape);
  /// Takes the shape from the modeller's data, where there is none yet.
  void readModel();
  /// What is filed of the shape. A shape that was read is filed as it was read, to the last digit.
  const Edges& filedEdges() const;
  void readEdges(Edges edges);

  KvGeRegion shape_;
  bool isOfModel_ = false;                      // the shape is that of the kept data
  mutable std::shared_ptr<const Edges> filed_;  // null: not asked for since the shape changed
};
