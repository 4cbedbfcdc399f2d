#include "module/entity/entity_records.h"

#include <cwchar>

#include "host/database/entcalls.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr int kTypeCode = 0;
constexpr double kNoReal = RTERROR;
/// The one key that may stand twice in a row before its value.
constexpr int kDoubledKey = 3;

bool isWhole(const resbuf& record) {
  const KvRbKind kind = kvutRbKind(record.restype);
  return kind == KvRbKind::Short || kind == KvRbKind::Long;
}

bool isOf(const resbuf* record, KvRbKind kind) {
  return record && kvutRbKind(record->restype) == kind;
}

bool isKey(const resbuf& record, int code, int key) {
  return record.restype == code && isWhole(record) && record.resval.rint == key;
}

resbuf* keyOf(resbuf* rb, int code, int key) {
  for (; rb; rb = rb->rbnext)
    if (isKey(*rb, code, key)) return rb;
  return nullptr;
}

resbuf* behind(resbuf* rb, int code, int key) {
  return get_resbuf_ex(rb, code, key, 0);
}

int take(const resbuf* record, int* out) {
  if (!record || !out || !isWhole(*record)) return RTERROR;
  *out = isOf(record, KvRbKind::Long) ? record->resval.rlong : record->resval.rint;
  return RTNORM;
}
int take(const resbuf* record, double* out) {
  if (!isOf(record, KvRbKind::Real) || !out) return RTERROR;
  *out = record->resval.rreal;
  return RTNORM;
}
int take(const resbuf* record, wchar_t* out) {
  if (!isOf(record, KvRbKind::Text) || !out) return RTERROR;
  std::wcscpy(out, record->resval.rstring ? record->resval.rstring : L"");
  return RTNORM;
}
int takePoint(const resbuf* record, double* out) {
  if (!isOf(record, KvRbKind::Point) || !out) return RTERROR;
  for (int i = 0; i < 3; ++i) out[i] = record->resval.rpoint[i];
  return RTNORM;
}

int put(resbuf* record, int value) {
  if (!record || !isWhole(*record)) return RTERROR;
  if (isOf(record, KvRbKind::Long))
    record->resval.rlong = value;
  else
    record->resval.rint = static_cast<std::int16_t>(value);
  return RTNORM;
}
int put(resbuf* record, double value) {
  if (!isOf(record, KvRbKind::Real)) return RTERROR;
  record->resval.rreal = value;
  return RTNORM;
}
int putPoint(resbuf* record, const double* p) {
  if (!isOf(record, KvRbKind::Point) || !p) return RTERROR;
  for (int i = 0; i < 3; ++i) record->resval.rpoint[i] = p[i];
  return RTNORM;
}

/// The entity follows its record; whether it does isn't asked.
int andModify(resbuf* rb, int status) {
  if (status == RTNORM) kvdbEntMod(rb);
  return status;
}

}  // namespace

resbuf* get_resbuf(resbuf* rb, int code) {
  return FindResbufByType(rb, code);
}

int get_etype(resbuf* rb, wchar_t* out) {
  return get_string(rb, out, kTypeCode);
}
int get_int(resbuf* rb, int* out, int code) {
  return take(get_resbuf(rb, code), out);
}
int get_real(resbuf* rb, double* out, int code) {
  return take(get_resbuf(rb, code), out);
}
int get_string(resbuf* rb, wchar_t* out, int code) {
  return take(get_resbuf(rb, code), out);
}
int get_point(resbuf* rb, double out[3], int code) {
  return takePoint(get_resbuf(rb, code), out);
}

int set_int(resbuf* rb, int value, int code) {
  return andModify(rb, put(get_resbuf(rb, code), value));
}
int set_real(resbuf* rb, double value, int code) {
  return andModify(rb, put(get_resbuf(rb, code), value));
}
int set_point(resbuf* rb, const double p[3], int code) {
  return andModify(rb, putPoint(get_resbuf(rb, code), p));
}
int set_string(resbuf* rb, const wchar_t* value, int code) {
  if (kvutRbKind(code) != KvRbKind::Text || !IM_SetRbValueOf(rb, value, code, 1)) return RTERROR;
  return kvdbEntMod(rb);
}

resbuf* get_resbuf_ex(resbuf* rb, int code, int key, int self) {
  resbuf* found = keyOf(rb, code, key);
  return found && !self ? found->rbnext : found;
}

int get_int_ex(resbuf* rb, int code, int key) {
  int value = RTERROR;
  take(behind(rb, code, key), &value);
  return value;
}
double get_real_ex(resbuf* rb, int code, int key) {
  double value = kNoReal;
  take(behind(rb, code, key), &value);
  return value;
}
CString get_string_ex(resbuf* rb, int code, int key) {
  const resbuf* record = behind(rb, code, key);
  return isOf(record, KvRbKind::Text) ? CString(record->resval.rstring) : CString();
}
int get_string_ex(resbuf* rb, int code, int key, wchar_t* out) {
  if (out) std::wcscpy(out, get_string_ex(rb, code, key));
  return RTNORM;
}
int get_point_ex(resbuf* rb, int code, int key, double out[3]) {
  return takePoint(behind(rb, code, key), out);
}

int set_int_ex(resbuf* rb, int code, int key, int value) {
  resbuf* target = behind(rb, code, key);
  if (target && key == kDoubledKey && isKey(*target, code, key)) target = target->rbnext;
  return put(target, value);
}
int set_real_ex(resbuf* rb, int code, int key, double value) {
  return put(behind(rb, code, key), value);
}
int set_string_ex(resbuf* rb, int code, int key, CString value) {
  resbuf* target = behind(rb, code, key);
  if (!isOf(target, KvRbKind::Text)) return RTERROR;
  // An empty text keeps the buffer: callers may have asked for its address.
  if (value.IsEmpty() && target->resval.rstring)
    target->resval.rstring[0] = 0;
  else
    kvutSetText(target, value);
  return RTNORM;
}
int set_point_ex(resbuf* rb, int code, int key, const double p[3]) {
  return putPoint(behind(rb, code, key), p);
}

int next_ent(long long name[2]) {
  kvds_name next = {0, 0};
  if (!name || kvdbEntNext(name, next) != RTNORM) return RTERROR;
  kvds_copy(next, name);
  return RTNORM;
}
