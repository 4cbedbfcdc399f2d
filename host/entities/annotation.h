#pragma once
// Annotative objects: texts, dimensions and the like whose size on paper stays the same, and the scales for
// which they are meant.
//
// Whether an object is annotative stands in its extended data (AcadAnnotative); the scales stand in the
// drawing's list (ACAD_SCALELIST). Which scales an object is attached to stands in a record of its extension
// dictionary; what other programs keep there of their own is read and left as it is.
#include <optional>
#include <vector>

#include "host/database/database.h"

/// Says and sets whether an object is annotative.
class KvDbAnnotativeObjectPE {
 public:
  bool annotative(const KvDbObject* object) const;
  /// The object must be open for write. eNullObjectPointer, eNotOpenForWrite, eNotInDatabase.
  Kvad::ErrorStatus setAnnotative(KvDbObject* object, bool isAnnotative) const;
};

/// The scales that an object is attached to.
class KvDbObjectContextInterface {
 public:
  bool hasContext(const KvDbObject* object, KvDbObjectId scale) const;
  /// In the order of their adding, other programs' last.
  KvDbObjectIdArray contexts(const KvDbObject* object) const;
  /// One that is there already is a success. The object must be open for write. eNullObjectPointer,
  /// eNotOpenForWrite, eNotInDatabase, eWrongDatabase, eWrongObjectType for what is no scale.
  Kvad::ErrorStatus addContext(KvDbObject* object, KvDbObjectId scale) const;
  /// eKeyNotFound for one that isn't attached by this host.
  Kvad::ErrorStatus removeContext(KvDbObject* object, KvDbObjectId scale) const;
};

/// Null for an object that can't be annotative: null, or of another class than texts, dimensions, leaders,
/// hatches, block references, attribute definitions, blocks, and text and dimension styles.
const KvDbAnnotativeObjectPE* kvdbAnnotativeObjectPE(const KvDbObject* object);
/// Null likewise, and for records, which have no scales of their own.
const KvDbObjectContextInterface* kvdbObjectContextInterface(const KvDbObject* object);

/// One scale of a drawing's list: so many paper units stand for so many drawing units.
struct KvDbAnnotationScale {
  CString name;
  double paperUnits = 1, drawingUnits = 1;
};
/// Nothing for an id that is no scale.
std::optional<KvDbAnnotationScale> kvdbAnnotationScaleOf(KvDbObjectId id);

/// The scales of a drawing.
class KvDbObjectContextCollection {
 public:
  explicit KvDbObjectContextCollection(KvDbDatabase& database) : database_(&database) {}
  KvDbObjectIdArray contexts() const;
  /// By name, without regard to case; null when there is none.
  KvDbObjectId getContext(const CString& name) const;
  /// eDuplicateKey, eInvalidName (empty), eInvalidInput for units that aren't above 0.
  Kvad::ErrorStatus addContext(const KvDbAnnotationScale& scale, KvDbObjectId& id);

 private:
  KvDbDatabase* database_;
};

/// The name of the one collection there is.
inline constexpr const wchar_t* kvdbAnnotationScaleCollectionName = L"ACDB_ANNOTATIONSCALES";

class KvDbObjectContextManager {
 public:
  explicit KvDbObjectContextManager(KvDbDatabase& database) : collection_(database) {}
  /// Null for a name that isn't known. Lives as long as the manager.
  KvDbObjectContextCollection* contextCollection(const CString& name);

 private:
  KvDbObjectContextCollection collection_;
};
