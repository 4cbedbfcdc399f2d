#include "host/io/internal/repair.h"

#include "host/database/block.h"
#include "host/database/dictionary.h"

namespace kvio {
namespace {

constexpr const wchar_t* kLayoutMarker = L"AcDbLayout";
constexpr int kBlockReference = 330;

CString nameOf(const KvDbObject& object) {
  return object.fileType() + L" " + object.handle().toText();
}

/// The block whose record names the layout as its own; null when there is none.
KvDbObjectId blockOfLayout(const KvDbDatabase& database, KvDbObjectId layout) {
  auto* table = KvDbSymbolTable::cast(database.blockTableId().stub()->object);
  for (KvDbObjectId id : table->records())
    if (KvDbBlockTableRecord::cast(id.stub()->object)->layoutId() == layout) return id;
  return {};
}

void repairLayout(KvDbDatabase& database, KvDbProxyObject& layout,
                  const std::function<void(const CString&, KvDbFault)>& report) {
  const auto handle = layout.handleBehind(kLayoutMarker, kBlockReference);
  if (!handle || !database.idFromHandle(KvDbHandle(static_cast<std::uint64_t>(*handle))).isNull()) return;
  const KvDbObjectId block = blockOfLayout(database, layout.objectId());
  if (!block.isNull()) {
    report(nameOf(layout) + L" pointed to a block that isn't there; it has its own back",
           KvDbFault::LayoutBlock);
    layout.setHandleBehind(kLayoutMarker, kBlockReference, static_cast<std::int64_t>(block.handle().value()));
    return;
  }
  report(nameOf(layout) + L" has no block; it is left out", KvDbFault::LayoutBlock);
  KvDbObject* opened = nullptr;
  if (kvdbOpenAny(opened, layout.objectId(), KvDb::kForWrite) != Kvad::eOk) return;
  opened->erase();
  opened->close();
}

}  // namespace

void repairReferences(KvDbDatabase& database, const std::function<void(const CString&, KvDbFault)>& report) {
  const auto ids = database.allObjects();
  for (KvDbObjectId id : ids)
    if (auto* proxy = KvDbProxyObject::cast(id.stub()->object); proxy && proxy->fileType() == L"LAYOUT")
      repairLayout(database, *proxy, report);
  for (KvDbObjectId id : ids) {
    auto* dictionary = KvDbDictionary::cast(id.stub()->object);
    if (!dictionary) continue;
    for (const CString& name : dictionary->dropDangling())
      report(nameOf(*dictionary) + L": entry \"" + name + L"\" led to nothing", KvDbFault::DanglingEntry);
  }
}

}  // namespace kvio
