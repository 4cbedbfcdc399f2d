#pragma once
// Objects that live in a drawing, and the open protocol by which they are reached.
//
// An object is owned by its drawing from the moment it is added, by the caller before that. It is reached by
// kvdbOpenObject and given back by close(); opening for read may nest, for write it is exclusive. A pointer
// stays readable after close() for as long as the drawing is open, erased or not.
//
// A class states its fields once, for copies and undo (dwgOutFields, dwgInFields) and for files
// (dxfOutFields, dxfInGroup or dxfInSection). Groups and whole sections that a class doesn't know are kept
// and written back.
#include <memory>
#include <optional>
#include <vector>

#include "host/base/kvad.h"
#include "host/base/resbuf.h"
#include "host/database/dxffiler.h"
#include "host/database/filer.h"
#include "host/database/objectid.h"
#include "host/database/storedgroup.h"
#include "host/database/worlddraw.h"

/// What a drawing keeps for each object: one for each id, owned by the drawing, never moved. An id that
/// something refers to before (or without) its object being there has a stub with a null object.
struct KvDbStub {
  KvDbObject* object = nullptr;
  KvDbDatabase* database = nullptr;
  std::uint64_t handle = 0;
  std::uint16_t readers = 0;
  bool isOpenForWrite = false;
  bool isErased = false;
  std::uint32_t undoSerial = 0;  // of the group that has kept its state last
};

/// Groups that a class doesn't know, by the subclass marker behind which they stood.
struct KvDbUnknownSection {
  KvDbSharedText marker;
  KvDbGroupList groups;
};

struct KvDbField;

class KvDbObject : public KvGiDrawable {
  KVRX_DECLARE(KvDbObject)
 public:
  KvDbObject();
  ~KvDbObject() override;

  KvDbObjectId objectId() const { return KvDbObjectId(stub_); }
  KvDbHandle handle() const { return objectId().handle(); }
  KvDbDatabase* database() const { return stub_ ? stub_->database : nullptr; }
  KvDbObjectId ownerId() const { return owner_; }
  void setOwnerId(KvDbObjectId owner) { owner_ = owner; }

  /// Ends one opening. eNotInDatabase outside a drawing, eNotOpenForRead when it isn't open.
  Kvad::ErrorStatus close();
  /// From read, held by nobody else, to write.
  Kvad::ErrorStatus upgradeOpen();
  /// From write to read.
  Kvad::ErrorStatus downgradeOpen();
  /// Erases, or takes the erasure back. The object must be open for write.
  Kvad::ErrorStatus erase(bool erasing = true);

  bool isReadEnabled() const { return !stub_ || stub_->isOpenForWrite || stub_->readers > 0; }
  bool isWriteEnabled() const { return !stub_ || stub_->isOpenForWrite; }
  bool isErased() const { return stub_ && stub_->isErased; }

  /// The type under which the object stands in files: the class's own, but for objects that the host doesn't
  /// model.
  CString fileType() const { return CString(fileTypeView()); }
  /// The same without a copy; good as long as the object is.
  virtual std::wstring_view fileTypeView() const;

  /// A copy outside any drawing, owned by the caller: without owner, reactors and extension dictionary. Null
  /// for what can't be copied.
  virtual KvDbObject* clone() const;
  /// Takes over what another object of the same class (or of one derived from it) holds; handle, owner,
  /// reactors and extension dictionary stay. eNullObjectPointer, eNotThatKindOfClass.
  virtual Kvad::ErrorStatus copyFrom(const KvRxObject* other);
  /// A fresh object of the same class; null when there can be none.
  virtual std::unique_ptr<KvDbObject> makeSame() const;
  /// Reads content anew from an object's groups; identity and extended data stay. eInvalidInput, with nothing
  /// changed, when the class can't be made anew.
  Kvad::ErrorStatus replaceContent(std::span<const KvDxfGroup> groups, KvDxfResolver& resolver);

  // State for copies and undo. Derived classes call their base first.
  virtual void dwgOutFields(KvDbDwgFiler& filer) const;
  virtual void dwgInFields(KvDbDwgFiler& filer);
  // State in files: the groups behind type, handle and owner, extended data left out.
  virtual void dxfOutFields(KvDxfWriter& writer) const;
  /// Whether the class writes this subclass marker itself.
  virtual bool knowsMarker(std::wstring_view marker) const;
  /// One group of the section behind `marker` (empty where the file has none); false when the class doesn't
  /// know it.
  virtual bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver);
  /// All groups of one section. By default each goes to dxfInGroup, and what isn't known there is kept.
  virtual void dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                            KvDxfResolver& resolver);
  /// Called when the object has come into a drawing as a new one; it is open for write.
  virtual void addedToDatabase() {}
  /// Called once when all groups of the object have been read.
  virtual void dxfInEnd(KvDxfResolver& resolver);

  /// The whole object in a file, from its type on.
  void dxfOut(KvDxfWriter& writer) const;
  /// Reads an object's groups, those behind its type. Handle and owner are the caller's business.
  void dxfIn(std::span<const KvDxfGroup> groups, KvDxfResolver& resolver);

  /// Extended data of one application (null: of all) as a chain beginning with 1001, owned by the caller;
  /// null when there are none.
  resbuf* xData(const wchar_t* application = nullptr) const;
  /// Replaces by application: an application in the chain replaces its old data (a bare 1001 removes them),
  /// others stay. -3 nodes are stepped over; of an application that stands twice the later part holds.
  /// eRegappNotFound, eInvalidInput (a group before the first 1001 or of no kind), with nothing changed.
  Kvad::ErrorStatus setXData(const resbuf* chain);

  KvDbObjectId extensionDictionary() const;
  void setExtensionDictionary(KvDbObjectId id);
  /// Objects that are told of changes, in order.
  KvDbObjectIdArray persistentReactors() const;
  void addPersistentReactor(KvDbObjectId id);
  void removePersistentReactor(KvDbObjectId id);

  const std::vector<KvDbUnknownSection>& unknownSections() const;
  /// For objects that are being made: drops the groups that the class doesn't know.
  void forgetUnknown() { unknown_.reset(); }

  /// Called at the beginning of every change: marks the drawing as changed and keeps the old state for undo.
  void assertWriteEnabled();

 protected:
  /// For content that is read anew: takes over what the other owns and no group of its own tells.
  virtual void keepOwnedOf(const KvDbObject&) {}
  /// For copies that are no part of a greater one: copies of what the other owns in a row.
  virtual void copyOwnedOf(const KvDbObject&) {}
  /// Whether the object may be erased now; a record in use answers eCannotBeErased.
  virtual Kvad::ErrorStatus subErase(bool erasing);
  friend void kvdbDxfOut(const KvDbObject& object, std::span<const KvDbField> fields, KvDxfWriter& writer);
  std::vector<KvDbUnknownSection>& editUnknownSections();
  /// Handle, the applications' blocks and owner; then, behind the fields, sections that the class doesn't
  /// know and extended data.
  void dxfOutIdentity(KvDxfWriter& writer) const;
  void dxfOutRest(KvDxfWriter& writer) const;
  /// Keeps a group of a section that this class doesn't know.
  void keepUnknown(std::wstring_view marker, const KvDxfGroup& group);
  /// Keeps the groups of a whole section whose marker the class doesn't know.
  void keepSection(std::span<const KvDxfGroup> groups) {
    editUnknownSections().back().groups = KvDbGroupList(groups);
  }
  /// Writes what is kept of a section behind its known fields.
  void writeUnknown(KvDxfWriter& writer, std::wstring_view marker) const;

 private:
  friend class KvDbDatabase;
  struct Extra;
  Extra& extra();
  /// Takes over the other's filed state but its owner, reactors and extension dictionary.
  void takeState(const KvDbObject& other);
  void writeAppGroups(KvDxfWriter& writer) const;
  /// Takes `{...}` groups before the first marker; the index behind them.
  std::size_t readAppGroup(std::span<const KvDxfGroup> groups, std::size_t at, KvDxfResolver& resolver);

  KvDbStub* stub_ = nullptr;
  KvDbObjectId owner_;
  std::unique_ptr<Extra> extra_;
  std::unique_ptr<std::vector<KvDbUnknownSection>> unknown_;  // most objects have none
};

/// An object of a type that the host doesn't model. It is kept whole.
class KvDbProxyObject : public KvDbObject {
  KVRX_DECLARE(KvDbProxyObject)
 public:
  KvDbProxyObject() = default;
  explicit KvDbProxyObject(KvDbSharedText type) : type_(std::move(type)) {}
  explicit KvDbProxyObject(const CString& type) : type_(type.view()) {}
  std::wstring_view fileTypeView() const override { return type_.view(); }
  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                    KvDxfResolver& resolver) override;
  std::unique_ptr<KvDbObject> makeSame() const override;
  /// For repairs: the value of the first kept group of a code, a handle, behind a marker; nothing when there
  /// is none.
  std::optional<std::int64_t> handleBehind(std::wstring_view marker, int code) const;
  void setHandleBehind(std::wstring_view marker, int code, std::int64_t handle);

 private:
  KvDbSharedText type_;
};

/// Opens the object of an id. Failures: eNullObjectId, eWasErased (unless `openErased`), eWasOpenForWrite,
/// eWasOpenForRead (when write is asked), eUnknownHandle for an id without an object.
Kvad::ErrorStatus kvdbOpenAny(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode,
                              bool openErased = false);

/// The same with a class: eNotThatKindOfClass, and the object stays closed, when it is of another one.
template <class T>
Kvad::ErrorStatus kvdbOpenObject(T*& object, KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForRead,
                                 bool openErased = false) {
  object = nullptr;
  KvDbObject* any = nullptr;
  if (auto status = kvdbOpenAny(any, id, mode, openErased); status != Kvad::eOk) return status;
  object = T::cast(any);
  if (object) return Kvad::eOk;
  any->close();
  return Kvad::eNotThatKindOfClass;
}

/// The name of a symbol table record; empty for any other id.
CString kvdbRecordName(KvDbObjectId id);
/// The same without a copy; good until the record gets another name.
std::wstring_view kvdbRecordNameView(KvDbObjectId id);

/// In a class whose fields stand in a table `kFields` of KvDbField rows: the four calls that follow from it.
#define KVDB_FIELDS_DECLARE                                                                             \
 public:                                                                                                \
  void dwgOutFields(KvDbDwgFiler& filer) const override;                                                \
  void dwgInFields(KvDbDwgFiler& filer) override;                                                       \
  void dxfOutFields(KvDxfWriter& writer) const override;                                                \
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override; \
  bool knowsMarker(std::wstring_view marker) const override;                                            \
                                                                                                        \
 private:                                                                                               \
  static const KvDbField kFields[];

#define KVDB_FIELDS_DEFINE(type, base)                                                                      \
  void type::dwgOutFields(KvDbDwgFiler& filer) const {                                                      \
    base::dwgOutFields(filer);                                                                              \
    kvdbDwgOut(*this, kFields, filer);                                                                      \
  }                                                                                                         \
  void type::dwgInFields(KvDbDwgFiler& filer) {                                                             \
    base::dwgInFields(filer);                                                                               \
    kvdbDwgIn(*this, kFields, filer);                                                                       \
  }                                                                                                         \
  void type::dxfOutFields(KvDxfWriter& writer) const {                                                      \
    base::dxfOutFields(writer);                                                                             \
    kvdbDxfOut(*this, kFields, writer);                                                                     \
  }                                                                                                         \
  bool type::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {       \
    return kvdbDxfIn(*this, kFields, group, marker, resolver) || base::dxfInGroup(group, marker, resolver); \
  }                                                                                                         \
  bool type::knowsMarker(std::wstring_view marker) const {                                                  \
    return kvdbHasMarker(kFields, marker) || base::knowsMarker(marker);                                     \
  }
