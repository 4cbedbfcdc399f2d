// Settings files of the symbol module, of any bytes: every layer keeps a look that a drawing takes.
#include <cstdlib>

#include "host/database/symboltable.h"
#include "siblings/symbols/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kmsymb;
  std::vector<SettingsFault> faults;
  const SymbolSettings settings = parseSettings({reinterpret_cast<const char*>(data), size}, faults);
  for (const SettingsFault& fault : faults)
    if (fault.line <= 0 || fault.text.IsEmpty()) std::abort();
  for (Standard standard : kStandards)
    for (const KindRow& kind : kindRows()) {
      const LayerId id = settings.layerOfKind.at(kind.kind);
      const LayerLook& look = settings.layer(standard, id.row).look;
      if (!kvdbIsSymbolName(settings.nameOf(standard, id).view()) ||
          !kvdbIsSymbolName(look.linetype.view()) || look.color < 1 || look.color > 255 ||
          !isLineWeight(look.lineWeight))
        std::abort();
    }
  return 0;
}
