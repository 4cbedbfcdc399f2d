// BLOCK and INSERT.
#include "host/commands/internal/erased.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/database/deepclone.h"
#include "host/editor/sysvars.h"
#include "host/entities/attribute.h"
#include "host/entities/blockreference.h"
#include "host/io/drawing_file.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace kvcmd {
namespace {

void listBlocks() {
  KvDbBlockTable* table = nullptr;
  if (kvdbOpenObject(table, drawing()->blockTableId(), KvDb::kForRead) != Kvad::eOk) return;
  for (KvDbObjectId id : table->records())
    if (const auto* block = look<KvDbBlockTableRecord>(id); block && !block->isAnonymous())
      say(block->getName());
  table->close();
}

/// The block's record, empty: a new one, or the present one without its entities.
KvDbObjectId emptyBlock(const CString& name) {
  KvDbObjectId id = drawing()->recordId(KvDbTable::Block, name);
  if (!id.isNull()) {
    change<KvDbBlockTableRecord>(id, [](KvDbBlockTableRecord& block) { block.eraseContent(); });
    return id;
  }
  KvDbBlockTable* table = nullptr;
  if (kvdbOpenObject(table, drawing()->blockTableId(), KvDb::kForWrite) != Kvad::eOk) return {};
  auto block = std::make_unique<KvDbBlockTableRecord>();
  if (block->setName(name) == Kvad::eOk && table->add(id, block.get()) == Kvad::eOk) block.release()->close();
  table->close();
  return id;
}

/// Whether a block refers to another one, itself or through further ones.
bool usesBlock(KvDbObjectId where, KvDbObjectId what, int depth = 0) {
  constexpr int kDeepest = 64;
  const auto* block = look<KvDbBlockTableRecord>(where);
  if (!block || depth > kDeepest) return false;
  if (where == what) return true;
  for (KvDbObjectId id : block->entities())
    if (const auto* reference = look<KvDbBlockReference>(id))
      if (usesBlock(reference->blockTableRecord(), what, depth + 1)) return true;
  return false;
}

void runBlock() {
  if (!drawing()) return;
  CString name;
  for (;;) {
    if (Ask(L"\nEnter block name or [?]: ").text(name) != Got::Value) return;
    if (name != L"?") break;
    listBlocks();
  }
  if (!kvdbIsSymbolName(name.view())) {
    fail(L"\"" + name + L"\" is no name for a block.");
    return;
  }
  const KvDbObjectId present = drawing()->recordId(KvDbTable::Block, name);
  if (!present.isNull()) {
    Ask again((L"\nBlock \"" + name + L"\" already exists. Redefine it? [Yes/No] <No>: ").GetString());
    if (again.keywords(L"Yes No").word() != Got::Keyword || again.keyword != L"Yes") return;
  }
  KvGePoint3d base;
  const Got got = Ask(L"\nSpecify insertion base point: ").point(base);
  if (got == Got::Cancelled) return;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  for (KvDbObjectId id : ids)
    if (const auto* reference = look<KvDbBlockReference>(id);
        reference && !present.isNull() && usesBlock(reference->blockTableRecord(), present)) {
      fail(L"A block can't contain itself.");
      return;
    }
  const KvDbObjectId block = emptyBlock(name);
  KvDbIdMapping copies;
  if (block.isNull() || drawing()->deepCloneObjects(ids, block, copies) != Kvad::eOk) {
    fail(L"Block \"" + name + L"\" could not be made.");
    return;
  }
  // In the block the base point is the origin and the user system's axes are the axes.
  const KvGeMatrix3d toBlock =
      KvGeMatrix3d::translation(KvGePoint3d::kOrigin - base) * userToWorld().inverse();
  for (KvDbObjectId id : copies.primaries())
    change<KvDbEntity>(id, [&](KvDbEntity& entity) { entity.transformBy(toBlock); });
  change<KvDbBlockTableRecord>(block,
                               [](KvDbBlockTableRecord& record) { record.setOrigin(KvGePoint3d::kOrigin); });
  eraseForOops(ids);
}

/// A block of that name, or of the drawing file that the name is; null, with a word, when there is neither.
KvDbObjectId blockToInsert(const CString& name) {
  const KvDbObjectId present = drawing()->recordId(KvDbTable::Block, name);
  if (const auto* block = look<KvDbBlockTableRecord>(present); block && !block->isSpace()) return present;
  for (const wchar_t* ending : {L"", L".dxf", L".dwg"}) {
    const CString file = kvdbHostApplicationServices()->findFile(name + ending);
    if (file.IsEmpty() || !platform::isFile(file)) continue;
    KvDbDatabase side(false, true);
    KvIoReport report;
    if (kvdbReadDrawing(side, platform::toNative(file), report) != Kvad::eOk) {
      fail(L"\"" + file + L"\" can't be read: " + report.error.describe());
      return {};
    }
    KvDbObjectId id;
    const CString stem = platform::fromNative(platform::toNative(file).stem());
    if (drawing()->insert(id, stem, &side) == Kvad::eOk) return id;
  }
  fail(L"There is no block \"" + name + L"\".");
  return {};
}

/// What the user wants of a reference.
struct Placement {
  KvGePoint3d point;
  double x = 1, y = 1, z = 1, rotation = 0;
};

/// False when the command is to end.
bool askPlacement(Placement& place) {
  bool hasScale = false, hasRotation = false;
  for (;;) {
    Ask ask(L"\nSpecify insertion point or [Scale/Rotate]: ");
    const Got got = ask.keywords(L"Scale Rotate").point(place.point);
    if (got == Got::Value) break;
    if (got != Got::Keyword) return false;
    if (ask.keyword == L"Scale") {
      if (Ask(L"\nSpecify scale factor: ").flags(KVED_NOZERO).real(place.x) == Got::Value) {
        place.y = place.z = place.x;
        hasScale = true;
      }
    } else if (Ask(L"\nSpecify rotation angle: ").angle(place.rotation) == Got::Value) {
      hasRotation = true;
    }
  }
  if (!hasScale) {
    Ask x(L"\nEnter X scale factor, specify opposite corner, or [Corner/XYZ] <1>: ");
    KvGePoint3d corner;
    Got got = x.keywords(L"Corner XYZ").flags(KVED_NOZERO).base(place.point).real(place.x);
    if (got == Got::Cancelled) return false;
    if (got == Got::Keyword && x.keyword == L"Corner") {
      if (Ask(L"\nSpecify opposite corner: ").corner(place.point, corner) != Got::Value) return false;
      place.x = corner.x - place.point.x;
      place.y = corner.y - place.point.y;
      if (place.x == 0 || place.y == 0) return fail(L"A scale of 0 shows nothing."), false;
    } else {
      const bool wantsZ = got == Got::Keyword;
      if (wantsZ && Ask(L"\nSpecify X scale factor <1>: ").flags(KVED_NOZERO).real(place.x) == Got::Cancelled)
        return false;
      place.y = place.x;
      if (Ask(L"\nEnter Y scale factor <use X scale factor>: ").flags(KVED_NOZERO).real(place.y) ==
          Got::Cancelled)
        return false;
      place.z = place.x;
      if (wantsZ &&
          Ask(L"\nSpecify Z scale factor <use X scale factor>: ").flags(KVED_NOZERO).real(place.z) ==
              Got::Cancelled)
        return false;
    }
  }
  return hasRotation ||
         Ask(L"\nSpecify rotation angle <0>: ").base(place.point).angle(place.rotation) != Got::Cancelled;
}

/// Values for the definitions of a block that aren't constant; asked for, but for preset ones.
void addAttributes(KvDbObjectId reference, const KvDbBlockTableRecord& block) {
  bool isFirst = true;
  for (KvDbObjectId id : block.entities()) {
    const auto* definition = look<KvDbAttributeDefinition>(id);
    if (!definition || definition->isConstant()) continue;
    CString value = definition->textString();
    if (!definition->isPreset()) {
      if (isFirst) say(L"Enter attribute values");
      isFirst = false;
      const CString label = definition->prompt().IsEmpty() ? definition->tag() : definition->prompt();
      CString prompt = L"\n" + label;
      if (!value.IsEmpty()) prompt += L" <" + value + L">";
      if (Ask((prompt + L": ").GetString()).text(value, true) == Got::Cancelled) return;
    }
    change<KvDbBlockReference>(reference, [&](KvDbBlockReference& insert) {
      auto* attribute = new KvDbAttribute;
      attribute->setAttributeFromBlock(definition, insert.blockTransform());
      attribute->setTextString(value);
      KvDbObjectId attributeId;
      if (insert.appendAttribute(attributeId, attribute) != Kvad::eOk)
        delete attribute;
      else
        attribute->close();
    });
  }
}

/// Rows and columns of a reference; false when the command is to end.
bool askArray(KvDbBlockReference& reference) {
  constexpr int kMost = 32767;
  int rows = 1, columns = 1;
  double rowSpacing = 0, columnSpacing = 0;
  const auto count = [](const wchar_t* prompt, int& value) {
    do {
      if (Ask(prompt).flags(KVED_NOZERO | KVED_NONEG).whole(value) == Got::Cancelled) return false;
      if (value > kMost) say(L"A number of at most 32767 expected.");
    } while (value > kMost);
    return true;
  };
  if (!count(L"\nEnter number of rows (---) <1>: ", rows) ||
      !count(L"\nEnter number of columns (|||) <1>: ", columns))
    return false;
  if (rows > 1 && Ask(L"\nEnter distance between rows (---): ").distance(rowSpacing) != Got::Value)
    return false;
  if (columns > 1 && Ask(L"\nSpecify distance between columns (|||): ").distance(columnSpacing) != Got::Value)
    return false;
  reference.setArray(rows, columns, rowSpacing, columnSpacing);
  return true;
}

void insertBlock(bool isArrayed) {
  if (!drawing()) return;
  const AllOrNothing together;
  KvEdVarValue last;
  CString name;
  if (editor()->variables().get(L"INSNAME", last) == Kvad::eOk)
    if (const CString* held = std::get_if<CString>(&last)) name = *held;
  const CString prompt = name.IsEmpty() ? CString(L"\nEnter block name or [?]: ")
                                        : L"\nEnter block name or [?] <" + name + L">: ";
  for (;;) {
    const Got got = Ask(prompt).text(name);
    if (got == Got::Cancelled || (got == Got::Nothing && name.IsEmpty())) return;
    if (name != L"?") break;
    listBlocks();
    name.Empty();
  }
  // A leading asterisk inserts the parts themselves.
  const bool wantsParts = name.GetAt(0) == L'*';
  if (wantsParts && isArrayed) return fail(L"The parts of a block can't be set out in rows.");
  const KvDbObjectId block = blockToInsert(wantsParts ? name.Mid(1) : name);
  if (block.isNull()) return;
  if (usesBlock(block, drawing()->currentSpaceId())) {
    fail(L"A block can't contain itself.");
    return;
  }
  Placement place;
  if (!askPlacement(place)) return;
  auto reference = std::make_unique<KvDbBlockReference>(KvGePoint3d::kOrigin, block);
  reference->setPosition(place.point);
  reference->setScaleFactors({place.x, place.y, place.z});
  reference->setRotation(place.rotation);
  if (isArrayed && !askArray(*reference)) return;
  reference->transformBy(userToWorld());
  if (wantsParts) {
    KvDbVoidPtrArray parts;
    reference->explode(parts);
    for (void* part : parts) add(std::unique_ptr<KvDbEntity>(static_cast<KvDbEntity*>(part)), true);
    return;
  }
  const KvDbObjectId id = add(std::move(reference));
  addAttributes(id, *look<KvDbBlockTableRecord>(block));
  editor()->variables().set(L"INSNAME", name);
}

void runInsert() {
  insertBlock(false);
}
void runMinsert() {
  insertBlock(true);
}

constexpr KvCommandRow kBlockRows[] = {
    {L"BLOCK", L"B -BLOCK", KVRX_CMD_MODAL, runBlock, L"Makes a block of objects, which leave the drawing.",
     L"Enter block name or [?]:\nBlock already exists. Redefine it? [Yes/No] <No>: (when it does)\nSpecify "
     L"insertion "
     L"base point:\nSelect objects:"},
};

constexpr KvCommandRow kInsertRows[] = {
    {L"INSERT", L"I -INSERT", KVRX_CMD_MODAL, runInsert, L"Places a block, or another drawing as one.",
     L"Enter block name or [?]: (a file's name will do; `*NAME` inserts the parts)\nSpecify insertion point "
     L"or "
     L"[Scale/Rotate]:\nEnter X scale factor, specify opposite corner, or [Corner/XYZ] <1>:\nEnter Y scale "
     L"factor <use X "
     L"scale factor>:\nSpecify rotation angle <0>:\nthen the values of attributes"},
    {L"MINSERT", L"", KVRX_CMD_MODAL, runMinsert, L"Places a block in rows and columns, as one object.",
     L"Enter block name or [?]:\nSpecify insertion point or [Scale/Rotate]:\nEnter X scale factor, specify "
     L"opposite corner, or [Corner/XYZ] <1>:\nEnter Y scale factor <use X scale factor>:\nSpecify rotation "
     L"angle <0>:\nEnter number of rows (---) <1>:\nEnter number of columns (|||) <1>:\nEnter distance "
     L"between rows (---):\nSpecify distance between columns (|||):\nthen the values of attributes"},
};

}  // namespace

std::span<const KvCommandRow> blockRows() {
  return kBlockRows;
}
std::span<const KvCommandRow> insertRows() {
  return kInsertRows;
}

}  // namespace kvcmd
