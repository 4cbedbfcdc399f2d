#pragma once
// What all entities share: layer, linetype, colour, line weight, visibility; entities that own others; and
// entities of types that the host doesn't model.
#include "host/database/dbobject.h"
#include "host/database/fields.h"
#include "host/database/tables.h"
#include "host/geometry/line.h"

namespace KvDb {
enum Visibility { kVisible = 0, kInvisible = 1 };
}

/// Two opposite corners of a box along the axes. Fresh, it holds nothing.
class KvDbExtents {
 public:
  KvDbExtents() = default;
  KvDbExtents(const KvGePoint3d& least, const KvGePoint3d& greatest) { set(least, greatest); }
  const KvGePoint3d& minPoint() const { return min_; }
  const KvGePoint3d& maxPoint() const { return max_; }
  bool isEmpty() const { return min_.x > max_.x; }
  void set(const KvGePoint3d& least, const KvGePoint3d& greatest) {
    min_ = least;
    max_ = greatest;
  }
  void addPoint(const KvGePoint3d& point);
  void addExt(const KvDbExtents& other);

 private:
  KvGePoint3d min_{1e300, 1e300, 1e300}, max_{-1e300, -1e300, -1e300};
};

class KvDbEntity : public KvDbObject {
  KVRX_DECLARE(KvDbEntity)
  KVDB_FIELDS_DECLARE
 public:
  /// The block record that holds it; null outside a drawing.
  KvDbObjectId blockId() const { return ownerId(); }

  KvDbObjectId layerId() const { return layer_; }
  CString layer() const { return kvdbRecordName(layer_); }
  /// eKeyNotFound when the drawing has no such layer.
  Kvad::ErrorStatus setLayer(const wchar_t* name);
  Kvad::ErrorStatus setLayer(KvDbObjectId id);
  /// Null stands for "by layer".
  KvDbObjectId linetypeId() const { return linetype_; }
  Kvad::ErrorStatus setLinetype(KvDbObjectId id);
  double linetypeScale() const { return linetypeScale_; }
  /// eInvalidInput for 0 and below.
  Kvad::ErrorStatus setLinetypeScale(double scale);
  /// 0 by block, 1 to 255, 256 by layer.
  int colorIndex() const { return color_; }
  Kvad::ErrorStatus setColorIndex(int color);
  KvDb::LineWeight lineWeight() const { return static_cast<KvDb::LineWeight>(lineWeight_); }
  Kvad::ErrorStatus setLineWeight(KvDb::LineWeight weight);
  KvDb::Visibility visibility() const { return invisible_ ? KvDb::kInvisible : KvDb::kVisible; }
  Kvad::ErrorStatus setVisibility(KvDb::Visibility visibility);
  /// Current layer, colour, linetype and scale of the drawing (null: the working one).
  void setDatabaseDefaults(KvDbDatabase* database = nullptr);
  void setPropertiesFrom(const KvDbEntity* other);

  /// World coordinates. eInvalidExtents when it has none.
  virtual Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const;
  /// eNotApplicable when the entity can't be moved as a whole, eCannotScaleNonUniformly.
  virtual Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix);

  /// Sets the traits from the entity's own, then calls subWorldDraw.
  bool worldDraw(KvGiWorldDraw* draw) override;
  /// Draws the entity by primitives; false when there is nothing to draw. By default nothing.
  virtual bool subWorldDraw(KvGiWorldDraw* draw);

 private:
  KvDbObjectId layer_, linetype_;
  double linetypeScale_ = 1;
  std::int16_t color_ = kKvColorByLayer;
  std::int16_t lineWeight_ = KvDb::kLnWtByLayer;
  std::int16_t invisible_ = 0;
};

/// An entity of a type that the host doesn't model. Its groups are kept whole; layer, colour and the like can
/// be asked and set.
class KvDbProxyEntity : public KvDbEntity {
  KVRX_DECLARE(KvDbProxyEntity)
 public:
  KvDbProxyEntity() = default;
  explicit KvDbProxyEntity(KvDbSharedText type) : type_(std::move(type)) {}
  explicit KvDbProxyEntity(const CString& type) : type_(type.view()) {}
  std::wstring_view fileTypeView() const override { return type_.view(); }
  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                    KvDxfResolver& resolver) override;
  void dxfInEnd(KvDxfResolver& resolver) override;

 private:
  KvDbSharedText type_;
};

/// An entity that owns a row of others, closed by an end mark: a polyline of the old kind with its vertices,
/// a block reference with its attributes. Unmodelled types serve with their groups kept.
class KvDbSequenceEntity : public KvDbProxyEntity {
  KVRX_DECLARE(KvDbSequenceEntity)
 public:
  using KvDbProxyEntity::KvDbProxyEntity;
  /// Owned entities that aren't erased, in order.
  KvDbObjectIdArray subEntities() const;
  KvDbObjectId endMark() const { return end_; }
  void appendSubEntity(KvDbObjectId id);
  void setEndMark(KvDbObjectId id);
  /// For readers: entities that are in the drawing already.
  void addAsRead(KvDbObjectId id) { subEntities_.append(id); }
  void setEndMarkAsRead(KvDbObjectId id) { end_ = id; }

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;

 private:
  KvDbObjectIdArray subEntities_;
  KvDbObjectId end_;
};
