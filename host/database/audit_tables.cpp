// Auditors of tables and groups. (Entries of dictionaries that lead to nothing end with the reading.)
#include <set>
#include <string>

#include "host/database/audit.h"
#include "host/database/dictionary.h"
#include "host/database/symboltable.h"
#include "host/database/tables.h"

namespace {

/// A name of the table's that is valid and free: forbidden characters as underlines, a number where that is
/// taken.
CString freeName(const KvDbSymbolTable& table, const CString& name) {
  constexpr int kMostLength = 240;
  constexpr std::wstring_view kForbidden = L"<>/\\\":;?*|,=`";
  std::wstring base;
  for (wchar_t c : name.view().substr(0, kMostLength))
    base += c < L' ' || kForbidden.find(c) != std::wstring_view::npos ? L'_' : c;
  while (!base.empty() && base.back() == L' ') base.pop_back();
  while (!base.empty() && base.front() == L' ') base.erase(base.begin());
  if (!kvdbIsSymbolName(base)) base = L"AUDIT";
  CString wanted(base);
  for (int number = 1; table.has(wanted); ++number) wanted.Format(L"%s_%d", base.c_str(), number);
  return wanted;
}

void auditTable(KvDbObject& object, KvDbAudit& audit) {
  auto& table = static_cast<KvDbSymbolTable&>(object);
  // The views of a set of tiled viewports all bear the name "*Active".
  const bool mayRepeat = object.objectId() == audit.database().tableId(KvDbTable::Viewport);
  std::set<std::wstring, platform::LessNoCase> seen;
  for (KvDbObjectId id : table.records()) {
    auto& record = static_cast<KvDbSymbolTableRecord&>(*id.stub()->object);
    const CString name = record.getName();
    const KvDbAudit::Fix rename = [&table](KvDbObject& bad) {
      auto& unnamed = static_cast<KvDbSymbolTableRecord&>(bad);
      const CString good = freeName(table, unnamed.getName());
      unnamed.assertWriteEnabled();
      unnamed.setNameAsMade(good);
      table.forgetIndex();
      return true;
    };
    // A text style without a name stands for a file of shapes.
    if (name.IsEmpty() && record.isKindOf(KvDbTextStyleTableRecord::desc()) && (record.standardFlags() & 1))
      continue;
    if (!record.isDependent() && !kvdbIsSymbolName(name.view(), true))
      audit.found(KvDbFault::BadName, record, L"\"" + name + L"\" is no name", rename);
    else if (!seen.insert(std::wstring(name.view())).second && !mayRepeat)
      audit.found(KvDbFault::DuplicateName, record, L"\"" + name + L"\" stands twice", rename);
  }
}

bool isThere(KvDbObjectId id) {
  return !id.isNull() && id.stub()->object;
}

void auditGroup(KvDbObject& object, KvDbAudit& audit) {
  KvDbReferenceFiler filer;
  static_cast<KvDbGroup&>(object).dwgOutFields(filer);
  const KvDbObjectId owner = object.ownerId();
  for (const auto& [id, reference] : filer.found()) {
    if (isThere(id) || id == owner || object.persistentReactors().contains(id)) continue;
    audit.found(
        KvDbFault::DanglingMember, object, L"member " + id.handle().toText() + L" isn't there",
        [id = id](KvDbObject& group) { return static_cast<KvDbGroup&>(group).remove(id) == Kvad::eOk; });
  }
}

[[maybe_unused]] const bool kRegistered = kvdbRegisterAuditor(KvDbSymbolTable::desc(), auditTable) &&
                                          kvdbRegisterAuditor(KvDbGroup::desc(), auditGroup);

}  // namespace
