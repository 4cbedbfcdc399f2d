#pragma once
// Extended data of one application on one entity, and records below the named objects dictionary, as chains
// that can be read, added to and written back.
//
// The classes answer 1 for success and 0 for failure; nothing but RegisterApp tells the user. Values are told
// by group codes; a code that can't hold a value of the given sort is a failure, and so is a number that
// isn't finite: nothing changes.
#include "host/base/kvds.h"
#include "host/database/dictionary.h"
#include "host/database/objectid.h"
#include "module/core/app_names.h"
#include "platform/text/containers.h"

class KvDbDatabase;

/// What an ImEntityXData is for. One that writes only begins with an empty chain and replaces what the
/// application had.
enum IM_XDATA_ACESS { IM_XDATA_READ = 0, IM_XDATA_WRITE = 1, IM_XDATA_READWRITE = 2 };

/// An array of pointers that owns what they point to. RemoveAll deletes from the front.
template <class T>
class ImPtrArray : public CArray<T*, T*> {
 public:
  ImPtrArray() = default;
  ~ImPtrArray() { RemoveAll(); }
  ImPtrArray(const ImPtrArray&) = delete;
  ImPtrArray& operator=(const ImPtrArray&) = delete;
  void RemoveAll() {
    for (T* item : *this) delete item;
    CArray<T*, T*>::RemoveAll();
  }
};

/// One or two records of a chain that belongs to whoever made the item; good as long as that chain is
/// unchanged. A getter gives its neutral value for a null record and for one of another sort.
class MEK_API ImXDataItem {
 public:
  explicit ImXDataItem(resbuf* firstRecord) : first(firstRecord), second(nullptr) {}
  ImXDataItem(resbuf* firstRecord, resbuf* secondRecord) : first(firstRecord), second(secondRecord) {}

  double getFirstDouble() const;
  double getSecondDouble() const;
  /// 16 bits.
  int getFirstInt() const;
  int getSecondInt() const;
  /// 32 bits.
  long getFirstLong() const;
  long getSecondLong() const;
  /// Null does nothing.
  void getFirstName(long long name[2]) const;
  void getSecondName(long long name[2]) const;
  CString getFirstString() const;
  CString getSecondString() const;

  resbuf* first;
  resbuf* second;
};

class MEK_API ImXDataItemPtrArray : public ImPtrArray<ImXDataItem> {};

/// The view of one application's data on one entity. Invalid after a failed construction and after
/// MakeInvalidate, and then refuses everything.
class MEK_API ImEntityXData : public CObject {
 public:
  KORVANE_DYNAMIC(ImEntityXData, CObject)
  static const CRuntimeClass* _GetBaseClass() { return CObject::GetThisClass(); }

  /// Registers the application. Invalid for a null name and an unknown application; an entity that can't be
  /// opened gives an empty chain.
  ImEntityXData(long long const name[2], IM_APPLICATION app, IM_XDATA_ACESS access);
  ~ImEntityXData() override;
  ImEntityXData(const ImEntityXData&) = delete;
  ImEntityXData& operator=(const ImEntityXData&) = delete;

  // Changes the first record of the code, or adds one.
  int AppendXData(int value, int code);
  int AppendXData(double value, int code);
  int AppendXData(CString value, int code);
  // Changes the record behind the first key of that value, or adds key and value. Keys are 1070 records...
  int AppendXData(int key, int value, int code);
  int AppendXData(int key, double value);
  int AppendXData(int key, CString value, int code);
  // ... or texts of `keyCode`.
  int AppendXData(CString key, int value, int code, int keyCode);
  int AppendXData(CString key, double value, int keyCode);
  int AppendXData(CString key, CString value, int code, int keyCode);
  /// Adds a copy as a chunk, always. Its length is kept in 16 bits: of a longer one just the first
  /// `size` % 65536 bytes count. 0 for null.
  int AppendXData(char* data, unsigned int size);

  /// Writes the chain to the entity, in place of what the application had there; other applications' data
  /// stay. Once only: the chain is empty afterwards. 0 when the entity can't be opened for write; 1
  /// otherwise, also when the host refuses what the chain holds (a code that extended data can't have).
  int AttachToEntity();
  /// Fills `items` with the records behind the application's name, of an ImXRecord with those of its content
  /// without the first `skip` (elsewhere without effect). With `paired` two records make an item, and a last
  /// odd one is dropped. 0 when there is no record.
  int ReadXData(ImXDataItemPtrArray& items, int paired, int skip);
  void MakeInvalidate();
  KvDbObjectId GetObjectId() const { return m_objectId; }

 protected:
  /// Only while the chain has no tail: what has been read or begun isn't read again.
  bool CheckReadable() const;
  bool CheckWriteable() const;
  /// Takes the chain over; null gives 0.
  int Link(resbuf* fresh);
  /// Takes over what was read.
  void SetChain(resbuf* head);
  void ReleaseChain();

  IM_XDATA_ACESS m_access;
  KvDbObjectId m_objectId;
  CString m_appName;
  resbuf* m_head = nullptr;
  resbuf* m_tail = nullptr;
  int m_valid = 1;

 private:
  resbuf* m_attached = nullptr;  // what has been written: m_tail may still point into it
};

/// A record below the named objects dictionary, by its path ("FOLDER\\RECORD").
class MEK_API ImXRecord : public ImEntityXData {
 public:
  KORVANE_DYNAMIC(ImXRecord, ImEntityXData)
  static const CRuntimeClass* _GetBaseClass() { return ImEntityXData::GetThisClass(); }

  /// With `create` dictionaries and record are made where they are missing. A null database is the working
  /// one.
  ImXRecord(CString path, int create, KvDbDatabase* db);
  /// Writes the chain to the record. 0 for an empty chain.
  int Modify();
  /// Erases the record.
  int Delete();

 private:
  long long m_ownerName[2] = {0, 0};
  CString m_key;
};

/// 1 when the name stands in the table of applications or could be registered; tells the user otherwise.
MEK_API int RegisterApp(CString name);

/// Removes the data of one application (without regard to case), or of all, from an object. 1 on success, and
/// when it has none.
MEK_API int IM_DeleteXData(KvDbObjectId id, CString appName);
MEK_API int IM_DeleteAllXDatas(KvDbObjectId id);

/// Finds a dictionary or, with `isXrecord`, a record by its path below the named objects dictionary, and the
/// dictionary that owns it (`owner` may be null). With `create` what is missing is made; an entry of another
/// class, or one that can't be opened, is never replaced. On 0 both names are (0,0).
MEK_API int IM_GetDictEntFromName(CString path, long long name[2], int create, long long owner[2],
                                  KvDbDatabase* db, int isXrecord);
/// The ids from the iterator's place on, in the order of their handles. 0 for null.
MEK_API int IM_DictIteratorCollected(KvDbDictionaryIterator* it, KvArray<KvDbObjectId>& ids);
/// The objects that are told of the object's changes, in order.
MEK_API void IM_GetPersistentReactors(KvDbObject* obj, KvArray<KvDbObjectId>& ids);
