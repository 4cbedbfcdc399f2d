#include "platform/text/casemap.h"

#include <algorithm>
#include <iterator>

#include "platform/text/casemap_table.h"

namespace platform {
namespace {

template <int N>
wchar_t mapped(const CaseRange (&table)[N], wchar_t c) {
  const int code = static_cast<int>(c);
  auto row = std::upper_bound(std::begin(table), std::end(table), code,
                              [](int value, const CaseRange& range) { return value < range.first; });
  if (row == std::begin(table)) return c;
  --row;
  if (code > row->last || (code - row->first) % row->step != 0) return c;
  return static_cast<wchar_t>(code + row->delta);
}

}  // namespace

wchar_t toUpper(wchar_t c) {
  if (c < 0x80) return c >= L'a' && c <= L'z' ? c - 0x20 : c;
  return mapped(kToUpper, c);
}

wchar_t toLower(wchar_t c) {
  if (c < 0x80) return c >= L'A' && c <= L'Z' ? c + 0x20 : c;
  return mapped(kToLower, c);
}

wchar_t foldCase(wchar_t c) {
  if (c < 0x80) return toLower(c);
  return toLower(toUpper(c));
}

}  // namespace platform
