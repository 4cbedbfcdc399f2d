// Paragraph text of any characters: its layout holds what it was given, and its size is a number.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/lettering/paragraph.h"
#include "platform/text/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  KvLtParagraphLook look;
  look.look.height = 2.5;
  look.width = data[0];
  look.attachment = data[1] % 12;
  look.isSpacingExact = (data[1] & 0x80) != 0;
  const CString contents(platform::fromUtf8({reinterpret_cast<const char*>(data + 2), size - 2}));
  const KvLtParagraphs laid = kvltLayParagraphs(look, contents.view());
  const bool isSound = std::isfinite(laid.actualWidth) && std::isfinite(laid.actualHeight) &&
                       laid.actualWidth >= 0 && laid.actualHeight >= 0 && laid.lines >= 1;
  if (!isSound) std::abort();
  for (const KvLtRun& run : laid.runs)
    if (run.text.empty() || !std::isfinite(run.at.x) || run.line >= laid.lines) std::abort();
  kvltPlainText(contents.view());
  return 0;
}
