#include "platform/text/variant.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/text/number.h"

namespace {

constexpr double kCurrencyScale = 10000.0;

CString wideAscii(const std::string& digits) {
  return CString(std::wstring(digits.begin(), digits.end()));
}

/// Out of range: the nearest limit; not a number: 0.
std::int64_t roundedCurrency(double value) {
  constexpr double kLimit = 9.2e18;
  const double scaled = std::nearbyint(value * kCurrencyScale);
  if (std::isnan(scaled)) return 0;
  return static_cast<std::int64_t>(std::fmin(std::fmax(scaled, -kLimit), kLimit));
}

}  // namespace

_bstr_t::Block* _bstr_t::allocate(std::size_t length) {
  void* memory = std::malloc(sizeof(Block) + (length + 1) * sizeof(wchar_t));
  if (!memory) throw std::bad_alloc();
  auto* block = new (memory) Block{{1}, length};
  block->text()[length] = L'\0';
  return block;
}

_bstr_t::Block* _bstr_t::make(std::wstring_view text) {
  if (text.empty()) return nullptr;
  Block* block = allocate(text.size());
  std::memcpy(block->text(), text.data(), text.size() * sizeof(wchar_t));
  return block;
}

void _bstr_t::destroy(Block* block) {
  block->~Block();
  std::free(block);
}

_variant_t::_variant_t(double value, VARTYPE type) : number_{.real = value} {
  vt = type == VT_R4 || type == VT_DATE || type == VT_CY ? type : static_cast<VARTYPE>(VT_R8);
  if (vt == VT_R4) number_.real = static_cast<double>(static_cast<float>(value));
  if (vt == VT_CY) number_.integer = roundedCurrency(value);
}

std::int64_t _variant_t::integer() const {
  return vt == VT_I2 || vt == VT_I4 || vt == VT_INT || vt == VT_BOOL ? number_.integer : 0;
}

CString _variant_t::text() const {
  switch (vt) {
    case VT_BSTR:
      return text_.text();
    case VT_I2:
    case VT_I4:
    case VT_INT:
    case VT_BOOL:
      return wideAscii(std::to_string(number_.integer));
    case VT_R4: {
      char digits[32];
      const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<float>(number_.real)).ptr;
      return wideAscii(std::string(digits, end));
    }
    case VT_R8:
    case VT_DATE:
      return wideAscii(platform::shortest(number_.real));
    case VT_CY:
      return wideAscii(platform::shortest(static_cast<double>(number_.integer) / kCurrencyScale));
    default:
      return {};
  }
}

bool operator==(const _variant_t& a, const _variant_t& b) {
  if (a.vt != b.vt) return false;
  if (a.vt == VT_EMPTY || a.vt == VT_NULL) return true;
  if (a.vt == VT_BSTR) return a.text_ == b.text_;
  const bool isReal = a.vt == VT_R4 || a.vt == VT_R8 || a.vt == VT_DATE;
  return isReal ? a.number_.real == b.number_.real : a.number_.integer == b.number_.integer;
}
