#include "host/database/dbobject.h"

#include <cassert>

#include "host/database/database.h"

KVRX_DEFINE_ABSTRACT(KvDbObject, KvRxObject)

KvDbHandle::KvDbHandle(const wchar_t* text) {
  int digits = 0;
  std::uint64_t value = 0;
  for (; text && *text; ++text, ++digits) {
    const wchar_t c = *text;
    const int digit = c >= L'0' && c <= L'9'   ? c - L'0'
                      : c >= L'A' && c <= L'F' ? c - L'A' + 10
                      : c >= L'a' && c <= L'f' ? c - L'a' + 10
                                               : -1;
    if (digit < 0 || digits == 16) return;
    value = value << 4 | static_cast<std::uint64_t>(digit);
  }
  value_ = value;
}

CString KvDbHandle::toText() const {
  CString text;
  text.Format(L"%X", value_);
  return text;
}

bool KvDbHandle::getIntoAsciiBuffer(wchar_t* buffer) const {
  const CString text = toText();
  for (int i = 0; i <= text.GetLength(); ++i) buffer[i] = text.GetAt(i);
  return true;
}

bool KvDbObjectId::isValid() const { return stub_ && stub_->object && !stub_->isErased; }
bool KvDbObjectId::isErased() const { return stub_ && stub_->isErased; }
KvDbHandle KvDbObjectId::handle() const { return stub_ ? KvDbHandle(stub_->handle) : KvDbHandle(); }
KvDbDatabase* KvDbObjectId::database() const { return stub_ ? stub_->database : nullptr; }
const KvRxClass* KvDbObjectId::objectClass() const { return stub_ && stub_->object ? stub_->object->isA() : nullptr; }

KvDbObject::~KvDbObject() = default;

Kvad::ErrorStatus KvDbObject::close() {
  if (!stub_) return Kvad::eNotInDatabase;
  if (stub_->isOpenForWrite) {
    stub_->isOpenForWrite = false;
  } else if (stub_->readers > 0) {
    --stub_->readers;
  } else {
    return Kvad::eNotOpenForRead;
  }
  stub_->database->noteClosed();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::upgradeOpen() {
  if (!stub_ || stub_->isOpenForWrite) return Kvad::eOk;
  if (stub_->isErased) return Kvad::eWasErased;
  if (stub_->readers == 0) return Kvad::eNotOpenForRead;
  if (stub_->readers > 1) return Kvad::eHasOpenReaders;
  stub_->readers = 0;
  stub_->isOpenForWrite = true;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::downgradeOpen() {
  if (!stub_) return Kvad::eOk;
  if (!stub_->isOpenForWrite) return Kvad::eWasNotOpenForWrite;
  stub_->isOpenForWrite = false;
  stub_->readers = 1;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::erase(bool erasing) {
  if (!stub_) return Kvad::eNotInDatabase;
  if (!stub_->isOpenForWrite) return Kvad::eNotOpenForWrite;
  if (stub_->isErased == erasing) return erasing ? Kvad::eWasErased : Kvad::eWasNotErased;
  if (auto status = subErase(erasing); status != Kvad::eOk) return status;
  assertWriteEnabled();
  stub_->isErased = erasing;
  return Kvad::eOk;
}

void KvDbObject::assertWriteEnabled() {
  assert(isWriteEnabled());
  if (stub_) stub_->database->noteModified();
}

Kvad::ErrorStatus KvDbObject::subErase(bool) { return Kvad::eOk; }

Kvad::ErrorStatus kvdbOpenAny(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode, bool openErased) {
  object = nullptr;
  KvDbStub* stub = id.stub();
  if (!stub) return Kvad::eNullObjectId;
  if (!stub->object) return Kvad::eUnknownHandle;
  if (stub->isErased && !openErased) return Kvad::eWasErased;
  if (stub->isOpenForWrite) return Kvad::eWasOpenForWrite;
  if (mode == KvDb::kForWrite) {
    if (stub->readers > 0) return Kvad::eWasOpenForRead;
    stub->isOpenForWrite = true;
  } else {
    if (stub->readers == UINT16_MAX) return Kvad::eHasOpenReaders;
    ++stub->readers;
  }
  stub->database->noteOpened();
  object = stub->object;
  return Kvad::eOk;
}
