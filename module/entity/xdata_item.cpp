#include "module/entity/xdata.h"

namespace {

KvRbKind kindOf(const resbuf* record) {
  return record ? kvutRbKind(record->restype) : KvRbKind::None;
}

double realOf(const resbuf* record) {
  const KvRbKind kind = kindOf(record);
  return kind == KvRbKind::Real || kind == KvRbKind::Point ? record->resval.rreal : 0.0;
}

int shortOf(const resbuf* record) {
  const KvRbKind kind = kindOf(record);
  return kind == KvRbKind::Short || kind == KvRbKind::Long ? record->resval.rint : 0;
}

long longOf(const resbuf* record) {
  return kindOf(record) == KvRbKind::Long ? record->resval.rlong : shortOf(record);
}

void copyName(const resbuf* record, long long* name) {
  if (!name) return;
  kvds_setNull(name);
  if (kindOf(record) == KvRbKind::Name) kvds_copy(record->resval.rlname, name);
}

CString textOf(const resbuf* record) {
  return kindOf(record) == KvRbKind::Text ? CString(record->resval.rstring) : CString();
}

}  // namespace

double ImXDataItem::getFirstDouble() const {
  return realOf(first);
}
double ImXDataItem::getSecondDouble() const {
  return realOf(second);
}
int ImXDataItem::getFirstInt() const {
  return shortOf(first);
}
int ImXDataItem::getSecondInt() const {
  return shortOf(second);
}
long ImXDataItem::getFirstLong() const {
  return longOf(first);
}
long ImXDataItem::getSecondLong() const {
  return longOf(second);
}
void ImXDataItem::getFirstName(long long name[2]) const {
  copyName(first, name);
}
void ImXDataItem::getSecondName(long long name[2]) const {
  copyName(second, name);
}
CString ImXDataItem::getFirstString() const {
  return textOf(first);
}
CString ImXDataItem::getSecondString() const {
  return textOf(second);
}
