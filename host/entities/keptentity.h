#pragma once
// Entities whose groups are kept as files have them, with calls for what is asked; and those of them that are
// drawn as other entities.
#include "host/database/entity.h"

/// Reads and changes single groups of one section.
class KvDbKeptEntity : public KvDbProxyEntity {
  KVRX_DECLARE(KvDbKeptEntity)
 protected:
  KvDbKeptEntity(const wchar_t* type, const wchar_t* marker)
      : KvDbProxyEntity(CString(type)), marker_(marker) {}
  /// Of the first group of a code; the default where there is none.
  double real(int code, double standard = 0) const;
  std::int64_t whole(int code, std::int64_t standard = 0) const;
  KvGePoint3d point(int code, const KvGePoint3d& standard = {}) const;
  std::vector<KvDxfGroup> all(int code) const;
  /// The whole section; null when there is none.
  const KvDbGroupList* section() const;
  /// Replaces the first group of the code, or appends one. eInvalidInput for numbers that aren't finite.
  Kvad::ErrorStatus putReal(int code, double value);
  Kvad::ErrorStatus putWhole(int code, std::int64_t value);
  Kvad::ErrorStatus putText(int code, std::wstring_view value);
  Kvad::ErrorStatus putPoint(int code, const KvGePoint3d& value, int dimensions = 3);
  /// Hands every group through `change`, in order; it answers false for one that goes away. What a file keeps
  /// as the entity's picture shows the old state, and is dropped.
  void rewrite(const std::function<bool(KvDxfGroup&)>& change, const std::vector<KvDxfGroup>& behind = {});

 private:
  Kvad::ErrorStatus put(const KvDxfGroup& group);
  void forgetStoredGraphics();
  const wchar_t* marker_;
};

/// A kept entity that is seen as a row of simpler ones: lines, curves, fills, texts, block references.
class KvDbPartsEntity : public KvDbKeptEntity {
  KVRX_DECLARE(KvDbPartsEntity)
 public:
  using Parts = std::vector<std::unique_ptr<KvDbEntity>>;
  /// The parts, outside any drawing, with the entity's layer and look where they have none of their own.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;

 protected:
  using KvDbKeptEntity::KvDbKeptEntity;
  virtual Parts makeParts() const = 0;
  /// Adds a part that looks like this entity, for now.
  template <class T>
  T& addPart(Parts& parts, std::unique_ptr<T> part) const {
    T& own = *part;
    own.setPropertiesFrom(this);
    parts.push_back(std::move(part));
    return own;
  }
  /// The same with a colour (256 by layer, 0 the entity's own) and a line weight.
  template <class T>
  T& addPart(Parts& parts, std::unique_ptr<T> part, int color,
             KvDb::LineWeight weight = KvDb::kLnWtByBlock) const {
    T& own = addPart(parts, std::move(part));
    if (color > kKvColorByBlock && color <= kKvColorByLayer) own.setColorIndex(color);
    if (weight != KvDb::kLnWtByBlock) own.setLineWeight(weight);
    return own;
  }
};
