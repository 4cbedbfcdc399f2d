#include "module/core/numbers.h"

#include <algorithm>
#include <cmath>

#include "module/core/encoding.h"
#include "module/core/text.h"
#include "platform/text/codepage.h"
#include "platform/text/number.h"

namespace {

constexpr wchar_t kWideZero = 0xFF10, kWideNine = 0xFF19;
constexpr wchar_t kWidePoint = 0xFF0E, kWideMinus = 0xFF0D, kWidePlus = 0xFF0B;
constexpr int kMostDecimals = 9;

bool isWideDigit(wchar_t c) {
  return c >= kWideZero && c <= kWideNine;
}
bool isPoint(wchar_t c) {
  return c == L'.' || c == kWidePoint;
}
bool isMinus(wchar_t c) {
  return c == L'-' || c == kWideMinus;
}
bool isPlus(wchar_t c) {
  return c == L'+' || c == kWidePlus;
}
bool isFullWidth(wchar_t c) {
  return c >= 0xFF01 && c <= 0xFF5E;
}

CString halfDigits(CString text) {
  for (int i = 0; i < text.GetLength(); ++i)
    if (isWideDigit(text.GetAt(i))) text.SetAt(i, static_cast<wchar_t>(text.GetAt(i) - kWideZero + L'0'));
  return text;
}

bool isPermitted(wchar_t c, int allowPlus, int allowFullWidth) {
  if ((c >= L'0' && c <= L'9') || c == L'-' || c == L'.') return true;
  if (allowFullWidth && (isWideDigit(c) || c == kWidePoint || c == kWideMinus)) return true;
  return allowPlus && (c == L'+' || (allowFullWidth && c == kWidePlus));
}

}  // namespace

int IM_IsStringReal(CString text, int, int allowPlus, int allowFullWidth) {
  const int length = text.GetLength();
  int points = 0;
  for (int i = 0; i < length; ++i) {
    const wchar_t c = text.GetAt(i);
    if (!isPermitted(c, allowPlus, allowFullWidth)) return 0;
    if (i > 0 && (isMinus(c) || isPlus(c))) return 0;
    points += isPoint(c);
  }
  if (length == 0 || points > 1) return 0;
  return length > 1 || !(isMinus(text.GetAt(0)) || isPoint(text.GetAt(0)));
}

int IM_IsStringInteger(CString text, int firstFlag, int allowPlus, int allowFullWidth) {
  if (text.Find(L'.') >= 0 || text.Find(kWidePoint) >= 0) return 0;
  return IM_IsStringReal(text, firstFlag, allowPlus, allowFullWidth);
}

int IM_IsStringFraction(CString text, double* value, int firstFlag, int allowPlus, int allowFullWidth) {
  std::vector<CString> parts;
  if (IM_SplitString(text, L"/", parts) != 2) return 0;
  CString& above = parts[0];
  const CString& below = parts[1];
  if (!IM_IsStringInteger(above, firstFlag, allowPlus, allowFullWidth)) return 0;
  if (!IM_IsStringInteger(below, firstFlag, 0, allowFullWidth) || isMinus(below.GetAt(0))) return 0;
  above.Replace(kWidePlus, L'+');  // which IM_tstof doesn't read
  if (value) *value = IM_tstof(above) / IM_tstof(below);
  return 1;
}

int IM_IsStringChinese(CString text) {
  const CStringA bytes = IM_CStringW2A(text, 0);
  for (int i = 0; i < bytes.GetLength(); ++i)
    if (platform::isLeadByte(static_cast<unsigned char>(bytes.GetAt(i)), 0)) return 1;
  return 0;
}

CString Im_StringFullToHalf(CString text) {
  return halfDigits(text);
}

double IM_tstof(CString text) {
  CString half = halfDigits(text);
  half.Replace(kWidePoint, L'.');
  half.Replace(kWideMinus, L'-');
  return _wtof(half);
}

int IM_StringToInt(CString const& text) {
  return _wtoi(halfDigits(text));
}

double IM_StringToDouble(CString const& text) {
  const CString half = halfDigits(text);
  double quotient = 0;
  return IM_IsStringFraction(half, &quotient, 1, 1, 1) ? quotient : _wtof(half);
}

CString IM_IntToString(int value) {
  CString text;
  text.Format(L"%d", value);
  return text;
}

CString IM_DoubleToString(double value, int decimals, int keepZeros) {
  CString text;
  text.Format(L"%.*f", std::clamp(decimals, 0, kMostDecimals), value);
  if (!keepZeros && text.Find(L'.') >= 0) text.TrimRight(L'0').TrimRight(L'.');
  return text;
}

double IM_TrimDouble(double value, int decimals) {
  const double factor = std::pow(10.0, decimals);
  return std::trunc(value * factor + 0.5) / factor;
}

double CDoubleStringFormater::calculate() const {
  if (!IM_IsStringReal(m_strText, 0, 1, 1)) return m_dValue;
  double whole = 0, fraction = 0, place = 1;
  bool behindPoint = false;
  for (int i = 0; i < m_strText.GetLength(); ++i) {
    const wchar_t c = m_strText.GetAt(i);
    if (isPoint(c)) behindPoint = true;
    if (!isWideDigit(c) && !(c >= L'0' && c <= L'9')) continue;
    const int digit = isWideDigit(c) ? static_cast<int>(c - kWideZero) : static_cast<int>(c - L'0');
    if (behindPoint) {
      // Collected as a whole number, so that the one division at the end rounds once.
      fraction = fraction * 10 + digit;
      place *= 10;
    } else {
      whole = whole * 10 + digit;
    }
  }
  const double magnitude = whole + fraction / place;
  return isMinus(m_strText.GetAt(0)) ? -magnitude : magnitude;
}

CString CItemStringFormater::formatFromList(int number) const {
  const long long distance = static_cast<long long>(number) - m_nFirst;
  if (distance % m_nStep != 0) return CString();
  const long long index = distance / m_nStep;
  return index < 0 || index >= static_cast<long long>(m_aryList.size())
             ? CString()
             : m_aryList[static_cast<std::size_t>(index)];
}

bool CSBCCaseMatch::SplitStringAtDot(CString const& text) {
  m_strLeft = text;
  m_strRight.Empty();
  for (int i = 0; i < text.GetLength(); ++i) {
    if (!isPoint(text.GetAt(i))) continue;
    m_strLeft = text.Left(i);
    m_strRight = text.Mid(i + 1);
    return true;
  }
  return false;
}

bool CSBCCaseMatch::IsSBCCaseMatch() const {
  const CString both = m_strLeft + m_strRight;
  for (int i = 1; i < both.GetLength(); ++i)
    if (isFullWidth(both.GetAt(i)) != isFullWidth(both.GetAt(0))) return false;
  return true;
}
