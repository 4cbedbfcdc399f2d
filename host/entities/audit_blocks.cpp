// Auditors of block references and of what blocks hold.
#include <unordered_set>

#include "host/database/audit.h"
#include "host/database/block.h"
#include "host/entities/blockreference.h"

namespace {

/// The block gets its record, empty, so that the reference and its attributes stay.
bool makeBlock(KvDbObject& object) {
  const CString name = static_cast<KvDbBlockReference&>(object).blockName();
  if (!kvdbIsSymbolName(name.view(), true)) return object.erase() == Kvad::eOk;
  KvDbDatabase& database = *object.database();
  KvDbBlockTable* table = nullptr;
  if (database.getBlockTable(table, KvDb::kForWrite) != Kvad::eOk) return false;
  auto block = std::make_unique<KvDbBlockTableRecord>();
  KvDbObjectId id;
  block->setNameAsMade(name);
  const bool isAdded = table->add(id, block.get()) == Kvad::eOk;
  table->close();
  if (!isAdded) return false;
  block->ensureMarks();
  block.release()->close();
  return static_cast<KvDbBlockReference&>(object).setBlockTableRecord(id) == Kvad::eOk;
}

const KvDbBlockTableRecord* blockOf(KvDbObjectId id) {
  return id.isValid() ? KvDbBlockTableRecord::cast(id.stub()->object) : nullptr;
}

void auditReference(KvDbObject& object, KvDbAudit& audit) {
  auto& reference = static_cast<KvDbBlockReference&>(object);
  if (blockOf(reference.blockTableRecord())) return;
  audit.found(KvDbFault::DanglingBlock, object, L"no block \"" + reference.blockName() + L"\"", makeBlock);
}

/// A block that is being walked through, and how far.
struct Step {
  KvDbObjectId block;
  KvDbObjectIdArray entities;
  int at = 0;
};

/// Walks through all blocks without recursion and reports each reference that leads back to a block it is
/// in.
void auditNesting(KvDbObject& table, KvDbAudit& audit) {
  std::unordered_set<KvDbObjectId> done, open;
  std::vector<Step> path;
  const auto enter = [&](KvDbObjectId id) {
    if (done.contains(id)) return;
    open.insert(id);
    path.push_back({id, blockOf(id)->entities()});
  };
  for (KvDbObjectId start : static_cast<KvDbBlockTable&>(table).records()) {
    enter(start);
    while (!path.empty()) {
      Step& step = path.back();
      if (step.at == step.entities.length()) {
        done.insert(step.block);
        open.erase(step.block);
        path.pop_back();
        continue;
      }
      auto* reference = KvDbBlockReference::cast(step.entities[step.at++].stub()->object);
      if (!reference || !blockOf(reference->blockTableRecord())) continue;
      const KvDbObjectId inner = reference->blockTableRecord();
      if (!open.contains(inner)) {
        enter(inner);
        continue;
      }
      audit.found(KvDbFault::RecursiveBlock, *reference,
                  L"puts block \"" + kvdbRecordName(inner) + L"\" inside itself",
                  [](KvDbObject& bad) { return bad.erase() == Kvad::eOk; });
    }
  }
}

[[maybe_unused]] const bool kRegistered = kvdbRegisterAuditor(KvDbBlockReference::desc(), auditReference) &&
                                          kvdbRegisterAuditor(KvDbBlockTable::desc(), auditNesting);

}  // namespace
