#pragma once
// Symbol tables: named records of one kind, found without regard to case, walked in the order they were
// added.
#include <map>
#include <string>
#include <vector>

#include "host/database/dbobject.h"
#include "host/database/fields.h"

class KvDbSymbolTableRecord : public KvDbObject {
  KVRX_DECLARE(KvDbSymbolTableRecord)
 public:
  const CString& getName() const { return name_; }
  /// eInvalidName, eDuplicateRecordName; a record outside a table takes any valid name, one of a block also
  /// an asterisk and a letter ("*U"), which gets its number when the record is added.
  Kvad::ErrorStatus setName(const wchar_t* name);
  /// For records that the host makes itself, whose names ("*Active") no user may give.
  void setNameAsMade(const wchar_t* name) { name_ = name; }
  /// The standard flags of group 70.
  int standardFlags() const { return flags_; }
  bool isDependent() const { return (flags_ & kFromXref) != 0; }

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

  static constexpr int kFromXref = 16;

 protected:
  /// The class's own marker in files.
  virtual const wchar_t* fileMarker() const = 0;
  /// Whether a record outside a table may be called so.
  virtual bool takesName(std::wstring_view name) const;
  std::int16_t flags_ = 0;

 private:
  friend class KvDbSymbolTable;
  CString name_;
};

class KvDbSymbolTable : public KvDbObject {
  KVRX_DECLARE(KvDbSymbolTable)
 public:
  /// Takes the record over and names it in the drawing. eInvalidName, eDuplicateRecordName,
  /// eNotThatKindOfClass: the record stays the caller's. The table must be open for write; the record is open
  /// for write afterwards.
  Kvad::ErrorStatus add(KvDbObjectId& id, KvDbSymbolTableRecord* record);
  Kvad::ErrorStatus add(KvDbSymbolTableRecord* record);

  /// Erased records are not found. eKeyNotFound.
  Kvad::ErrorStatus getAt(const wchar_t* name, KvDbObjectId& id) const;
  bool has(const wchar_t* name) const;
  /// Records in the order they were added, erased ones left out.
  KvDbObjectIdArray records() const;
  /// Class of the records.
  virtual const KvRxClass* recordClass() const = 0;
  std::wstring_view fileTypeView() const override { return L"TABLE"; }
  /// The table's own groups in a file, behind its type and name: handle, owner, the number of records.
  void dxfOutHead(KvDxfWriter& writer) const;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;
  bool knowsMarker(std::wstring_view marker) const override;

  /// A record of a file that is being read, in the drawing already: its name isn't checked, and the same name
  /// may stand twice (the first is found).
  void addAsRead(KvDbSymbolTableRecord& record);
  /// For copies: a record that is in the drawing already, entered as one step of undo.
  void addCopied(KvDbSymbolTableRecord& record);
  /// The next look-up builds the index of names anew, after records changed behind the table's back.
  void forgetIndex() { indexIsValid_ = false; }

 protected:
  /// Whether a record may be added under its name; a table may give it another one.
  virtual bool acceptsName(KvDbSymbolTableRecord& record) const;
  /// The record is in the drawing and open for write.
  virtual void recordAdded(KvDbSymbolTableRecord&) {}

 private:
  friend class KvDbSymbolTableRecord;
  Kvad::ErrorStatus rename(KvDbSymbolTableRecord& record, const CString& name);
  void buildIndex() const;

  mutable std::map<std::wstring, KvDbObjectId, platform::LessNoCase> byName_;
  mutable bool indexIsValid_ = true;
  std::vector<KvDbObjectId> inOrder_;
};

/// True for names that a symbol table takes: not empty, at most 255 characters, none of `<>/\":;?*|,=` and
/// the grave accent, no control characters, no blank at either end. A leading `*` is allowed where
/// `allowAnonymous`.
bool kvdbIsSymbolName(std::wstring_view name, bool allowAnonymous = false);

/// A name of the form `*<letter><number>` that the table doesn't have.
CString kvdbFreeAnonymousName(const KvDbSymbolTable& table, wchar_t letter);

/// A record of the table of application names; every application whose data stand in the drawing has one.
class KvDbRegAppTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbRegAppTableRecord)
 protected:
  const wchar_t* fileMarker() const override { return L"AcDbRegAppTableRecord"; }
};

class KvDbRegAppTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbRegAppTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbRegAppTableRecord::desc(); }
};
