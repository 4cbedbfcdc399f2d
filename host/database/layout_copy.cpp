// Copies of sheets.
#include "host/database/deepclone.h"
#include "host/database/draworder.h"
#include "host/database/layout.h"

Kvad::ErrorStatus KvDbLayoutManager::copyLayout(const wchar_t* name, const wchar_t* newName,
                                                KvDbObjectId& layout) {
  layout.setNull();
  const KvDbObjectId from = layoutId(name);
  const KvDbBlockTableRecord* sheet = blockOf(from);
  if (!sheet) return Kvad::eKeyNotFound;
  if (from == modelLayoutId()) return Kvad::eNotApplicable;
  const KvDbObjectIdArray order = kvdbDrawOrder(*sheet), entities = sheet->entities();
  if (auto status = createLayout(newName, layout); status != Kvad::eOk) return status;
  const KvDbObjectId block = blockOf(layout)->objectId();
  KvDbIdMapping mapping;
  if (!entities.isEmpty())
    if (auto status = kvdbDeepCloneObjects(entities, block, mapping); status != Kvad::eOk) return status;
  KvDbLayout* made = nullptr;
  if (auto status = kvdbOpenObject(made, layout, KvDb::kForWrite); status != Kvad::eOk) return status;
  const auto* old = static_cast<const KvDbLayout*>(from.stub()->object);
  const int place = made->tabOrder();
  made->copyFrom(old);
  made->setLayoutName(newName);
  made->setWhole(KvDbLayout::kLayoutMarker, 71, place);
  made->setBlockTableRecordId(block);
  constexpr int kLastViewport = 331;
  if (const auto shown = old->handleBehind(KvDbLayout::kLayoutMarker, kLastViewport)) {
    const KvDbObjectId copy =
        mapping.lookup(database_.idFromHandle(KvDbHandle(static_cast<std::uint64_t>(*shown))));
    made->setHandleBehind(KvDbLayout::kLayoutMarker, kLastViewport,
                          static_cast<std::int64_t>(copy.handle().value()));
  }
  made->close();
  KvDbObjectIdArray copies;
  bool isAsMade = true;
  for (int i = 0; i < order.length(); ++i) {
    isAsMade = isAsMade && order[i] == entities[i];
    if (const KvDbObjectId copy = mapping.lookup(order[i]); copy.isValid()) copies.append(copy);
  }
  return isAsMade ? Kvad::eOk : kvdbSetDrawOrder(block, copies);
}
