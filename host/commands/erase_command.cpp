// ERASE, OOPS, SELECT.
#include "host/commands/internal/erased.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"

namespace kvcmd {
namespace {

class LastErased : public KvDbAttachment {
 public:
  KvDbObjectIdArray ids;
};

void runErase() {
  const KvDbObjectIdArray ids = select();
  eraseForOops(ids);
}

void runOops() {
  if (!drawing()) return;
  int back = 0;
  for (KvDbObjectId id : drawing()->attachment<LastErased>().ids) {
    KvDbEntity* entity = nullptr;
    if (!id.isErased() || kvdbOpenObject(entity, id, KvDb::kForWrite, true) != Kvad::eOk) continue;
    // What stood in a block that is gone stays with it.
    const bool hasHome = entity->ownerId().isValid();
    if (hasHome && entity->erase(false) == Kvad::eOk) ++back;
    entity->close();
  }
  if (back == 0) say(L"There is nothing to bring back.");
}

void runSelect() {
  if (drawing()) select(nullptr, true);
}

constexpr KvCommandRow kRows[] = {
    {L"ERASE", L"E DELETE", KVRX_CMD_USEPICKSET, runErase, L"Erases objects.",
     L"Select objects: (empty: ends)"},
    {L"OOPS", L"", KVRX_CMD_MODAL, runOops,
     L"Brings back what ERASE, BLOCK or WBLOCK took away last, and leaves all that was drawn since.", L""},
    {L"SELECT", L"", KVRX_CMD_USEPICKSET, runSelect,
     L"Selects objects, which the next command finds as the previous set (P).", L"Select objects:"},
};

}  // namespace

void eraseForOops(const KvDbObjectIdArray& ids) {
  if (ids.isEmpty()) return;
  erase(ids);
  drawing()->attachment<LastErased>().ids = ids;
}

std::span<const KvCommandRow> eraseRows() {
  return kRows;
}

}  // namespace kvcmd
