#pragma once
// Open drawings and their manager.
#include <memory>
#include <vector>

#include "host/base/kvad.h"
#include "host/base/kvds.h"
#include "host/database/database.h"

class KvEdInputPointManager;

namespace KvAp {
/// What a lock allows its holder.
enum DocLockMode {
  kNone = 0,
  kAutoWrite = 1,
  kNotLocked = 2,
  kWrite = 4,
  kProtectedAutoWrite = 0x14,
  kRead = 0x20,
  kXWrite = 0x40
};
}  // namespace KvAp

/// One open drawing.
class KvApDocument {
 public:
  KvApDocument(std::unique_ptr<KvDbDatabase> database, CString fileName);

  KvDbDatabase* database() const { return database_.get(); }
  /// The full path in the product's form; a bare name ("Drawing1.dwg") when it was never saved.
  const CString& fileName() const { return fileName_; }
  void setFileName(CString name) { fileName_ = std::move(name); }
  /// Those who want to know of each point that a prompt receives; one for all documents. Null without a host.
  KvEdInputPointManager* inputPointManager() const;
  /// Makes a copy of a selection set the previous selection here. eKeyNotFound for no such set.
  Kvad::ErrorStatus setPreviousSelectionSet(const kvds_name set);
  /// Locks that are held now.
  int lockCount() const { return lockCount_; }

 private:
  friend class KvApDocManager;
  std::unique_ptr<KvDbDatabase> database_;
  CString fileName_;
  int lockCount_ = 0;
  int openUndoGroups_ = 0;
};

/// Walks the open drawings in the order of their opening. Opening or closing one while walking ends the walk.
class KvApDocumentIterator {
 public:
  explicit KvApDocumentIterator(std::vector<KvApDocument*> documents) : documents_(std::move(documents)) {}
  bool done() const { return at_ >= documents_.size(); }
  void step() { ++at_; }
  /// Null when done.
  KvApDocument* document() const { return done() ? nullptr : documents_[at_]; }

 private:
  std::vector<KvApDocument*> documents_;
  std::size_t at_ = 0;
};

class KvApDocManager {
 public:
  ~KvApDocManager();

  int documentCount() const { return static_cast<int>(documents_.size()); }
  /// Null when nothing is open.
  KvApDocument* curDocument() const { return current_; }
  KvApDocument* mdiActiveDocument() const { return current_; }
  std::unique_ptr<KvApDocumentIterator> newKvApDocumentIterator() const;

  /// Makes it the current one and its drawing the working one. eNoDocument.
  Kvad::ErrorStatus setCurDocument(KvApDocument* document);
  /// Locks nest. The other arguments (global and local command name, whether to prompt) are for the
  /// signature. eNoDocument.
  Kvad::ErrorStatus lockDocument(KvApDocument* document, KvAp::DocLockMode mode = KvAp::kWrite,
                                 const wchar_t* globalName = nullptr, const wchar_t* localName = nullptr,
                                 bool prompt = true);
  /// eNoDocument, eNotLocked.
  Kvad::ErrorStatus unlockDocument(KvApDocument* document);

  /// The beginning of a group of changes that can be taken back as a whole: first a mark with a text for
  /// lists of steps (no list is kept here), then the group. Groups nest. One that is still open is closed
  /// with the command that began it, and its changes stay. eNoDocument.
  Kvad::ErrorStatus setUndoMark(const wchar_t* text);
  Kvad::ErrorStatus beginUndoGroup();
  /// Takes the newest open group back. eNoDocument, eNothingHappened when none is open.
  Kvad::ErrorStatus undoGroup();
  /// For the host: the command that ran in a document has ended.
  void closeUndoGroups(KvApDocument* document);

  /// Takes a drawing over and makes it the current one.
  KvApDocument* add(std::unique_ptr<KvDbDatabase> database, CString fileName);
  /// Closes without saving. The drawing opened last becomes the current one. eNoDocument, eLockConflict while
  /// it is locked.
  Kvad::ErrorStatus close(KvApDocument* document);

 private:
  bool has(const KvApDocument* document) const;

  std::vector<std::unique_ptr<KvApDocument>> documents_;
  KvApDocument* current_ = nullptr;
};

/// The current host's manager; null without a host.
KvApDocManager* kvDocManagerPtr();
