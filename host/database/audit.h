#pragma once
// The faults of a drawing: each class looks after its own parts, each fault has a code that stays.
//
// A class joins by an auditor, registered where the class is written; auditors of base classes are called
// behind those of the class itself. A fixing audit mends at once, as changes that undo can take back.
#include <functional>
#include <map>
#include <vector>

#include "host/database/database.h"

/// Codes are part of the interface: none changes its meaning, new ones go to the end of their hundred.
enum class KvDbFault : std::uint16_t {
  FileStructure = 100,  ///< sections, tables, marks
  FileValue = 101,      ///< a group whose value isn't of its kind
  FileCut = 102,        ///< the end is missing
  DuplicateHandle = 103,
  DuplicatePart = 104,  ///< a table or a block stands twice
  UnknownLayer = 105,   ///< a name that no table has; so the following
  UnknownLinetype = 106,
  UnknownTextStyle = 107,
  UnknownDimStyle = 108,
  UnknownRecord = 109,
  DanglingEntry = 200,      ///< of a dictionary
  DanglingMember = 201,     ///< of a group
  DanglingReference = 202,  ///< needed or owned, and not there
  DanglingOwner = 203,
  DanglingReactor = 204,
  DanglingBlock = 205,  ///< of a block reference
  LayoutBlock = 206,    ///< a layout and its block don't belong together
  NoLayer = 300,
  WrongLinetype = 301,
  BadNumber = 302,  ///< not a number, or beyond kKvDbLargestNumber
  BadName = 303,    ///< a name that no table takes
  DuplicateName = 304,
  RecursiveBlock = 305,  ///< a block inside itself
};
/// "dangling-entry"; empty for a number that is no code.
const char* kvdbFaultName(KvDbFault fault);

/// What no sensible drawing has as a coordinate or a size.
inline constexpr double kKvDbLargestNumber = 1e100;

struct KvDbFinding {
  KvDbFault fault = KvDbFault::FileStructure;
  CString text;          ///< where and what: "INSERT 2F: no block \"A\""
  bool isFixed = false;  ///< otherwise it still stands
};

class KvDbAudit {
 public:
  /// With `fixes` what can be mended is mended.
  KvDbAudit(KvDbDatabase& database, bool fixes) : database_(database), fixes_(fixes) {}
  /// Looks at every object that isn't erased.
  void run();
  KvDbDatabase& database() const { return database_; }

  using Fix = std::function<bool(KvDbObject&)>;
  /// For auditors. In a fixing audit `fix` is called with the object open for write; it answers whether all
  /// is well now. Without one the fault stands.
  void found(KvDbFault fault, KvDbObject& object, const CString& text, const Fix& fix = {});
  /// A fault found elsewhere, while a file was read.
  void add(KvDbFault fault, const CString& text, bool isFixed);

  /// In the order in which they were found, the first kMostListed.
  const std::vector<KvDbFinding>& findings() const { return findings_; }
  std::uint64_t errorCount() const { return errors_; }  ///< those that stand
  std::uint64_t fixCount() const { return fixed_; }     ///< those that were mended
  static constexpr std::size_t kMostListed = 1000;

 private:
  KvDbDatabase& database_;
  bool fixes_;
  std::vector<KvDbFinding> findings_;
  std::uint64_t errors_ = 0, fixed_ = 0;
};

using KvDbAuditor = void (*)(KvDbObject& object, KvDbAudit& audit);
/// Done once, while the library is loaded. The answer is always true.
bool kvdbRegisterAuditor(const KvRxClass* ofClass, KvDbAuditor auditor);
