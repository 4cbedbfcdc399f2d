// A symbol module with holes: exports that are missing, null buffers, numbers beyond the low byte.
#include <cstddef>
#include <cwchar>

namespace {

wchar_t* copyOf(const wchar_t* text) {
  const std::size_t size = std::wcslen(text) + 1;
  return std::wmemcpy(new wchar_t[size], text, size);
}

}  // namespace

#define FAKE_API extern "C" __attribute__((visibility("default")))

FAKE_API wchar_t* getStandardName() {
  return copyOf(L"ansi");
}
FAKE_API wchar_t* getCurrentDimStyleName() {
  return nullptr;
}
FAKE_API wchar_t* getTemplateFileName() {
  return nullptr;
}
FAKE_API wchar_t* kvmExGetLayerName(int kind, int) {
  constexpr int kCenter = 50;
  return kind == kCenter ? copyOf(L"Fake Center") : nullptr;
}
FAKE_API int setPropertyFromConfig(void*, int) {
  constexpr int kLowByteZero = 0x100;
  return kLowByteZero;
}
FAKE_API int setDimensionProperty(void*) {
  constexpr int kLowByteSet = 0x101;
  return kLowByteSet;
}
