#include <dlfcn.h>

#include "siblings/resources/internal/tree.h"

namespace mekres {

std::filesystem::path installedRoot() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&installedRoot), &info) == 0 || !info.dli_fname) return {};
  std::error_code error;
  auto file = std::filesystem::canonical(info.dli_fname, error);
  return error ? std::filesystem::path() : file.parent_path().parent_path();
}

std::filesystem::path dataFolder() {
  return installedRoot() / "share" / "korvane" / "resources";
}

}  // namespace mekres
