// Linetype files of any bytes.
#include <cstdlib>

#include "host/io/linetype_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<KvIoLinetype> linetypes;
  KvIoMessage error;
  const bool isWhole = kvioParseLinetypes({reinterpret_cast<const char*>(data), size}, linetypes, error);
  if (!isWhole && (error.text.IsEmpty() || error.line == 0)) std::abort();
  for (const KvIoLinetype& linetype : linetypes)
    if (linetype.dashes.size() < 2 || linetype.dashes.size() != linetype.textStyles.size()) std::abort();
  return 0;
}
