#include "siblings/symbols/settings.h"

#include <algorithm>
#include <cstdlib>

#include "host/base/resbuf.h"
#include "host/base/rxdictionary.h"
#include "host/editor/editor.h"
#include "host/editor/sysvars.h"
#include "platform/files/files.h"
#include "platform/system/dynamic_library.h"

namespace kmsymb {
namespace {

constexpr const wchar_t *kFileName = L"Symbols.ini", *kInstalledFolder = L"\\MCADSetting\\pro\\",
                        *kUserFolder = L"\\Korvm\\MCADSetting\\pro\\";
constexpr std::uint64_t kLargestFile = 1 << 20;

/// The user's folder of settings; empty when it isn't there.
CString userFolder() {
  resbuf value{};
  if (kvedGetVar(L"ROAMABLEROOTPREFIX", &value) != RTNORM) return {};
  CString folder;
  if (value.restype == RTSTR && value.resval.rstring) {
    folder = value.resval.rstring;
    std::free(value.resval.rstring);
  }
  if (folder.IsEmpty()) return {};
  folder.TrimRight(L'\\');
  folder += kUserFolder;
  return platform::isFolder(folder) ? folder : CString();
}

CString settingsFile() {
  const CString root = productRoot();
  const CString installed = root.IsEmpty() ? CString() : root + kInstalledFolder + kFileName;
  const CString folder = userFolder();
  if (folder.IsEmpty()) return platform::isFile(installed) ? installed : CString();
  const CString own = folder + kFileName;
  if (!platform::isFile(own) && platform::isFile(installed)) platform::copyFile(installed, own, false);
  if (platform::isFile(own)) return own;
  return platform::isFile(installed) ? installed : CString();
}

struct Current {
  CString file;
  std::string bytes;
  SymbolSettings settings;
};

Current& current() {
  static Current kept;
  return kept;
}

}  // namespace

void tellFault(const CString& file, const SettingsFault& fault) {
  CString text;
  text.Format(L"%s(%d): %s; the built-in value is used", file, fault.line, fault.text);
  // The library comes and goes with each call; the registry stays as long as the host does.
  KvRxDictionary* registry = kvrxSysRegistry();
  const CString mark = L"KmSymbb: " + text;
  if (registry->at(mark)) return;
  registry->atPut(mark, registry);
  kvutPrintf(L"\n%s", text);
}

const SymbolSettings& currentSettings() {
  Current& kept = current();
  const CString file = settingsFile();
  std::string bytes;
  std::vector<SettingsFault> faults;
  if (!file.IsEmpty())
    if (const auto status = platform::readFile(file, bytes, kLargestFile); !status)
      faults.push_back({0, L"the file can't be read"});
  if (faults.empty() && file == kept.file && bytes == kept.bytes) return kept.settings;
  kept = {file, bytes, parseSettings(bytes, faults)};
  for (const SettingsFault& fault : faults) tellFault(file, fault);
  return kept.settings;
}

const CString& currentSettingsFile() {
  return current().file;
}

CString productRoot() {
  CString file = platform::moduleFileOf(reinterpret_cast<const void*>(&productRoot));
  constexpr int kLevels = 3;
  for (int level = 0; level < kLevels; ++level) file = file.Left(std::max(file.ReverseFind(L'\\'), 0));
  return file;
}

}  // namespace kmsymb
