// Any bytes in any page: what is decoded and encoded without loss decodes to the same text again.
#include "platform/text/codepage.h"

#include <cstdint>
#include <cstdlib>

#include "platform/text/codepage_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr std::size_t kPages = std::size(platform::kCodePages);
  const std::size_t choice = data[0] % (kPages + 2);
  const std::uint32_t page = choice < kPages    ? platform::kCodePages[choice].number
                             : choice == kPages ? 65001
                                                : 77777;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);

  bool lossy = false;
  const std::wstring text = platform::fromCodePage(bytes, page, &lossy);
  if (text.size() > bytes.size()) std::abort();
  const std::string encoded = platform::toCodePage(text, page, &lossy);
  if (!lossy && platform::fromCodePage(encoded, page) != text) std::abort();
  for (const char byte : bytes) platform::isLeadByte(static_cast<unsigned char>(byte), page);
  platform::codePageFromDrawingName(bytes);
  return 0;
}
