#pragma once
// A drawing in memory: its objects by id and handle, its tables, its state of change and of undo recording.
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <typeindex>
#include <vector>

#include "host/database/dbobject.h"
#include "host/database/subentpath.h"
#include "host/database/tables.h"
#include "host/database/undo.h"

class KvDbBlockTable;
class KvDbIdMapping;
class KvDbLayoutManager;
class KvDbPendingEntities;
class KvDbTransactionManager;
class KvDbBlockTableRecord;
class KvDbDictionary;
class KvDbHeader;
class KvDbRegAppTable;
class KvDbSymbolTable;

namespace KvDb {
enum DuplicateRecordCloning : int;
}

/// The symbol tables of a drawing, in the order in which files hold them.
enum class KvDbTable : std::uint8_t {
  Viewport,
  Linetype,
  Layer,
  TextStyle,
  View,
  UCS,
  RegApp,
  DimStyle,
  Block
};
inline constexpr int kKvDbTableCount = 9;

/// The version of a drawing file. Values grow with the years.
enum class KvDbFileVersion : std::uint8_t {
  Unknown,
  R12,
  R13,
  R14,
  R2000,
  R2004,
  R2007,
  R2010,
  R2013,
  R2018
};

/// What a drawing file carries beside its objects; kept so that saving loses nothing.
struct KvDbFileExtras {
  struct Variable {
    CString name;  // with its `$`
    std::vector<KvDbStoredGroup> groups;
  };
  struct Section {
    CString name;
    std::vector<KvDbStoredGroup> groups;  // all between the section's name and its end
  };
  KvDbFileVersion version = KvDbFileVersion::R2018;
  CString codePage = L"ANSI_936";
  std::vector<Variable> header;
  std::vector<KvDbStoredGroup> classes;
  std::vector<Section> otherSections;  // behind the known ones, in order
  std::vector<CString> comments;       // groups 999 at the file's head

  Variable* find(const wchar_t* name);
  const Variable* find(const wchar_t* name) const { return const_cast<KvDbFileExtras*>(this)->find(name); }
};

/// Told of every object just before it changes, comes into being, or gets another state by undo.
class KvDbChangeObserver {
 public:
  virtual ~KvDbChangeObserver() = default;
  virtual void objectChanges(KvDbStub& stub) = 0;
};

/// Something that others keep with a drawing; it goes with it.
class KvDbAttachment {
 public:
  virtual ~KvDbAttachment() = default;
};

class KvDbDatabase {
 public:
  /// With `buildDefaultDrawing` the tables that every drawing needs are there; without it the drawing is
  /// empty and only good for being read into.
  explicit KvDbDatabase(bool buildDefaultDrawing = true, bool noDocument = false);
  ~KvDbDatabase();
  KvDbDatabase(const KvDbDatabase&) = delete;
  KvDbDatabase& operator=(const KvDbDatabase&) = delete;

  /// Takes the object over, gives it the next free handle and leaves it open for write.
  KvDbObjectId addObject(KvDbObject* object, KvDbObjectId owner);
  /// For readers: the same under the handle that the file gives, left closed. A handle that is taken, or 0,
  /// is replaced by a free one; `isReplaced` tells.
  KvDbObjectId addAsRead(KvDbObject* object, KvDbHandle handle, bool* isReplaced = nullptr);
  /// While a file is being read, objects that it doesn't name itself get their handles at the end, when those
  /// of the file are all known.
  void beginReading() { isReading_ = true; }
  /// The id of a handle that an object bears; null when nothing bears it.
  KvDbObjectId idFromHandle(KvDbHandle handle) const;
  /// The id of a handle, made when missing, so that a reference may be kept before (or without) its object
  /// being there. Null for 0.
  KvDbObjectId referenceTo(KvDbHandle handle);
  /// All ids that bear an object, erased ones included, in the order of their making.
  std::vector<KvDbObjectId> allObjects() const;
  std::size_t objectCount() const { return placed_.size(); }
  /// Whether an object that isn't erased needs this one. Looks at every object of the drawing.
  bool isReferenced(KvDbObjectId id) const;
  /// Takes those ids out that something needs, counting what an id of the array itself needs as needed.
  void purge(KvDbObjectIdArray& ids) const;
  /// The object added last of those that a test on its stub accepts; null when there is none.
  template <class Test>
  KvDbObjectId newest(const Test& test) const {
    for (auto at = placed_.rbegin(); at != placed_.rend(); ++at)
      if (test(**at)) return KvDbObjectId(*at);
    return {};
  }
  /// Larger than every handle in the drawing.
  std::uint64_t handleSeed() const { return nextHandle_; }
  /// The seed for a file: larger than every handle that isn't erased, and not below the one of the file that
  /// was read, so that what was undone leaves no trace.
  std::uint64_t savedHandleSeed() const;
  void setSeedAsRead(std::uint64_t seed) {
    seedAsRead_ = seed;
    raiseHandleSeed(seed);
  }
  void raiseHandleSeed(std::uint64_t seed) { nextHandle_ = seed > nextHandle_ ? seed : nextHandle_; }

  KvDbObjectId tableId(KvDbTable table) const { return tables_[static_cast<std::size_t>(table)]; }
  void setTableId(KvDbTable table, KvDbObjectId id) { tables_[static_cast<std::size_t>(table)] = id; }
  KvDbObjectId blockTableId() const { return tableId(KvDbTable::Block); }
  KvDbObjectId layerTableId() const { return tableId(KvDbTable::Layer); }
  KvDbObjectId linetypeTableId() const { return tableId(KvDbTable::Linetype); }
  KvDbObjectId textStyleTableId() const { return tableId(KvDbTable::TextStyle); }
  KvDbObjectId dimStyleTableId() const { return tableId(KvDbTable::DimStyle); }
  KvDbObjectId regAppTableId() const { return tableId(KvDbTable::RegApp); }
  Kvad::ErrorStatus getRegAppTable(KvDbRegAppTable*& table, KvDb::OpenMode mode) const;
  Kvad::ErrorStatus getBlockTable(KvDbBlockTable*& table, KvDb::OpenMode mode) const;
  KvDbObjectId namedObjectsDictionaryId() const { return namedObjects_; }
  void setNamedObjectsDictionaryId(KvDbObjectId id) { namedObjects_ = id; }
  Kvad::ErrorStatus getNamedObjectsDictionary(KvDbDictionary*& dictionary, KvDb::OpenMode mode) const;
  /// A new, empty table of a kind.
  static std::unique_ptr<KvDbSymbolTable> makeTable(KvDbTable table);
  /// For readers: a record that something names and no table has. Tables that are missing come into being.
  KvDbObjectId makeRecordAsRead(KvDbTable table, const wchar_t* name);
  /// The record of a name in a table; null when there is none.
  KvDbObjectId recordId(KvDbTable table, const wchar_t* name) const;

  KvDbObjectId modelSpaceId() const { return recordId(KvDbTable::Block, L"*Model_Space"); }
  KvDbObjectId paperSpaceId() const { return recordId(KvDbTable::Block, L"*Paper_Space"); }
  /// Where new entities go: model space, or the current layout's block.
  KvDbObjectId currentSpaceId() const {
    if (currentSpace_.isValid()) return currentSpace_;
    return tilemode() ? modelSpaceId() : paperSpaceId();
  }
  void setCurrentSpace(KvDbObjectId block) { currentSpace_ = block; }
  KvDbObjectId layerZero() const { return recordId(KvDbTable::Layer, L"0"); }
  KvDbObjectId byLayerLinetype() const { return recordId(KvDbTable::Linetype, L"ByLayer"); }
  KvDbObjectId byBlockLinetype() const { return recordId(KvDbTable::Linetype, L"ByBlock"); }
  KvDbObjectId continuousLinetype() const { return recordId(KvDbTable::Linetype, L"Continuous"); }

  /// Header variables by name (header.h).
  KvDbHeader& header() const;
  // Header variables that entities and commands need most. A record that isn't there any more counts as the
  // standard one. Setting a record: eNullObjectId, eWrongDatabase, eWrongObjectType, eWasErased; a scale or
  // size that isn't above 0: eInvalidInput.
  KvDbObjectId clayer() const;
  Kvad::ErrorStatus setClayer(KvDbObjectId id);
  /// The record ByLayer or ByBlock where these are meant.
  KvDbObjectId celtype() const;
  Kvad::ErrorStatus setCeltype(KvDbObjectId id);
  KvCmEntityColor cecolor() const;
  /// eNotApplicable for a colour of red, green and blue, which files cannot hold there.
  Kvad::ErrorStatus setCecolor(const KvCmEntityColor& color);
  double celtscale() const;
  Kvad::ErrorStatus setCeltscale(double scale);
  KvDb::LineWeight celweight() const;
  Kvad::ErrorStatus setCelweight(KvDb::LineWeight weight);
  KvDbObjectId dimstyle() const;
  /// Its variables become the current ones as well.
  Kvad::ErrorStatus setDimstyle(KvDbObjectId id);
  /// The current dimension variables become those of a style; which style is current stays.
  Kvad::ErrorStatus setDimstyleData(KvDbObjectId id);
  KvDbObjectId textstyle() const;
  Kvad::ErrorStatus setTextstyle(KvDbObjectId id);
  double ltscale() const;
  Kvad::ErrorStatus setLtscale(double scale);
  double thickness() const;
  Kvad::ErrorStatus setThickness(double thickness);
  double elevation() const;
  Kvad::ErrorStatus setElevation(double elevation);
  double textsize() const;
  Kvad::ErrorStatus setTextsize(double size);
  /// True while model space is shown, false for a layout.
  bool tilemode() const;
  Kvad::ErrorStatus setTilemode(bool isModel);
  bool isApplicationKnown(const CString& name) const { return !recordId(KvDbTable::RegApp, name).isNull(); }

  /// The content of a drawing file, strictly read, into a drawing made without default content; the last
  /// three arguments are for the signature. Statuses of kvdbReadDrawing (host/io/drawing_file.h, where both
  /// stand).
  Kvad::ErrorStatus readDwgFile(const wchar_t* file, int share = 1, bool convertCodePage = false,
                                const wchar_t* password = nullptr);
  /// In the form that goes with the name; whole or not at all. Statuses of kvdbSaveDrawing.
  Kvad::ErrorStatus saveAs(const wchar_t* file) const;

  /// The folder of the file that the drawing was read from: what it refers to is looked for there. Native;
  /// empty for one that was read from no file.
  const std::filesystem::path& folder() const { return *folder_; }
  const std::shared_ptr<const std::filesystem::path>& sharedFolder() const { return folder_; }
  void setFolder(std::filesystem::path folder) {
    folder_ = std::make_shared<const std::filesystem::path>(std::move(folder));
  }

  KvDbFileExtras& extras() { return extras_; }
  const KvDbFileExtras& extras() const { return extras_; }
  /// Gives a drawing that was read what files need and this one lacked: tables, layer 0, model space, the
  /// root dictionary.
  void completeAfterReading();

  KvDbUndoRecorder& undoRecorder() { return undo_; }
  KvDbTransactionManager& transactionManager();
  KvDbLayoutManager& layoutManager();
  /// An object is about to change.
  void noteChange(KvDbStub& stub) {
    if (isUndoRecording_ || undo_.hasSavePoint()) undo_.noteChange(stub);
    noteModified();
    tellObservers(stub);
  }
  /// Observers are not owned.
  void addChangeObserver(KvDbChangeObserver* observer) { observers_.push_back(observer); }
  void removeChangeObserver(KvDbChangeObserver* observer) { std::erase(observers_, observer); }
  void tellObservers(KvDbStub& stub) {
    for (KvDbChangeObserver* observer : observers_) observer->objectChanges(stub);
  }
  /// The drawing's one attachment of a class, made when missing.
  template <class T>
  T& attachment() {
    auto& held = attachments_[std::type_index(typeid(T))];
    if (!held) held = std::make_unique<T>();
    return static_cast<T&>(*held);
  }

  /// The whole drawing into another one, fresh and empty or as a new drawing is: objects keep their handles,
  /// and what the other held goes. eWrongDatabase for itself, eNotApplicable for one that holds entities.
  Kvad::ErrorStatus wblock(KvDbDatabase& into) const;
  /// A new drawing, owned by the caller, with copies of entities in its model space, moved so that `base`
  /// comes to the origin; of a block with its origin. eNullObjectId, eWrongDatabase.
  Kvad::ErrorStatus wblock(KvDbDatabase*& output, const KvDbObjectIdArray& ids, const KvGePoint3d& base);
  Kvad::ErrorStatus wblock(KvDbDatabase*& output, KvDbObjectId block);
  /// The other drawing's model space as a block of this one; its base point becomes the block's origin. A
  /// block of that name gets the new content. What the entities need comes along; of records that both have,
  /// this drawing's hold. Without `preserveSource` the other drawing is of no use afterwards. eInvalidName,
  /// eWrongDatabase.
  Kvad::ErrorStatus insert(KvDbObjectId& block, const wchar_t* name, KvDbDatabase* source,
                           bool preserveSource = true);
  /// The same with the content going to model space, through a transform. eWrongDatabase.
  Kvad::ErrorStatus insert(const KvGeMatrix3d& transform, KvDbDatabase* source, bool preserveSource = true);
  Kvad::ErrorStatus wblockCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                       KvDbIdMapping& mapping, KvDb::DuplicateRecordCloning cloning);
  Kvad::ErrorStatus deepCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                     KvDbIdMapping& mapping);

  /// A polyline, a reference with attributes or a block that kvdbEntMake has begun; null when there is none.
  KvDbPendingEntities* pendingEntities() { return pending_.get(); }
  void setPendingEntities(std::unique_ptr<KvDbPendingEntities> pending);
  bool isBeingMade(KvDbObjectId id) const;
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
  /// The living drawing of that number; null when there is none.
  static KvDbDatabase* ofSerial(std::uint32_t serial);
  /// Ties an object that stands in no table to a stub of its owner's.
  static void bind(KvDbStub& stub, KvDbObject& object) { object.stub_ = &stub; }

  static constexpr int kObjectsChanged = 1;
  static constexpr int kVariablesChanged = 4;

 private:
  /// Handles to stubs, in pages: handles of a drawing stand close together.
  class HandleMap {
   public:
    KvDbStub* find(std::uint64_t handle) const;
    void put(std::uint64_t handle, KvDbStub* stub);

   private:
    static constexpr int kPageBits = 10;
    using Page = std::vector<KvDbStub*>;
    std::unordered_map<std::uint64_t, Page> pages_;
  };
  /// Without any object, table or handle: only good for being filled.
  void empty();
  KvDbStub& newStub(std::uint64_t handle);
  KvDbStub& newFreeStub();
  void numberTheUnnumbered();
  void place(KvDbStub& stub, KvDbObject* object);
  void ensureTable(KvDbTable table);
  void ensureRecord(KvDbTable table, const wchar_t* name);
  void ensureSpaces();

  std::deque<KvDbStub> stubs_;
  std::vector<KvDbStub*> placed_;  // stubs that bear an object, in the order in which they got it
  HandleMap byHandle_;
  std::uint64_t nextHandle_ = 1;
  std::uint64_t seedAsRead_ = 0;
  std::vector<KvDbStub*> unnumbered_;  // stubs that wait for their handle
  bool isReading_ = false;
  KvDbObjectId tables_[kKvDbTableCount];
  KvDbObjectId namedObjects_;
  KvDbObjectId currentSpace_;
  std::unique_ptr<KvDbPendingEntities> pending_;
  std::unique_ptr<KvDbTransactionManager> transactions_;
  std::unique_ptr<KvDbLayoutManager> layouts_;
  KvDbFileExtras extras_;
  std::shared_ptr<const std::filesystem::path> folder_ = std::make_shared<const std::filesystem::path>();
  std::unique_ptr<KvDbHeader> header_;
  int modifiedWord_ = 0;
  int openCount_ = 0;
  std::uint32_t serial_;
  bool isUndoRecording_ = true;
  KvDbUndoRecorder undo_;
  std::vector<KvDbChangeObserver*> observers_;
  std::map<std::type_index, std::unique_ptr<KvDbAttachment>> attachments_;
};

/// What the current host offers to the database: above all the working drawing.
class KvDbHostApplicationServices {
 public:
  virtual ~KvDbHostApplicationServices() = default;
  /// Null when no drawing is open.
  KvDbDatabase* workingDatabase() const { return workingDatabase_; }
  virtual void setWorkingDatabase(KvDbDatabase* database) { workingDatabase_ = database; }
  /// A function's failure in words, for the command line; without a host it goes nowhere.
  virtual void reportFailure(const CString&) {}
  /// Where a file of the host's own (linetypes, templates, ...) lies: the path itself when there is such a
  /// file, then beside the working drawing, then where the host keeps them; empty when it is nowhere.
  virtual CString findFile(const CString& name) { return name; }
  /// The drawing looks different from what is shown.
  virtual void graphicsChanged(KvDbDatabase*) {}
  /// An entity or a part of it is to be shown as highlighted, or no longer so.
  virtual void setHighlighted(KvDbObjectId, const KvDbFullSubentPath&, bool) {}
  /// What the next call for the last input is to give: the name of a block that was closed.
  virtual void setLastInput(const CString&) {}

 private:
  KvDbDatabase* workingDatabase_ = nullptr;
};

/// Never null: without a host it knows no drawing.
KvDbHostApplicationServices* kvdbHostApplicationServices();

/// The given drawing, or the working one for null; null when there is neither.
KvDbDatabase* kvdbDatabaseOrWorking(KvDbDatabase* database);

/// Sets the modified word and answers the old one; 0 for null.
int kvdbSetDbmod(KvDbDatabase* database, int value);

/// The record of a symbol table of the working drawing as a chain (0, 2, 70, ...), owned by the caller; null
/// when there is none. Tables by the type of their records in files ("LAYER", "STYLE", "BLOCK", ...); names
/// compare without regard to case. `setNext` is for the signature: no call walks a table.
resbuf* kvdbTblSearch(const wchar_t* table, const wchar_t* name, int setNext);

/// Registers an application in the working drawing. RTNORM, also when it is there already; RTERROR for a name
/// that no table takes or without a drawing.
int kvdbRegApp(const wchar_t* name);
