#include "host/database/filer.h"

void KvDbDwgFiler::writeString(const CString& v) {
  writeUInt32(static_cast<std::uint32_t>(v.GetLength()));
  writeBytes(v.GetString(), static_cast<std::size_t>(v.GetLength()) * sizeof(wchar_t));
}

CString KvDbDwgFiler::readString() {
  const std::uint32_t length = readUInt32();
  std::wstring text(length, L'\0');
  readBytes(text.data(), length * sizeof(wchar_t));
  return CString(std::move(text));
}

void KvDbMemoryFiler::writeId(KvDbObjectId id, KvDbReference) {
  KvDbStub* stub = id.stub();
  writeBytes(&stub, sizeof stub);
}

KvDbObjectId KvDbMemoryFiler::readId(KvDbReference) {
  KvDbStub* stub = nullptr;
  readBytes(&stub, sizeof stub);
  return KvDbObjectId(stub);
}

KvDbObjectId KvDbTranslatingFiler::readId(KvDbReference reference) {
  const KvDbObjectId id = KvDbMemoryFiler::readId(reference);
  if (auto found = map_.find(id); found != map_.end()) return found->second;
  return id.database() == target_ ? id : KvDbObjectId();
}
