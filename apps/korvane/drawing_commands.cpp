#include "apps/korvane/drawing_commands.h"

#include <charconv>
#include <cmath>
#include <iostream>
#include <map>
#include <set>
#include <vector>

#include "host/database/audit.h"
#include "host/database/block.h"
#include "host/database/layout.h"
#include "host/io/drawing_file.h"
#include "platform/text/cstring.h"

namespace korvane {
namespace {

using Counts = std::map<std::string, int>;

/// A layout and the box of what stands on it.
struct Space {
  std::string name;
  KvDbExtents extents;
};

/// What stands in a drawing, counted.
struct Summary {
  std::string version, codePage;
  Counts types, layers, applications, unmodelled;
  int objects = 0, entities = 0, blocks = 0;
};

std::string narrow(const CString& text) {
  return platform::utf8From(text);
}

/// Shortest text that reads back as the same number.
std::string number(double value) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return {digits, end};
}

void countApplications(const KvDbObject& object, Counts& applications) {
  resbuf* chain = object.xData();
  for (const resbuf* node = chain; node; node = node->rbnext)
    if (node->restype == 1001) ++applications[narrow(CString(node->resval.rstring))];
  kvutRelRb(chain);
}

Summary summarize(const KvDbDatabase& database) {
  Summary summary;
  summary.version = narrow(kvdbVersionName(database.extras().version));
  summary.codePage = narrow(database.extras().codePage);
  for (KvDbObjectId id : database.allObjects()) {
    const KvDbObject* object = id.stub()->object;
    ++summary.objects;
    countApplications(*object, summary.applications);
    if (object->isKindOf(KvDbBlockTableRecord::desc())) ++summary.blocks;
    const bool isProxy =
        object->isKindOf(KvDbProxyEntity::desc()) || object->isKindOf(KvDbProxyObject::desc());
    if (isProxy && !object->isKindOf(KvDbSequenceEntity::desc()))
      ++summary.unmodelled[narrow(object->fileType())];
    const auto* entity = KvDbEntity::cast(object);
    const bool isMark = object->isKindOf(KvDbBlockBegin::desc()) || object->isKindOf(KvDbBlockEnd::desc()) ||
                        object->isKindOf(KvDbSequenceEnd::desc());
    if (!entity || isMark) continue;
    ++summary.entities;
    ++summary.types[narrow(entity->fileType())];
    ++summary.layers[narrow(entity->layer())];
  }
  return summary;
}

KvDbExtents extentsOf(const KvDbBlockTableRecord& block) {
  KvDbExtents all;
  for (KvDbObjectId id : block.entities()) {
    const auto* entity = KvDbEntity::cast(id.stub()->object);
    KvDbExtents one;
    if (!entity || entity->getGeomExtents(one) != Kvad::eOk || one.isEmpty()) continue;
    const KvGePoint3d &least = one.minPoint(), &greatest = one.maxPoint();
    bool isSound = true;
    for (double number : {least.x, least.y, least.z, greatest.x, greatest.y, greatest.z})
      isSound = isSound && std::fabs(number) <= kKvDbLargestNumber;
    if (isSound) all.addExt(one);
  }
  return all;
}

/// Model space first, then the sheets by their tabs.
std::vector<Space> spacesOf(KvDbDatabase& database) {
  std::vector<Space> spaces;
  for (KvDbObjectId id : database.layoutManager().layouts()) {
    const auto* layout = KvDbLayout::cast(id.stub()->object);
    const KvDbObjectId block = layout ? layout->blockTableRecordId() : KvDbObjectId();
    const auto* record = block.isValid() ? KvDbBlockTableRecord::cast(block.stub()->object) : nullptr;
    if (record) spaces.push_back({narrow(layout->getLayoutName()), extentsOf(*record)});
  }
  return spaces;
}

void printPoint(const KvGePoint3d& point) {
  std::cout << number(point.x) << ", " << number(point.y) << ", " << number(point.z);
}

void printExtents(const std::vector<Space>& spaces) {
  std::cout << "Extents:\n";
  for (const Space& space : spaces) {
    std::cout << "  " << space.name << ": ";
    if (space.extents.isEmpty()) {
      std::cout << "empty\n";
      continue;
    }
    std::cout << "(";
    printPoint(space.extents.minPoint());
    std::cout << ") to (";
    printPoint(space.extents.maxPoint());
    std::cout << ")\n";
  }
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    if (static_cast<unsigned char>(c) < 0x20) continue;
    out += c;
  }
  return out + "\"";
}

void printJson(const char* name, const Counts& counts, bool isLast = false) {
  std::cout << "  " << quoted(name) << ": {";
  const char* comma = "";
  for (const auto& [key, count] : counts) {
    std::cout << comma << quoted(key) << ": " << count;
    comma = ", ";
  }
  std::cout << (isLast ? "}\n" : "},\n");
}

void printExtentsJson(const std::vector<Space>& spaces) {
  std::cout << "  \"extents\": {";
  const char* comma = "";
  for (const Space& space : spaces) {
    std::cout << comma << quoted(space.name) << ": ";
    comma = ", ";
    if (space.extents.isEmpty()) {
      std::cout << "null";
      continue;
    }
    std::cout << "{\"min\": [";
    printPoint(space.extents.minPoint());
    std::cout << "], \"max\": [";
    printPoint(space.extents.maxPoint());
    std::cout << "]}";
  }
  std::cout << "},\n";
}

void print(const char* title, const Counts& counts) {
  if (counts.empty()) return;
  std::cout << title << ":\n";
  for (const auto& [key, count] : counts) std::cout << "  " << key << ": " << count << "\n";
}

/// Strictly first; what that refuses, tolerantly. False when nothing can be read.
bool readSomehow(KvDbDatabase& database, const std::string& drawing, KvIoReport& report) {
  const auto status = kvdbReadDrawing(database, drawing, report, KvIoMode::Recover);
  if (status != Kvad::eOk)
    std::cerr << "korvane: " << drawing << ": " << narrow(report.error.describe()) << "\n";
  return status == Kvad::eOk;
}

std::string counted(std::uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void printAudit(const KvDbAudit& audit) {
  for (const bool isFixed : {false, true}) {
    const char* title = isFixed ? "Fixes:\n" : "Errors:\n";
    for (const KvDbFinding& finding : audit.findings()) {
      if (finding.isFixed != isFixed) continue;
      std::cout << title << "  " << static_cast<int>(finding.fault) << " " << kvdbFaultName(finding.fault)
                << "  " << narrow(finding.text) << "\n";
      title = "";
    }
  }
  const auto unlisted = audit.errorCount() + audit.fixCount() - audit.findings().size();
  if (unlisted > 0) std::cout << "and " << unlisted << " more\n";
  std::cout << counted(audit.errorCount(), "error", "errors") << ", "
            << counted(audit.fixCount(), "fix", "fixes") << "\n";
}

void printAuditJson(const KvDbAudit& audit) {
  std::cout << "{\n  \"errorCount\": " << audit.errorCount() << ",\n  \"fixCount\": " << audit.fixCount();
  for (const bool isFixed : {false, true}) {
    std::cout << (isFixed ? ",\n  \"fixes\": [" : ",\n  \"errors\": [");
    const char* comma = "";
    for (const KvDbFinding& finding : audit.findings()) {
      if (finding.isFixed != isFixed) continue;
      std::cout << comma << "\n    {\"code\": " << static_cast<int>(finding.fault)
                << ", \"name\": " << quoted(kvdbFaultName(finding.fault))
                << ", \"text\": " << quoted(narrow(finding.text)) << "}";
      comma = ",";
    }
    std::cout << "]";
  }
  std::cout << "\n}\n";
}

}  // namespace

int runInfo(const InfoOptions& options) {
  KvDbDatabase database(false);
  KvIoReport report;
  if (!readSomehow(database, options.drawing, report)) return 1;
  const Summary s = summarize(database);
  if (options.json) {
    std::cout << "{\n  \"version\": " << quoted(s.version) << ",\n  \"codePage\": " << quoted(s.codePage)
              << ",\n  \"objects\": " << s.objects << ",\n  \"entities\": " << s.entities
              << ",\n  \"blocks\": " << s.blocks
              << ",\n  \"repairs\": " << report.repairs.size() + report.repairsLeftOut << ",\n";
    printExtentsJson(spacesOf(database));
    printJson("types", s.types);
    printJson("layers", s.layers);
    printJson("applications", s.applications);
    printJson("unmodelled", s.unmodelled, true);
    std::cout << "}\n";
    return 0;
  }
  std::cout << "Version " << s.version << ", code page " << s.codePage << ", " << s.objects << " objects, "
            << s.entities << " entities, " << s.blocks << " blocks\n";
  if (!report.repairs.empty())
    std::cout << "Mended while reading: " << report.repairs.size() + report.repairsLeftOut
              << " (see korvane audit)\n";
  printExtents(spacesOf(database));
  print("Entities by type", s.types);
  print("Entities by layer", s.layers);
  print("Applications with extended data", s.applications);
  print("Types kept whole, not modelled", s.unmodelled);
  return 0;
}

int runAudit(const AuditOptions& options) {
  KvDbDatabase database(false);
  KvIoReport report;
  if (!readSomehow(database, options.drawing, report)) return 1;
  KvDbAudit audit(database, options.fix);
  // What was mended while reading stands in the file unless it is written.
  for (const KvIoMessage& repair : report.repairs) audit.add(repair.fault, repair.describe(), options.fix);
  for (std::uint64_t i = 0; i < report.repairsLeftOut; ++i)
    audit.add(KvDbFault::FileStructure, L"a further fault of the file", options.fix);
  audit.run();
  options.json ? printAuditJson(audit) : printAudit(audit);
  if (options.fix) {
    const auto status = kvdbSaveDrawing(database, options.output, report, kvdbSaveOptionsFor(options.output));
    if (status != Kvad::eOk) {
      std::cerr << "korvane: " << narrow(report.error.text) << "\n";
      return 1;
    }
  }
  return audit.errorCount() == 0 ? 0 : 1;
}

}  // namespace korvane
