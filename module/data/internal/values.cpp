#include "module/data/internal/values.h"

#include "module/data/internal/decimal.h"
#include "platform/text/number.h"

namespace mek {
namespace {

bool isType(const CString& type, const wchar_t* name) {
  return type.CompareNoCase(name) == 0;
}

}  // namespace

bool sortsAsNumber(const CString& type) {
  return isType(type, L"int") || isType(type, L"long") || isType(type, L"real");
}

bool aggregatesAsNumber(const CString& type) {
  return isType(type, L"real") || isType(type, L"int");
}

_bstr_t textOf(const _adoFields* item) {
  if (!item) return {};
  return item->value.isText() ? item->value.bstr() : _bstr_t(item->value.text());
}

double decimalNumber(std::wstring_view text) {
  const bool isNegative = text.starts_with(L'-');
  double value = 0;
  if (!exactDecimal(text.substr(isNegative ? 1 : 0), value)) return platform::parseDouble(text);
  return isNegative ? -value : value;
}

}  // namespace mek
