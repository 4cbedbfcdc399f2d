// Shape files of any bytes: every shape ends, at numbers, and what can be compiled reads as the same shapes.
#include <cmath>
#include <cstdlib>

#include "host/lettering/shapes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  KvLtShapeError error;
  const auto file = kvltParseShapes({reinterpret_cast<const char*>(data), size}, error);
  if (!file) {
    if (error.text.empty()) std::abort();
    return 0;
  }
  int left = 64;
  for (const auto& [number, shape] : file->shapes()) {
    if (--left < 0) break;
    const KvLtGlyph& glyph = file->glyph(number);
    if (!std::isfinite(glyph.advance) || !std::isfinite(glyph.high.x) || !std::isfinite(glyph.low.y))
      std::abort();
  }
  if (file->shapes().size() > 1000) return 0;
  const std::string compiled = kvltCompileShapes(*file);
  if (compiled.empty()) return 0;
  const auto again = kvltParseShapes(compiled, error);
  if (again && again->shapes().size() != file->shapes().size()) std::abort();
  return 0;
}
