#include "module/toolkit/inputs.h"

#include "host/editor/prompts.h"

int IM_EdGetInput(wchar_t* buffer, std::size_t size) {
  return kvedGetInput(buffer, size);
}
int IM_EdGetKword(LPCWSTR prompt, wchar_t* buffer, std::size_t size) {
  return kvedGetKword(prompt, buffer, size);
}
int IM_EdGetString(int allowBlanks, LPCWSTR prompt, wchar_t* buffer, std::size_t size) {
  return kvedGetString(allowBlanks, prompt, buffer, size);
}

// The shorter of two hexadecimal texts first, else the lesser one: that is the order of the numbers.
bool IM_pfnCompareObjectId(KvDbObjectId a, KvDbObjectId b) {
  return a.handle() < b.handle();
}
