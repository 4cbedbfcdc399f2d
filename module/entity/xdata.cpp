#include "module/entity/xdata.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "host/database/names.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr int kSentinel = -3, kApplicationCode = 1001, kChunkCode = 1004;
constexpr int kKeyCode = 1070, kRealCode = 1040;

// Whether a record of that code can hold the value, and putting it there.
bool fits(int code, int) {
  const KvRbKind kind = kvutRbKind(code);
  return kind == KvRbKind::Short || kind == KvRbKind::Long || kind == KvRbKind::Int64 ||
         kind == KvRbKind::Real;
}
bool fits(int code, double value) {
  return kvutRbKind(code) == KvRbKind::Real && std::isfinite(value);
}
bool fits(int code, const CString&) {
  // A code of 0 would end the list that the record is built from.
  return code != 0 && kvutRbKind(code) == KvRbKind::Text;
}

void put(resbuf& record, int value) {
  switch (kvutRbKind(record.restype)) {
    case KvRbKind::Short:
      record.resval.rint = static_cast<std::int16_t>(value);
      break;
    case KvRbKind::Long:
      record.resval.rlong = value;
      break;
    case KvRbKind::Int64:
      record.resval.mnLongPtr = value;
      break;
    default:
      record.resval.rreal = value;
  }
}
void put(resbuf& record, double value) {
  record.resval.rreal = value;
}
void put(resbuf& record, const CString& value) {
  kvutSetText(&record, value);
}

bool isKey(const resbuf& record, int key) {
  return record.resval.rint == static_cast<std::int16_t>(key);
}
bool isKey(const resbuf& record, const CString& key) {
  return record.resval.rstring && key == record.resval.rstring;
}

bool isApplication(const resbuf& record, const CString& name) {
  return record.restype == kApplicationCode && name.CompareNoCase(record.resval.rstring) == 0;
}

/// The record behind the first key of that value, where it has the code.
template <class Key>
resbuf* behindKey(resbuf* head, int keyCode, const Key& key, int code) {
  for (; head && head->rbnext; head = head->rbnext)
    if (head->restype == keyCode && head->rbnext->restype == code && isKey(*head, key)) return head->rbnext;
  return nullptr;
}

/// A null pointer when the value can't stand under the code.
template <class Value>
resbuf* single(const Value& value, int code) {
  return fits(code, value) ? kvutBuildList(code, value, 0) : nullptr;
}

template <class Key, class Value>
resbuf* keyed(const Key& key, int keyCode, const Value& value, int code) {
  return fits(code, value) && fits(keyCode, key) ? kvutBuildList(keyCode, key, code, value, 0) : nullptr;
}

template <class Value>
bool changeFirst(resbuf* head, const Value& value, int code) {
  resbuf* record = fits(code, value) ? IM_GetSubResbuf(head, code, 1) : nullptr;
  if (record) put(*record, value);
  return record != nullptr;
}

template <class Key, class Value>
bool changeBehind(resbuf* head, const Key& key, int keyCode, const Value& value, int code) {
  if (!fits(code, value) || !fits(keyCode, key)) return false;
  resbuf* record = behindKey(head, keyCode, key, code);
  if (record) put(*record, value);
  return record != nullptr;
}

/// The records that a walk, always one record ahead, marks as the application's own: behind `start` up to
/// `end`. Both null for none. A match on the first record isn't seen, and one on the chain's last application
/// has no end; what isn't cut is replaced when the chain is written.
struct OwnPart {
  resbuf* start = nullptr;
  resbuf* end = nullptr;
};

OwnPart ownPartOf(resbuf* chain, const CString& application) {
  OwnPart part;
  for (resbuf* at = chain; at && at->rbnext; at = at->rbnext) {
    resbuf* next = at->rbnext;
    if (isApplication(*next, application))
      part.start = at;
    else if (next->restype == kApplicationCode && part.start)
      part.end = at;
    else if (!next->rbnext && part.start && part.end)
      part.end = next;
  }
  return part;
}

void cutOut(const OwnPart& part) {
  if (!part.start || !part.end || part.start == part.end) return;
  resbuf* cut = part.start->rbnext;
  part.start->rbnext = part.end->rbnext;
  part.end->rbnext = nullptr;
  kvutRelRb(cut);
}

}  // namespace

ImEntityXData::ImEntityXData(long long const name[2], IM_APPLICATION app, IM_XDATA_ACESS access)
    : m_access(access), m_appName(IM_GetAppName(app, 0)) {
  if (!name || kvds_isNull(name) || m_appName.IsEmpty()) {
    m_valid = 0;
    return;
  }
  kvdbGetObjectId(m_objectId, name);
  if (access == IM_XDATA_WRITE) {
    SetChain(kvutBuildList(kSentinel, kApplicationCode, m_appName, 0));
    return;
  }
  KvDbObject* object = nullptr;
  if (kvdbOpenObject(object, m_objectId, KvDb::kForRead) != Kvad::eOk) return;
  SetChain(object->xData(m_appName));
  object->close();
}

ImEntityXData::~ImEntityXData() {
  kvutRelRb(m_head);
  kvutRelRb(m_attached);
}

bool ImEntityXData::CheckReadable() const {
  return m_valid && (m_access == IM_XDATA_READ || m_access == IM_XDATA_READWRITE) && !m_tail &&
         !m_objectId.isNull();
}

bool ImEntityXData::CheckWriteable() const {
  return m_valid && (m_access == IM_XDATA_WRITE || m_access == IM_XDATA_READWRITE) && !m_objectId.isNull();
}

void ImEntityXData::SetChain(resbuf* head) {
  kvutRelRb(m_head);
  m_head = head;
  m_tail = IM_AddRbToTail(m_head, nullptr);
}

void ImEntityXData::ReleaseChain() {
  SetChain(nullptr);
}

int ImEntityXData::Link(resbuf* fresh) {
  if (!fresh) return 0;
  if (m_tail)
    m_tail->rbnext = fresh;
  else
    m_head = fresh;
  m_tail = IM_AddRbToTail(fresh, nullptr);
  return 1;
}

int ImEntityXData::AppendXData(int value, int code) {
  if (!CheckWriteable()) return 0;
  return changeFirst(m_head, value, code) ? 1 : Link(single(value, code));
}
int ImEntityXData::AppendXData(double value, int code) {
  if (!CheckWriteable()) return 0;
  return changeFirst(m_head, value, code) ? 1 : Link(single(value, code));
}
int ImEntityXData::AppendXData(CString value, int code) {
  if (!CheckWriteable()) return 0;
  return changeFirst(m_head, value, code) ? 1 : Link(single(value, code));
}

int ImEntityXData::AppendXData(int key, int value, int code) {
  if (!CheckWriteable()) return 0;
  return changeBehind(m_head, key, kKeyCode, value, code) ? 1 : Link(keyed(key, kKeyCode, value, code));
}
int ImEntityXData::AppendXData(int key, double value) {
  if (!CheckWriteable()) return 0;
  return changeBehind(m_head, key, kKeyCode, value, kRealCode) ? 1
                                                               : Link(keyed(key, kKeyCode, value, kRealCode));
}
int ImEntityXData::AppendXData(int key, CString value, int code) {
  if (!CheckWriteable()) return 0;
  return changeBehind(m_head, key, kKeyCode, value, code) ? 1 : Link(keyed(key, kKeyCode, value, code));
}

int ImEntityXData::AppendXData(CString key, int value, int code, int keyCode) {
  if (!CheckWriteable()) return 0;
  return changeBehind(m_head, key, keyCode, value, code) ? 1 : Link(keyed(key, keyCode, value, code));
}
int ImEntityXData::AppendXData(CString key, double value, int keyCode) {
  if (!CheckWriteable()) return 0;
  return changeBehind(m_head, key, keyCode, value, kRealCode) ? 1
                                                              : Link(keyed(key, keyCode, value, kRealCode));
}
int ImEntityXData::AppendXData(CString key, CString value, int code, int keyCode) {
  if (!CheckWriteable()) return 0;
  return changeBehind(m_head, key, keyCode, value, code) ? 1 : Link(keyed(key, keyCode, value, code));
}

int ImEntityXData::AppendXData(char* data, unsigned int size) {
  if (!CheckWriteable() || (!data && size > 0)) return 0;
  resbuf* chunk = kvutNewRb(kChunkCode);
  auto* copy = static_cast<char*>(std::malloc(size > 0 ? size : 1));
  if (!chunk || !copy) {
    kvutRelRb(chunk);
    std::free(copy);
    return 0;
  }
  if (size > 0) std::memcpy(copy, data, size);
  chunk->resval.rbinary.clen = static_cast<std::int16_t>(size);
  chunk->resval.rbinary.buf = copy;
  return Link(chunk);
}

int ImEntityXData::AttachToEntity() {
  if (!CheckWriteable()) return 0;
  KvDbObject* object = nullptr;
  if (kvdbOpenObject(object, m_objectId, KvDb::kForWrite) != Kvad::eOk) return 0;
  // Without its name at the head the host would count the records to the application before them.
  if (m_head && m_head->restype != kSentinel && m_head->restype != kApplicationCode) {
    resbuf* named = kvutBuildList(kApplicationCode, m_appName, 0);
    IM_AddRbToTail(named, m_head);
    m_head = named;
  }
  resbuf* all = object->xData(nullptr);
  cutOut(ownPartOf(all, m_appName));
  if (!all)
    all = m_head;
  else if (!IM_AddRbToTail(all, m_head)) {
    kvutRelRb(all);
    object->close();
    return 0;
  }
  object->setXData(all);
  object->close();
  m_head = nullptr;
  if (!all) return 1;
  IM_AddRbToTail(all, m_attached);
  m_attached = all;
  return 1;
}

int ImEntityXData::ReadXData(ImXDataItemPtrArray& items, int paired, int skip) {
  items.RemoveAll();
  resbuf* record = nullptr;
  if (IsKindOf(ImXRecord::GetThisClass())) {
    const auto isIdentity = [](int code) {
      return code == 5 || code == 100 || code == 102 || code == 330 || code == 280 || code == -1 || code == 0;
    };
    for (record = m_head; record && isIdentity(record->restype);) record = record->rbnext;
    for (; record && skip > 0; --skip) record = record->rbnext;
  } else if (IsKindOf(ImEntityXData::GetThisClass())) {
    resbuf* name = IM_GetSubResbuf(m_head, kApplicationCode, 1);
    if (name && isApplication(*name, m_appName)) record = name->rbnext;
  }
  if (!record) return 0;
  while (record) {
    resbuf* partner = paired ? record->rbnext : nullptr;
    if (paired && !partner) return 1;
    items.Add(new ImXDataItem(record, partner));
    record = paired ? partner->rbnext : record->rbnext;
  }
  return 1;
}

void ImEntityXData::MakeInvalidate() {
  m_objectId.setNull();
  // The tail is freed on its own, behind the rest; so it leaves the chain first.
  resbuf* tail = nullptr;
  for (resbuf** link = &m_head; *link; link = &(*link)->rbnext) {
    if (*link != m_tail) continue;
    tail = m_tail;
    *link = nullptr;
    break;
  }
  kvutRelRb(m_head);
  m_head = nullptr;
  kvutRelRb(tail);
  m_tail = nullptr;
  m_valid = 0;
}
