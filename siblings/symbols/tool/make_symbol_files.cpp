// make_symbol_files SHARE_TREE: writes the settings file and the template drawings there.
#include <iostream>

#include "host/app/hostapp.h"
#include "platform/files/files.h"
#include "siblings/symbols/settings.h"
#include "siblings/symbols/template.h"

namespace {

bool write(const std::filesystem::path& file, const std::string& bytes) {
  std::filesystem::create_directories(file.parent_path());
  const auto status = platform::writeFile(file, bytes);
  if (!status) std::cerr << status.message() << "\n";
  return static_cast<bool>(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "make_symbol_files SHARE_TREE\n";
    return 2;
  }
  const std::filesystem::path root = argv[1];
  KvHostOptions options;
  options.root = root;
  // Nobody's own settings decide what is written.
  options.environment = std::make_unique<platform::Environment>();
  options.environment->settingsRoot = root / "none";
  const KvHostApp host(std::move(options));
  bool isWritten = write(root / "MCADSetting" / "pro" / "Symbols.ini", kmsymb::formatBuiltInSettings());
  for (kmsymb::Standard standard : kmsymb::kStandards) {
    const std::filesystem::path place = platform::toNative(kmsymb::templatePlace(standard));
    isWritten = write(root / place.relative_path(), kmsymb::formatTemplate(standard)) && isWritten;
  }
  return isWritten ? 0 : 1;
}
