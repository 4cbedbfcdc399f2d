#include "module/data/internal/values.h"

#include "platform/text/number.h"

namespace mek {
namespace {

bool isType(const CString& type, const wchar_t* name) {
  return type.CompareNoCase(name) == 0;
}

/// Powers of ten and digits for which a quotient of exact doubles is the nearest double.
constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::size_t kExactDigits = 15;

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
  if (text.empty() || text.size() > kExactDigits) return platform::parseDouble(text);
  const bool isNegative = text.front() == L'-';
  std::int64_t mantissa = 0;
  std::size_t decimals = 0;
  bool point = false;
  for (std::size_t i = isNegative ? 1 : 0; i < text.size(); ++i) {
    const wchar_t c = text[i];
    if (c == L'.' && !point) {
      point = true;
    } else if (c >= L'0' && c <= L'9') {
      mantissa = mantissa * 10 + (c - L'0');
      decimals += point;
    } else {
      return platform::parseDouble(text);
    }
  }
  const double value = static_cast<double>(mantissa) / kPowersOfTen[decimals];
  return isNegative ? -value : value;
}

}  // namespace mek
