#pragma once
// A drawing in memory: its objects by id and handle, its tables, its state of change and of undo recording.
#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "host/database/dbobject.h"

struct resbuf;
class KvDbRegAppTable;

class KvDbDatabase {
 public:
  /// With `buildDefaultDrawing` the tables that every drawing needs are there; without it the drawing is empty and
  /// only good for being read into.
  explicit KvDbDatabase(bool buildDefaultDrawing = true, bool noDocument = false);
  ~KvDbDatabase();
  KvDbDatabase(const KvDbDatabase&) = delete;
  KvDbDatabase& operator=(const KvDbDatabase&) = delete;

  /// Takes the object over, gives it the next free handle and leaves it open for write.
  KvDbObjectId addObject(KvDbObject* object, KvDbObjectId owner);
  /// The id of a handle; null when nothing bears it.
  KvDbObjectId idFromHandle(KvDbHandle handle) const;

  KvDbObjectId regAppTableId() const { return regAppTable_; }
  Kvad::ErrorStatus getRegAppTable(KvDbRegAppTable*& table, KvDb::OpenMode mode) const;

  /// While recording is off, changes make no undo step. Calls do not nest: the last one holds.
  void disableUndoRecording(bool disable) { isUndoRecording_ = !disable; }
  bool undoRecording() const { return isUndoRecording_; }

  /// The word behind `DBMOD`: 0 unchanged, bit 1 objects changed, bit 4 variables changed.
  int modifiedWord() const { return modifiedWord_; }
  /// The old word.
  int setModifiedWord(int value);
  void noteModified(int bits = kObjectsChanged) { modifiedWord_ |= bits; }

  /// Objects that are open now; every command leaves this as it found it.
  int openCount() const { return openCount_; }
  void noteOpened() { ++openCount_; }
  void noteClosed() { --openCount_; }

  /// Tells this drawing's names from those of every other drawing of the process.
  std::uint32_t serial() const { return serial_; }

  static constexpr int kObjectsChanged = 1;
  static constexpr int kVariablesChanged = 4;

 private:
  void buildDefaultDrawing();

  std::deque<KvDbStub> stubs_;
  std::vector<std::unique_ptr<KvDbObject>> objects_;
  std::unordered_map<std::uint64_t, KvDbStub*> byHandle_;
  std::uint64_t nextHandle_ = 1;
  KvDbObjectId regAppTable_;
  int modifiedWord_ = 0;
  int openCount_ = 0;
  std::uint32_t serial_;
  bool isUndoRecording_ = true;
};

/// What the current host offers to the database: above all the working drawing.
class KvDbHostApplicationServices {
 public:
  virtual ~KvDbHostApplicationServices() = default;
  /// Null when no drawing is open.
  KvDbDatabase* workingDatabase() const { return workingDatabase_; }
  virtual void setWorkingDatabase(KvDbDatabase* database) { workingDatabase_ = database; }

 private:
  KvDbDatabase* workingDatabase_ = nullptr;
};

/// Never null: without a host it knows no drawing.
KvDbHostApplicationServices* kvdbHostApplicationServices();

/// The given drawing, or the working one for null; null when there is neither.
KvDbDatabase* kvdbDatabaseOrWorking(KvDbDatabase* database);

/// Sets the modified word and answers the old one; 0 for null.
int kvdbSetDbmod(KvDbDatabase* database, int value);

/// The record of a symbol table of the working drawing as a chain (0, 2, 70, ...), owned by the caller; null when
/// there is none. Names of tables and records compare without regard to case. With `setNext` the walk of that
/// table starts at the record.
resbuf* kvdbTblSearch(const wchar_t* table, const wchar_t* name, int setNext);

/// Registers an application in the working drawing. RTNORM, also when it is there already; RTERROR for a name that
/// no table takes or without a drawing.
int kvdbRegApp(const wchar_t* name);
