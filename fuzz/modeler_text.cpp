// Text of a modeller, of any characters: its edges have finite coordinates.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/database/modelertext.h"
#include "platform/text/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring text = platform::fromUtf8({reinterpret_cast<const char*>(data), size});
  if (const auto model = kvdbReadModelerText(text))
    for (const KvGeCurve3d::Ptr& edge : model->edges) {
      const KvGePoint3d p = edge->startPoint();
      if (std::isnan(p.x) || std::isnan(p.y) || std::isnan(p.z)) std::abort();
    }
  kvdbModelerDecoded(kvdbModelerEncoded(text));
  return 0;
}
