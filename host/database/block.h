#pragma once
// Blocks: named rows of entities. Model space and every layout are blocks too.
#include "host/database/entity.h"

/// What stands at the beginning of a block in files; it carries the block's origin and flags.
class KvDbBlockBegin : public KvDbEntity {
  KVRX_DECLARE(KvDbBlockBegin)
 public:
  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;
  /// The name that the file gave, for finding the record.
  const CString& nameAsRead() const { return name_; }

 private:
  friend class KvDbBlockTableRecord;
  CString name_, xrefPath_, description_;
  std::int16_t flags_ = 0;
  KvGePoint3d origin_;
};

/// What stands at the end of a block in files.
class KvDbBlockEnd : public KvDbEntity {
  KVRX_DECLARE(KvDbBlockEnd)
 public:
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
};

/// The mark behind the last of an entity's owned entities.
class KvDbSequenceEnd : public KvDbEntity {
  KVRX_DECLARE(KvDbSequenceEnd)
};

class KvDbBlockTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbBlockTableRecord)
 public:
  /// The point that an insertion point stands for, in the block's own coordinates.
  KvGePoint3d origin() const;
  Kvad::ErrorStatus setOrigin(const KvGePoint3d& origin);
  bool isAnonymous() const { return getName().GetAt(0) == L'*'; }
  /// Model space or a layout's, by name.
  bool isSpace() const;
  /// Has a layout.
  bool isLayout() const { return !layout_.isNull(); }
  KvDbObjectId layoutId() const { return layout_; }
  void setLayoutId(KvDbObjectId id);
  bool isFromExternalReference() const;
  bool explodable() const { return explodable_; }
  /// 1: one factor for all axes.
  int blockScaling() const { return scaling_; }
  CString comments() const;

  /// Takes the entity over; it is open for write afterwards. eNullEntityPointer.
  Kvad::ErrorStatus appendKvDbEntity(KvDbObjectId& id, KvDbEntity* entity);
  Kvad::ErrorStatus appendKvDbEntity(KvDbEntity* entity);
  /// In order; erased ones left out unless asked for.
  KvDbObjectIdArray entities(bool withErased = false) const;
  int entityCount() const;
  /// The entity behind `id` that isn't erased (null: the first); null behind the last. Walking along costs
  /// the same at each step.
  KvDbObjectId entityBehind(KvDbObjectId id) const;
  /// For copies: an entity that is in the drawing already.
  void addCopied(KvDbObjectId id);
  /// All entities of another block of the drawing become this one's; both are open for write.
  void takeEntitiesOf(KvDbBlockTableRecord& other);
  /// Erases all entities.
  void eraseContent();

  KvDbObjectId beginId() const { return begin_; }
  KvDbObjectId endId() const { return end_; }
  /// For readers: entities that are in the drawing already.
  void addAsRead(KvDbObjectId entity) { entities_.push_back(entity); }
  void setMarks(KvDbObjectId begin, KvDbObjectId end);
  /// Makes the marks that a block needs in files, where they are missing. The record must be in a drawing.
  void ensureMarks();

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 protected:
  const wchar_t* fileMarker() const override { return L"AcDbBlockTableRecord"; }
  bool takesName(std::wstring_view name) const override;

 private:
  friend class KvDbBlockBegin;
  KvDbBlockBegin* begin() const;

  KvDbObjectId layout_, begin_, end_;
  std::vector<KvDbObjectId> entities_;
  mutable std::size_t lastFound_ = 0;
  std::int16_t units_ = 0;
  std::uint8_t scaling_ = 0;
  bool explodable_ = true;
};

/// A record added under a name of an asterisk and a letter ("*U") gets the next free number behind it.
class KvDbBlockTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbBlockTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbBlockTableRecord::desc(); }

 protected:
  bool acceptsName(KvDbSymbolTableRecord& record) const override;
  void recordAdded(KvDbSymbolTableRecord& record) override;
};
