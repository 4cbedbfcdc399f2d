#pragma once
// Dictionaries (names to objects), records of free groups, and groups of entities.
#include <memory>
#include <vector>

#include "host/database/dbobject.h"
#include "host/database/fields.h"

class KvDbDictionaryIterator;

/// Names to objects, in the order of their adding. Names compare without regard to case.
class KvDbDictionary : public KvDbObject {
  KVRX_DECLARE(KvDbDictionary)
 public:
  struct Entry {
    CString name;
    KvDbObjectId id;
    bool isHard = false;  ///< the entry's object is nothing without the dictionary
  };

  /// eKeyNotFound.
  Kvad::ErrorStatus getAt(const wchar_t* name, KvDbObjectId& id) const;
  bool has(const wchar_t* name) const;
  /// Takes the object over under that name, in place of an object that had it (which is erased). The object
  /// must be in no drawing yet; it is open for write afterwards. eInvalidName, eNullObjectPointer.
  Kvad::ErrorStatus setAt(const wchar_t* name, KvDbObject* object, KvDbObjectId& id);
  /// The name goes, the object is left as it is. eKeyNotFound.
  Kvad::ErrorStatus remove(const wchar_t* name);
  Kvad::ErrorStatus remove(KvDbObjectId id);
  /// The name of an object; empty when it isn't here.
  CString nameAt(KvDbObjectId id) const;
  int numEntries() const;
  /// For copies: an object that is in the drawing already.
  void addCopied(const CString& name, KvDbObjectId id);
  /// Entries of objects that aren't erased.
  std::vector<Entry> entries() const;
  /// For repairs: drops the entries whose object isn't in the drawing, and answers their names.
  std::vector<CString> dropDangling();
  /// Owned by the caller.
  std::unique_ptr<KvDbDictionaryIterator> newIterator() const;
  bool isTreatElementsAsHard() const { return isHardOwner_; }

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 private:
  std::vector<Entry>::iterator find(const wchar_t* name);

  std::vector<Entry> entries_;
  CString pendingName_;  // of the entry that is being read
  bool isHardOwner_ = false;
  std::int16_t mergeStyle_ = 1;
};

class KvDbDictionaryIterator {
 public:
  explicit KvDbDictionaryIterator(std::vector<KvDbDictionary::Entry> entries)
      : entries_(std::move(entries)) {}
  bool done() const { return at_ >= entries_.size(); }
  void next() { ++at_; }
  const wchar_t* name() const { return entries_[at_].name; }
  KvDbObjectId objectId() const { return entries_[at_].id; }

 private:
  std::vector<KvDbDictionary::Entry> entries_;
  std::size_t at_ = 0;
};

/// A record of free groups.
class KvDbXrecord : public KvDbObject {
  KVRX_DECLARE(KvDbXrecord)
 public:
  /// The content as a chain owned by the caller; null when it is empty.
  Kvad::ErrorStatus rbChain(resbuf** chain) const;
  /// Replaces the content by a copy of the chain. eInvalidInput for a code that no record can hold, with
  /// nothing changed.
  Kvad::ErrorStatus setFromRbChain(const resbuf& chain);

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 private:
  std::vector<KvDbStoredGroup> groups_;
  std::int16_t mergeStyle_ = 1;
  bool mergeStyleIsRead_ = false;
};

/// A named group of entities; it is a persistent reactor of its members.
class KvDbGroup : public KvDbObject {
  KVRX_DECLARE(KvDbGroup)
 public:
  /// The name under which the group stands in its dictionary.
  CString getName() const;
  const CString& description() const { return description_; }
  bool isSelectable() const { return isSelectable_; }
  /// Whether picking one member selects all.
  void setSelectable(bool isSelectable);
  void setDescription(const CString& text);
  /// Members that aren't erased, in order.
  KvDbObjectIdArray allEntityIds() const;
  Kvad::ErrorStatus append(KvDbObjectId id);
  /// eKeyNotFound.
  Kvad::ErrorStatus remove(KvDbObjectId id);
  void clear();
  /// Moves `count` members that follow one another, the first of them at `from`, so that it comes to stand at
  /// `to`; places are counted from 0 among the members that aren't erased. eInvalidIndex.
  Kvad::ErrorStatus move(int from, int to, int count = 1);
  /// The last becomes the first.
  void reverse();

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 private:
  CString description_;
  bool isUnnamed_ = false;
  bool isSelectable_ = true;
  KvDbObjectIdArray members_;
};
