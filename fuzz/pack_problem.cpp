// Problem files of any bytes: read, and solved within small limits when they are sound.
#include <cstdint>
#include <string_view>

#include "module/nest/pack_problem.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  mek::PackInstance instance;
  std::string error;
  if (!mek::readPackProblem({reinterpret_cast<const char*>(data), size}, instance, error)) return 0;
  for (const int packingType : {0, 1}) mek::solvePackInstance(instance, {1, 1, 1}, packingType);
  return 0;
}
