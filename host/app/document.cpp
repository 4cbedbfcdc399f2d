#include "host/app/document.h"

#include <algorithm>

#include "host/base/context.h"
#include "host/editor/editor.h"
#include "host/editor/selection.h"

KvApDocument::KvApDocument(std::unique_ptr<KvDbDatabase> database, CString fileName)
    : database_(std::move(database)), fileName_(std::move(fileName)) {}

KvApDocManager::~KvApDocManager() {
  if (current_) kvdbHostApplicationServices()->setWorkingDatabase(nullptr);
}

KvEdInputPointManager* KvApDocument::inputPointManager() const {
  KvEdEditor* editor = KvHostContext::current().editor;
  return editor ? &editor->inputPoints() : nullptr;
}

Kvad::ErrorStatus KvApDocument::setPreviousSelectionSet(const kvds_name set) {
  return kvedSetPreviousSelection(database_.get(), set);
}

std::unique_ptr<KvApDocumentIterator> KvApDocManager::newKvApDocumentIterator() const {
  std::vector<KvApDocument*> list;
  for (const auto& document : documents_) list.push_back(document.get());
  return std::make_unique<KvApDocumentIterator>(std::move(list));
}

Kvad::ErrorStatus KvApDocManager::setCurDocument(KvApDocument* document) {
  if (!has(document)) return Kvad::eNoDocument;
  current_ = document;
  kvdbHostApplicationServices()->setWorkingDatabase(document->database());
  return Kvad::eOk;
}

Kvad::ErrorStatus KvApDocManager::lockDocument(KvApDocument* document, KvAp::DocLockMode, const wchar_t*,
                                               const wchar_t*, bool) {
  if (!has(document)) return Kvad::eNoDocument;
  ++document->lockCount_;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvApDocManager::unlockDocument(KvApDocument* document) {
  if (!has(document)) return Kvad::eNoDocument;
  if (document->lockCount_ == 0) return Kvad::eNotLocked;
  --document->lockCount_;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvApDocManager::setUndoMark(const wchar_t*) {
  return current_ ? Kvad::eOk : Kvad::eNoDocument;
}

Kvad::ErrorStatus KvApDocManager::beginUndoGroup() {
  if (!current_) return Kvad::eNoDocument;
  KvDbUndoRecorder& undo = current_->database()->undoRecorder();
  undo.beginGroup();
  undo.setSavePoint();
  ++current_->openUndoGroups_;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvApDocManager::undoGroup() {
  if (!current_) return Kvad::eNoDocument;
  if (current_->openUndoGroups_ == 0) return Kvad::eNothingHappened;
  --current_->openUndoGroups_;
  KvDbDatabase& database = *current_->database();
  database.undoRecorder().rollBack();
  database.undoRecorder().endGroup(database.undoRecording());
  return Kvad::eOk;
}

void KvApDocManager::closeUndoGroups(KvApDocument* document) {
  if (!has(document)) return;
  KvDbDatabase& database = *document->database();
  for (; document->openUndoGroups_ > 0; --document->openUndoGroups_) {
    database.undoRecorder().releaseSavePoint();
    database.undoRecorder().endGroup(database.undoRecording());
  }
}

KvApDocument* KvApDocManager::add(std::unique_ptr<KvDbDatabase> database, CString fileName) {
  documents_.push_back(std::make_unique<KvApDocument>(std::move(database), std::move(fileName)));
  setCurDocument(documents_.back().get());
  return documents_.back().get();
}

Kvad::ErrorStatus KvApDocManager::close(KvApDocument* document) {
  if (!has(document)) return Kvad::eNoDocument;
  if (document->lockCount_ > 0) return Kvad::eLockConflict;
  const bool wasCurrent = document == current_;
  std::erase_if(documents_, [&](const auto& one) { return one.get() == document; });
  if (!wasCurrent) return Kvad::eOk;
  current_ = documents_.empty() ? nullptr : documents_.back().get();
  kvdbHostApplicationServices()->setWorkingDatabase(current_ ? current_->database() : nullptr);
  return Kvad::eOk;
}

bool KvApDocManager::has(const KvApDocument* document) const {
  return std::any_of(documents_.begin(), documents_.end(),
                     [&](const auto& one) { return one.get() == document; });
}

KvApDocManager* kvDocManagerPtr() {
  return KvHostContext::current().documents;
}
