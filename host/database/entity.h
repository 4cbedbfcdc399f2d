#pragma once
// What all entities share: layer, linetype, colour, line weight, visibility; entities that own others; and
// entities of types that the host doesn't model.
#include <functional>

#include "host/database/dbobject.h"
#include "host/database/fields.h"
#include "host/database/subentpath.h"
#include "host/database/tables.h"
#include "host/geometry/line.h"

namespace KvDb {
enum Visibility { kVisible = 0, kInvisible = 1 };
/// Which of two entities is continued beyond its ends.
enum Intersect { kOnBothOperands = 0, kExtendThis = 1, kExtendArg = 2, kExtendBoth = 3 };
}  // namespace KvDb

class KvDbSequence;
class KvGeCurve3d;
/// Pointers whose class the call names; the caller owns what they point to.
using KvDbVoidPtrArray = KvArray<void*>;
using KvGePoint3dArray = KvArray<KvGePoint3d>;
using KvGePoint2dArray = KvArray<KvGePoint2d>;

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
  // Of each setter the last argument says whether owned entities (attributes, vertices) follow.
  /// eKeyNotFound when the drawing has no such layer.
  Kvad::ErrorStatus setLayer(const wchar_t* name, bool doSubents = true);
  Kvad::ErrorStatus setLayer(KvDbObjectId id, bool doSubents = true);
  /// Null stands for "by layer".
  KvDbObjectId linetypeId() const { return linetype_; }
  /// "BYLAYER" and "CONTINUOUS" as they are spelt in the drawing's table.
  CString linetype() const;
  Kvad::ErrorStatus setLinetype(KvDbObjectId id, bool doSubents = true);
  /// eKeyNotFound when the drawing has no such linetype.
  Kvad::ErrorStatus setLinetype(const wchar_t* name, bool doSubents = true);
  double linetypeScale() const { return linetypeScale_; }
  /// eInvalidInput for 0 and below.
  Kvad::ErrorStatus setLinetypeScale(double scale, bool doSubents = true);
  /// 0 by block, 1 to 255, 256 by layer. Where the colour is one of red, green, blue: the nearest that files
  /// hold beside it.
  int colorIndex() const { return color_; }
  Kvad::ErrorStatus setColorIndex(int color, bool doSubents = true);
  KvCmEntityColor color() const;
  Kvad::ErrorStatus setColor(const KvCmEntityColor& color, bool doSubents = true);
  KvDb::LineWeight lineWeight() const { return static_cast<KvDb::LineWeight>(lineWeight_); }
  Kvad::ErrorStatus setLineWeight(KvDb::LineWeight weight, bool doSubents = true);
  KvDb::Visibility visibility() const { return invisible_ ? KvDb::kInvisible : KvDb::kVisible; }
  Kvad::ErrorStatus setVisibility(KvDb::Visibility visibility, bool doSubents = true);
  /// Current layer, colour, linetype and scale of the drawing (null: the working one).
  void setDatabaseDefaults(KvDbDatabase* database = nullptr);
  /// eNullEntityPointer.
  Kvad::ErrorStatus setPropertiesFrom(const KvDbEntity* other, bool doSubents = true);

  /// World coordinates. eInvalidExtents when it has none. By default the box of what the entity draws.
  virtual Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const;
  /// eNotApplicable when the entity can't be moved as a whole, eCannotScaleNonUniformly.
  virtual Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix);

  /// Adds the points that lie on both entities, each once. With a plane: those where the projections along
  /// its normal meet, as points of this entity. eNullEntityPointer. The two numbers are marks of parts (0:
  /// all).
  Kvad::ErrorStatus intersectWith(const KvDbEntity* other, KvDb::Intersect type, KvGePoint3dArray& points,
                                  long thisMarker = 0, long otherMarker = 0) const;
  Kvad::ErrorStatus intersectWith(const KvDbEntity* other, KvDb::Intersect type, const KvGePlane& plane,
                                  KvGePoint3dArray& points, long thisMarker = 0, long otherMarker = 0) const;
  /// The parts as new entities (KvDbEntity*) outside any drawing, appended, owned by the caller. A status
  /// other than eOk when the entity has no parts: eCannotExplodeEntity by default.
  virtual Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const;
  /// The curves that the entity consists of, appended; by default those that it draws.
  virtual void getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const;
  /// Has the host show the entity, or a part of it, as highlighted, and ends that; calls count. An empty path
  /// stands for the whole entity. eNotInDatabase.
  Kvad::ErrorStatus highlight(const KvDbFullSubentPath& path = {}) const;
  Kvad::ErrorStatus unhighlight(const KvDbFullSubentPath& path = {}) const;
  void addedToDatabase() override;
  /// What it owns in a row; null for most entities.
  virtual KvDbSequence* sequence() { return nullptr; }
  const KvDbSequence* sequence() const { return const_cast<KvDbEntity*>(this)->sequence(); }

  /// Sets the traits from the entity's own, then calls subWorldDraw.
  bool worldDraw(KvGiWorldDraw* draw) override;
  /// Draws the entity by primitives; false when there is nothing to draw. By default nothing.
  virtual bool subWorldDraw(KvGiWorldDraw* draw);

 protected:
  void keepOwnedOf(const KvDbObject& other) override;
  void copyOwnedOf(const KvDbObject& other) override;

 private:
  KvDbObjectId layer_, linetype_;
  double linetypeScale_ = 1;
  std::int16_t color_ = kKvColorByLayer;
  std::int16_t lineWeight_ = KvDb::kLnWtByLayer;
  std::int16_t invisible_ = 0;
  std::int32_t rgb_ = -1;  // 0xRRGGBB; -1: none
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
  /// What can be drawn of types that are not modelled: the block of a table or a dimension, else the picture
  /// that the file keeps with the entity (host/database/storedgraphics.h).
  bool subWorldDraw(KvGiWorldDraw* draw) override;
  std::unique_ptr<KvDbObject> makeSame() const override;

 private:
  KvDbSharedText type_;
};

/// The row of entities that an entity owns, closed by an end mark: the vertices of a polyline of the old
/// kind, the attributes of a block reference.
class KvDbSequence {
 public:
  virtual ~KvDbSequence() = default;
  /// Owned entities that aren't erased, in order.
  KvDbObjectIdArray subEntities() const;
  KvDbObjectId endMark() const { return end_; }
  void appendSubEntity(KvDbObjectId id);
  void insertSubEntity(int index, KvDbObjectId id);
  void setEndMark(KvDbObjectId id);
  /// Takes a new entity over, behind the last: into the drawing of the owner, where it is open for write
  /// afterwards; while the owner is in none it waits here (a null id). eNullEntityPointer.
  Kvad::ErrorStatus takeSubEntity(KvDbEntity* entity, KvDbObjectId& id);
  /// The owned entities as they can be read, in order, also those that wait.
  std::vector<const KvDbEntity*> members() const;
  /// Does something to each of them; one that cannot be opened for write is left out.
  void changeMembers(const std::function<void(KvDbEntity&)>& change);
  /// For copies: the row of the one that was copied isn't theirs.
  void forgetMembers() {
    subEntities_.removeAll();
    end_.setNull();
  }
  /// For readers: entities that are in the drawing already.
  void addAsRead(KvDbObjectId id) { subEntities_.append(id); }
  void setEndMarkAsRead(KvDbObjectId id) { end_ = id; }
  /// The same ids as another row: for content that is read anew.
  void shareRowOf(const KvDbSequence& other);
  /// Copies of another row's members, in place of the present ones.
  void copyRowOf(const KvDbSequence& other);

 protected:
  virtual KvDbEntity& sequenceOwner() = 0;
  void sequenceOut(KvDbDwgFiler& filer) const;
  void sequenceIn(KvDbDwgFiler& filer);

 private:
  friend class KvDbEntity;
  /// The owner has come into a drawing: those that wait follow.
  void settle();

  std::vector<std::unique_ptr<KvDbEntity>> waiting_;
  KvDbObjectIdArray subEntities_;
  KvDbObjectId end_;
};

/// An entity of a type that the host doesn't model and that owns a row of others: meshes of the old kind.
class KvDbSequenceEntity : public KvDbProxyEntity, public KvDbSequence {
  KVRX_DECLARE(KvDbSequenceEntity)
 public:
  using KvDbProxyEntity::KvDbProxyEntity;
  KvDbSequence* sequence() override { return this; }
  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  std::unique_ptr<KvDbObject> makeSame() const override;

 protected:
  KvDbEntity& sequenceOwner() override { return *this; }
};

/// Which class stands for an entity's record in a file, where one type of files is several classes
/// (DIMENSION, POLYLINE, VERTEX). Null: the class of that type, if any.
using KvDbKindChooser = const KvRxClass* (*)(std::span<const KvDxfGroup> groups);
/// Registers a chooser for a type; done once, while the library is loaded. The answer is always true.
bool kvdbRegisterKinds(const wchar_t* type, KvDbKindChooser chooser);
/// A new entity for a record of a file or of a chain: of the class that its type and groups ask for, else one
/// that keeps everything. Never null.
std::unique_ptr<KvDbEntity> kvdbMakeEntity(KvDbSharedText type, const KvRxClass* known,
                                           std::span<const KvDxfGroup> groups);
