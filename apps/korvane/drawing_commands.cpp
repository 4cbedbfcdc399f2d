#include "apps/korvane/drawing_commands.h"

#include <iostream>
#include <map>
#include <set>

#include "host/database/block.h"
#include "host/io/drawing_file.h"
#include "platform/text/cstring.h"

namespace korvane {
namespace {

using Counts = std::map<std::string, int>;

/// What stands in a drawing, counted.
struct Summary {
  std::string version, codePage;
  Counts types, layers, applications, unmodelled;
  int objects = 0, entities = 0, blocks = 0;
};

std::string narrow(const CString& text) {
  return platform::utf8From(text);
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
  for (const KvIoMessage& repair : report.repairs) std::cout << narrow(repair.describe()) << "\n";
  if (report.repairsLeftOut > 0) std::cout << "and " << report.repairsLeftOut << " more\n";
  const auto total = report.repairs.size() + report.repairsLeftOut;
  std::cout << total << (total == 1 ? " fault" : " faults") << (options.fix ? " mended" : " found") << "\n";
  if (!options.fix) return total == 0 ? 0 : 1;
  if (kvdbSaveDrawing(database, options.output, report, kvdbSaveOptionsFor(options.output)) == Kvad::eOk)
    return 0;
  std::cerr << "korvane: " << narrow(report.error.text) << "\n";
  return 1;
}

}  // namespace korvane
