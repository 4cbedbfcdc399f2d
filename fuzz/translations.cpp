// Message translation files, then texts with macros, from the same bytes.
#include <cstdint>
#include <string_view>

#include "module/core/translate.h"
#include "platform/text/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const CString text(platform::fromUtf16Bytes(std::string_view(reinterpret_cast<const char*>(data), size)));
  mek::releaseTranslations();
  mek::addTranslations(L"F", text);
  double value = 0;
  IM_TranslateGenMsg(text, &value);
  IM_TranslateGenMsg(L"(GENMSG F 1){2.5}", &value);
  mek::releaseTranslations();
  return 0;
}
