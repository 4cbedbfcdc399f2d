// Measured values as texts.
#include <algorithm>
#include <cmath>

#include "host/entities/internal/dimlayout.h"

namespace {

using V = KvDbDimVar;

/// Bits of DIMZIN and DIMTZIN for decimal numbers, of DIMAZIN shifted by two.
constexpr int kNoLeadingZero = 4, kNoTrailingZeros = 8;
constexpr int kMostDecimals = 8;

CString number(double value, int decimals, int zeros, wchar_t separator) {
  CString text;
  text.Format(L"%.*f", std::clamp(decimals, 0, kMostDecimals), value);
  if (zeros & kNoTrailingZeros && text.Find(L'.') >= 0) {
    text.TrimRight(L"0");
    text.TrimRight(L".");
  }
  if (text == L"-0") text = L"0";
  if (zeros & kNoLeadingZero) {
    if (text.GetLength() > 2 && text.Left(2) == L"0.") text = text.Mid(1);
    if (text.GetLength() > 3 && text.Left(3) == L"-0.") text = L"-" + text.Mid(2);
  }
  if (separator != L'.') text.Replace(CString(L"."), CString(std::wstring(1, separator)));
  return text;
}

CString scientific(double value, int decimals) {
  CString text;
  text.Format(L"%.*E", std::clamp(decimals, 0, kMostDecimals), value);
  return text;
}

/// Feet and inches, or inches with a fraction of 2 to the power of the decimals.
CString fractional(double value, int decimals, bool hasFeet) {
  const long parts = 1L << std::clamp(decimals, 0, kMostDecimals);
  const double all = std::round(std::fabs(value) * static_cast<double>(parts));
  if (!(all < 1e15)) return scientific(value, decimals);
  auto units = static_cast<long long>(all);
  long long above = units % parts, below = parts;
  units /= parts;
  while (above > 0 && above % 2 == 0) above /= 2, below /= 2;
  CString text = value < 0 ? L"-" : L"";
  const long long feet = hasFeet ? units / 12 : 0, inches = units - feet * 12;
  CString part;
  if (feet > 0) {
    part.Format(L"%lld'-", feet);
    text += part;
  }
  part.Format(L"%lld", inches);
  text += part;
  if (above > 0) {
    part.Format(L" %lld/%lld", above, below);
    text += part;
  }
  return hasFeet ? text + L"\"" : text;
}

CString lengthText(const KvDbDimVars& vars, double value, int decimals, int zeros) {
  enum { kScientific = 1, kDecimal = 2, kEngineering = 3, kArchitectural = 4, kFractional = 5 };
  const auto separator = static_cast<wchar_t>(vars.whole(V::Dsep));
  switch (vars.whole(V::Lunit)) {
    case kScientific:
      return scientific(value, decimals);
    case kArchitectural:
      return fractional(value, decimals, true);
    case kFractional:
      return fractional(value, decimals, false);
    case kEngineering: {
      const double feet = std::floor(std::fabs(value) / 12);
      CString text;
      text.Format(L"%s%.0f'-", value < 0 ? L"-" : L"", feet);
      return text + number(std::fabs(value) - feet * 12, decimals, zeros, L'.') + L"\"";
    }
    default:
      return number(value, decimals, zeros, separator > 32 ? separator : L'.');
  }
}

CString angleText(const KvDbDimVars& vars, double radians, int decimals) {
  enum { kDegrees = 0, kMinutes = 1, kGrads = 2, kRadians = 3 };
  const int zeros = vars.whole(V::Azin) << 2;
  const auto separator = static_cast<wchar_t>(vars.whole(V::Dsep));
  const wchar_t point = separator > 32 ? separator : L'.';
  const double degrees = kvdxfDegrees(radians);
  switch (vars.whole(V::Aunit)) {
    case kMinutes: {
      // As many parts as decimals: 0 degrees, 1 to 2 minutes, 3 to 4 seconds.
      const long whole = std::lround(degrees * (decimals == 0 ? 1 : decimals <= 2 ? 60 : 3600));
      CString text;
      if (decimals == 0)
        text.Format(L"%ld\x00B0", whole);
      else if (decimals <= 2)
        text.Format(L"%ld\x00B0%ld'", whole / 60, whole % 60);
      else
        text.Format(L"%ld\x00B0%ld'%ld\"", whole / 3600, whole / 60 % 60, whole % 60);
      return text;
    }
    case kGrads:
      return number(degrees / 0.9, decimals, zeros, point) + L"g";
    case kRadians:
      return number(radians, decimals, zeros, point) + L"r";
    default:
      return number(degrees, decimals, zeros, point) + L"\x00B0";
  }
}

CString withPost(const KvDbDimVars& vars, const CString& value, const CString& prefix) {
  CString post = vars.text(V::Post);
  if (post.IsEmpty()) return prefix + value;
  if (post.Find(L"<>") < 0) return prefix + value + post;
  post.Replace(CString(L"<>"), value);
  return post;
}

}  // namespace

CString kvdbDimensionText(const KvDbDimVars& vars, double value, bool isAngle, const wchar_t* prefix) {
  const int adec = vars.whole(V::Adec);
  const int decimals = isAngle && adec >= 0 ? adec : vars.whole(V::Dec);
  if (!isAngle) {
    value *= std::fabs(vars.real(V::Lfac));
    if (const double unit = vars.real(V::Rnd); unit > 0) value = std::round(value / unit) * unit;
  }
  const auto one = [&](double number, int places, int zeros) {
    // Tolerances of angles are given in degrees.
    return isAngle ? angleText(vars, kvdxfRadians(number), places) : lengthText(vars, number, places, zeros);
  };
  const double shown = isAngle ? kvdxfDegrees(value) : value;
  const double plus = vars.real(V::Tp), minus = vars.real(V::Tm);
  if (vars.on(V::Lim)) {
    const CString upper = one(shown + plus, decimals, vars.whole(V::Zin)),
                  lower = one(shown - minus, decimals, vars.whole(V::Zin));
    return withPost(vars, L"{\\S" + upper + L"^ " + lower + L";}", prefix);
  }
  const CString nominal =
      isAngle ? angleText(vars, value, decimals) : lengthText(vars, value, decimals, vars.whole(V::Zin));
  CString text = withPost(vars, nominal, prefix);
  if (!vars.on(V::Tol) || (plus == 0 && minus == 0)) return text;
  const int places = vars.whole(V::Tdec), zeros = vars.whole(V::Tzin);
  if (plus == minus) return text + L"\x00B1" + one(plus, places, zeros);
  const auto signedText = [&](double number) {
    return (number < 0 ? L"-" : number > 0 ? L"+" : L" ") + one(std::fabs(number), places, zeros);
  };
  CString height;
  if (vars.real(V::Tfac) != 1) height.Format(L"\\H%gx;", vars.real(V::Tfac));
  return text + L"{" + height + L"\\S" + signedText(plus) + L"^" + signedText(-minus) + L";}";
}
