#include "host/database/objectid.h"

#include "host/database/dbobject.h"

namespace {

constexpr int kMostDigits = 16;

int hexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<int>(c - L'0');
  if (c >= L'A' && c <= L'F') return static_cast<int>(c - L'A') + 10;
  if (c >= L'a' && c <= L'f') return static_cast<int>(c - L'a') + 10;
  return -1;
}

}  // namespace

KvDbHandle::KvDbHandle(const wchar_t* text) {
  std::uint64_t value = 0;
  for (int digits = 0; text && *text; ++text, ++digits) {
    const int digit = hexDigit(*text);
    if (digit < 0 || digits == kMostDigits) return;
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

bool KvDbObjectId::isValid() const {
  return stub_ && stub_->object && !stub_->isErased;
}
bool KvDbObjectId::isErased() const {
  return stub_ && stub_->isErased;
}
KvDbHandle KvDbObjectId::handle() const {
  return stub_ ? KvDbHandle(stub_->handle) : KvDbHandle();
}
KvDbDatabase* KvDbObjectId::database() const {
  return stub_ ? stub_->database : nullptr;
}
const KvRxClass* KvDbObjectId::objectClass() const {
  return stub_ && stub_->object ? stub_->object->isA() : nullptr;
}
