#include "host/database/chainreader.h"

#include "host/database/block.h"
#include "host/database/tables.h"

namespace {

constexpr int kEntityName = -1, kXDataMark = -3, kApplication = 1001;
constexpr int kType = 0, kHandle = 5, kOwner = 330, kMarker = 100, kAppGroup = 102;

bool isHandleCode(int code) {
  return kvdxfKind(code) == KvDxfKind::Handle;
}

}  // namespace

bool KvDbChainReader::read(const resbuf* chain) {
  for (const resbuf* node = chain; node; node = node->rbnext) {
    const int code = node->restype == RTDXF0 ? kType : node->restype;
    if (code == kEntityName) continue;
    if (code == kXDataMark || code == kApplication) {
      xData_ = node;
      return true;
    }
    if (code < 0 || code > kApplication) return false;
    KvDxfGroup group;
    group.code = static_cast<std::int16_t>(code);
    if (isHandleCode(code)) {
      group.kind = KvDxfKind::Handle;
      group.integer = kvutRbKind(code) == KvRbKind::Text
                          ? static_cast<std::int64_t>(KvDbHandle(node->resval.rstring).value())
                          : node->resval.rlname[0];
    } else {
      KvDbStoredGroup stored;
      resbuf plain = *node;
      plain.restype = static_cast<std::int16_t>(code);
      if (code == kType) {
        stored.code = kType;
        stored.text = node->resval.rstring ? node->resval.rstring : L"";
      } else if (!kvdbStoredGroupOf(plain, stored)) {
        return false;
      }
      group = stored.view();
      if (!group.text.empty()) group.text = texts_.emplace_back(group.text);
    }
    groups_.push_back(group);
  }
  return true;
}

const KvDxfGroup* KvDbChainReader::find(int code) const {
  for (const KvDxfGroup& group : groups_)
    if (group.code == code) return &group;
  return nullptr;
}

std::wstring_view KvDbChainReader::type() const {
  const KvDxfGroup* group = find(kType);
  return group ? group->text : std::wstring_view();
}

std::vector<KvDxfGroup> kvdbContentOf(std::span<const KvDxfGroup> groups) {
  std::vector<KvDxfGroup> content;
  bool isInHead = true, isInBlock = false;
  for (const KvDxfGroup& group : groups) {
    if (group.code == kMarker) isInHead = false;
    const bool opens = group.code == kAppGroup && isInHead && group.text.starts_with(L'{');
    const bool isIdentity = group.code == kType || group.code == kHandle || opens || isInBlock ||
                            (isInHead && group.code == kOwner);
    if (opens) isInBlock = true;
    if (group.code == kAppGroup && group.text == L"}") isInBlock = false;
    if (!isIdentity) content.push_back(group);
  }
  return content;
}

KvDbObjectId KvDbChainReader::object(std::int64_t handle) {
  return database_.idFromHandle(KvDbHandle(static_cast<std::uint64_t>(handle)));
}

KvDbObjectId KvDbChainReader::record(KvDbTable table, std::wstring_view name) {
  const KvDbObjectId id = database_.recordId(table, CString(name));
  if (id.isNull() && !name.empty()) hasMissingName_ = true;
  return id;
}

KvDbObjectId KvDbChainReader::layer(std::wstring_view name) {
  const KvDbObjectId id = database_.recordId(KvDbTable::Layer, CString(name));
  if (!id.isNull()) return id;
  if (!kvdbIsSymbolName(name)) {
    hasMissingName_ = true;
    return {};
  }
  KvDbLayerTable* table = nullptr;
  if (kvdbOpenObject(table, database_.layerTableId(), KvDb::kForWrite) != Kvad::eOk) return {};
  auto record = std::make_unique<KvDbLayerTableRecord>();
  record->setName(CString(name));
  record->setLinetypeObjectId(database_.recordId(KvDbTable::Linetype, L"Continuous"));
  KvDbObjectId fresh;
  if (table->add(fresh, record.get()) == Kvad::eOk) record.release()->close();
  table->close();
  return fresh;
}

KvDbObjectId KvDbChainReader::linetype(std::wstring_view name) {
  return record(KvDbTable::Linetype, name);
}
KvDbObjectId KvDbChainReader::textStyle(std::wstring_view name) {
  return record(KvDbTable::TextStyle, name);
}
KvDbObjectId KvDbChainReader::dimStyle(std::wstring_view name) {
  return record(KvDbTable::DimStyle, name);
}
KvDbObjectId KvDbChainReader::block(std::wstring_view name) {
  return record(KvDbTable::Block, name);
}
