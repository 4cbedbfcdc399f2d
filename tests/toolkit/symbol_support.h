#pragma once
// A host whose symbol module is the real one, a fake one, or none.
#include <filesystem>

#include "platform/text/utf.h"
#include "tests/toolkit/support.h"

namespace test {

class SymbolHost : public ToolkitTest {
 protected:
  enum class Module { Real, Fake, Broken, None };
  SymbolHost() { use(Module::None); }
  ~SymbolHost() override { use(Module::None); }

  /// The test's own tree takes that module; bare names are searched there too.
  void use(Module which) {
    namespace fs = std::filesystem;
    const fs::path root = KORVANE_TOOLKIT_TREE, modules = root / "Professional" / "KVX8x64";
    const fs::path file = modules / "KmSymbb.kvx", data = root / "share";
    fs::remove(file);
    fs::remove_all(data);
    host->environment().modulePath = {modules};
    if (which == Module::None) return;
    if (which == Module::Broken) {
      KvDbDatabase empty(true, true);
      KvIoReport report;
      kvdbSaveDrawing(empty, file, report);
      return;
    }
    const fs::path tree = KORVANE_TREE_DIR;
    fs::path source = tree / "Professional" / "KVX8x64" / "KmSymbb.kvx";
#ifdef KORVANE_FAKE_SYMBOLS
    if (which == Module::Fake) source = KORVANE_FAKE_SYMBOLS;
#endif
    fs::copy_file(source, file);
    fs::create_directories(data / "korvane" / "templates");
    for (const auto& entry : fs::directory_iterator(tree / "share" / "korvane" / "templates"))
      fs::copy(entry.path(), data / "korvane" / "templates" / entry.path().filename());
  }
};

}  // namespace test
