// Tables of frames of any bytes: read, and nested when they are sound.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "module/nest/nester_frame.h"
#include "siblings/resources/mekres.h"
#include "siblings/tools/cli/items_csv.h"

CString IM_GetStringFromRc(unsigned int, int) {
  return CString();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMostItems = 300;
  std::vector<korvane::CsvItem> table;
  std::string error;
  if (!korvane::readItemsCsv({reinterpret_cast<const char*>(data), size}, table, error)) return 0;
  if (table.size() > kMostItems) table.resize(kMostItems);
  std::vector<NestItem> items;
  for (const korvane::CsvItem& item : table) items.push_back({0, 0, item.width, item.height, 0, 0, nullptr});
  const NestParams params = {841, 1189, 0, static_cast<double>(size % 7), 10, 20};
  int sheets = 0;
  NesterFrame(items.data(), static_cast<int>(items.size()), &params, &sheets);
  if (sheets < 1) std::abort();
  return 0;
}
