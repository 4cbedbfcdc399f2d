// Measured values as texts.
#include <algorithm>
#include <cmath>
#include <functional>

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

/// How a length is written.
struct LengthLook {
  enum Unit : std::uint8_t {
    kScientific = 1,
    kDecimal = 2,
    kEngineering = 3,
    kArchitectural = 4,
    kFractional = 5
  };
  /// DIMFRAC.
  enum Fraction : std::uint8_t { kLevel = 0, kDiagonal = 1, kNotStacked = 2 };
  int unit = kDecimal;
  int fraction = kNotStacked;
  int decimals = 0, zeros = 0;
  wchar_t separator = L'.';
  double fractionHeight = 1;  ///< times the text's
};

CString stackOf(const CString& upper, const wchar_t* between, const CString& lower, double height,
                int alignment = 0) {
  CString codes;
  if (alignment != 0) codes.Format(L"\\A%d;", alignment);
  CString size;
  if (height != 1 && height > 0) size.Format(L"\\H%gx;", height);
  return L"{" + codes + size + L"\\S" + upper + between + lower + L";}";
}

/// What DIMZIN says of feet and inches in its low bits: 0 leaves out zero feet and zero inches, 1 nothing, 2
/// zero inches, 3 zero feet.
constexpr int kFeetAndInches = 3;
bool leavesOutFeet(int zeros) {
  return (zeros & kFeetAndInches) == 0 || (zeros & kFeetAndInches) == 3;
}
bool leavesOutInches(int zeros) {
  return (zeros & kFeetAndInches) == 0 || (zeros & kFeetAndInches) == 2;
}

/// Feet and inches, or inches with a fraction of 2 to the power of the decimals.
CString fractional(const LengthLook& look, double value, bool hasFeet) {
  const long parts = 1L << std::clamp(look.decimals, 0, kMostDecimals);
  const double all = std::round(std::fabs(value) * static_cast<double>(parts));
  if (!(all < 1e15)) return scientific(value, look.decimals);
  auto units = static_cast<long long>(all);
  long long above = units % parts, below = parts;
  units /= parts;
  while (above > 0 && above % 2 == 0) above /= 2, below /= 2;
  const long long feet = hasFeet ? units / 12 : 0, inches = units - feet * 12;
  CString text = value < 0 && all > 0 ? L"-" : L"", part;
  const bool showsFeet = hasFeet && (feet > 0 || !leavesOutFeet(look.zeros));
  if (showsFeet) {
    part.Format(L"%lld'", feet);
    text += part;
    if (inches == 0 && above == 0 && leavesOutInches(look.zeros)) return text;
    text += L"-";
  }
  if (inches > 0 || above == 0 || showsFeet) {
    part.Format(L"%lld", inches);
    text += part;
    if (above > 0 && look.fraction == LengthLook::kNotStacked) text += L" ";
  }
  if (above > 0) {
    CString upper, lower;
    upper.Format(L"%lld", above);
    lower.Format(L"%lld", below);
    text += look.fraction == LengthLook::kNotStacked
                ? upper + L"/" + lower
                : stackOf(upper, look.fraction == LengthLook::kDiagonal ? L"#" : L"/", lower,
                          look.fractionHeight);
  }
  return hasFeet ? text + L"\"" : text;
}

CString engineering(const LengthLook& look, double value) {
  // Rounded first, so that twelve inches become a foot.
  const double unit = std::pow(10.0, -std::clamp(look.decimals, 0, kMostDecimals));
  const double all = std::round(std::fabs(value) / unit) * unit, feet = std::floor(all / 12 + 1e-12);
  const double inches = std::max(all - feet * 12, 0.0);
  CString text = value < 0 && all > 0 ? L"-" : L"", part;
  if (feet > 0 || !leavesOutFeet(look.zeros)) {
    part.Format(L"%.0f'", feet);
    text += part;
    if (inches < unit / 2 && leavesOutInches(look.zeros)) return text;
    text += L"-";
  }
  return text + number(inches, look.decimals, look.zeros, L'.') + L"\"";
}

CString lengthText(const LengthLook& look, double value) {
  switch (look.unit) {
    case LengthLook::kScientific:
      return scientific(value, look.decimals);
    case LengthLook::kArchitectural:
      return fractional(look, value, true);
    case LengthLook::kFractional:
      return fractional(look, value, false);
    case LengthLook::kEngineering:
      return engineering(look, value);
    default:
      return number(value, look.decimals, look.zeros, look.separator);
  }
}

wchar_t separatorOf(const KvDbDimVars& vars) {
  const auto separator = static_cast<wchar_t>(vars.whole(V::Dsep));
  return separator > 32 ? separator : L'.';
}

CString angleText(const KvDbDimVars& vars, double radians, int decimals) {
  enum { kDegrees = 0, kMinutes = 1, kGrads = 2, kRadians = 3 };
  const int zeros = vars.whole(V::Azin) << 2;
  const wchar_t point = separatorOf(vars);
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

/// What stands round a value; `place` in `post` stands for the value itself.
struct Surroundings {
  CString post, prefix;
  const wchar_t* place;
};
/// The value with what stands before and behind it.
CString withPost(const Surroundings& round, const CString& value) {
  if (round.post.IsEmpty()) return round.prefix + value;
  CString post = round.post;
  if (post.Find(round.place) < 0) return round.prefix + value + post;
  post.Replace(CString(round.place), value);
  return post;
}

/// A value with its tolerances or limits.
struct ValueLook {
  std::function<CString(double value, bool isStacked)> nominal;
  std::function<CString(double value)> tolerance;
  Surroundings round;
};

/// Tolerances have decimals and zeros of their own; fractions that stand above one another aren't stacked
/// themselves.
ValueLook lengthLook(const LengthLook& look, int decimals, int zeros, Surroundings round) {
  LengthLook level = look, tolerance = look;
  level.fraction = tolerance.fraction = LengthLook::kNotStacked;
  tolerance.decimals = decimals;
  tolerance.zeros = zeros;
  return {[=](double number, bool isStacked) { return lengthText(isStacked ? level : look, number); },
          [=](double number) { return lengthText(tolerance, number); }, std::move(round)};
}

CString valueText(const KvDbDimVars& vars, const ValueLook& look, double value, double plus, double minus) {
  const double height = vars.real(V::Tfac);
  if (vars.on(V::Lim)) {
    const CString upper = look.nominal(value + plus, true), lower = look.nominal(value - minus, true);
    return withPost(look.round, stackOf(upper, L"^ ", lower, height));
  }
  const CString text = withPost(look.round, look.nominal(value, false));
  if (!vars.on(V::Tol) || (plus == 0 && minus == 0)) return text;
  if (plus == minus) return text + L"\x00B1" + look.tolerance(plus);
  const auto signedText = [&](double number) {
    return (number < 0 ? L"-" : number > 0 ? L"+" : L" ") + look.tolerance(std::fabs(number));
  };
  return text +
         stackOf(signedText(plus), L"^", signedText(-minus), height, std::clamp(vars.whole(V::TolJ), 0, 2));
}

double rounded(double value, double unit) {
  return unit > 0 ? std::round(value / unit) * unit : value;
}

CString lengthValueText(const KvDbDimVars& vars, double value, const wchar_t* prefix) {
  LengthLook look{vars.whole(V::Lunit), vars.whole(V::Frac), vars.whole(V::Dec),
                  vars.whole(V::Zin),   separatorOf(vars),   vars.real(V::Tfac)};
  const ValueLook whole =
      lengthLook(look, vars.whole(V::Tdec), vars.whole(V::Tzin), {vars.text(V::Post), prefix, L"<>"});
  value = rounded(value * std::fabs(vars.real(V::Lfac)), vars.real(V::Rnd));
  return valueText(vars, whole, value, vars.real(V::Tp), vars.real(V::Tm));
}

/// DIMALTU: architectural and fractional units stand in it twice, with stacked fractions and without.
LengthLook alternateLook(const KvDbDimVars& vars) {
  constexpr int kPlainArchitectural = 6, kPlainFractional = 7;
  LengthLook look{vars.whole(V::AltU), LengthLook::kNotStacked, vars.whole(V::AltD),
                  vars.whole(V::AltZ), separatorOf(vars),       vars.real(V::Tfac)};
  if (look.unit == LengthLook::kArchitectural || look.unit == LengthLook::kFractional)
    look.fraction = LengthLook::kLevel;
  if (look.unit == kPlainArchitectural) look.unit = LengthLook::kArchitectural;
  if (look.unit == kPlainFractional) look.unit = LengthLook::kFractional;
  return look;
}

CString angleValueText(const KvDbDimVars& vars, double radians, const wchar_t* prefix) {
  const int decimals = vars.whole(V::Adec) >= 0 ? vars.whole(V::Adec) : vars.whole(V::Dec);
  // Tolerances of angles are given in degrees.
  const ValueLook whole{
      [=, &vars](double degrees, bool) { return angleText(vars, kvdxfRadians(degrees), decimals); },
      [&](double degrees) { return angleText(vars, kvdxfRadians(degrees), vars.whole(V::Tdec)); },
      vars.text(V::Post), prefix, L"<>"};
  return valueText(vars, whole, kvdxfDegrees(radians), vars.real(V::Tp), vars.real(V::Tm));
}

}  // namespace

CString kvdbDimensionText(const KvDbDimVars& vars, double value, bool isAngle, const wchar_t* prefix) {
  return isAngle ? angleValueText(vars, value, prefix) : lengthValueText(vars, value, prefix);
}

CString kvdbAlternateDimensionText(const KvDbDimVars& vars, double value, const wchar_t* prefix) {
  const LengthLook look = alternateLook(vars);
  const double factor = vars.real(V::AltF);
  const ValueLook whole =
      lengthLook(look, vars.whole(V::AltTd), vars.whole(V::AltTz), {vars.text(V::APost), prefix, L"[]"});
  value = rounded(value * std::fabs(vars.real(V::Lfac)) * factor, vars.real(V::AltRnd));
  return L"[" + valueText(vars, whole, value, vars.real(V::Tp) * factor, vars.real(V::Tm) * factor) + L"]";
}

CString kvdbWholeDimensionText(const KvDbDimVars& vars, double value, bool isAngle, const wchar_t* prefix) {
  const CString text = kvdbDimensionText(vars, value, isAngle, prefix);
  if (isAngle || !vars.on(V::Alt)) return text;
  // Where the line parts the text, the other units stand below it.
  const bool isParted = text.Right(2) == L"\\X";
  return text + (isParted ? L"" : L" ") + kvdbAlternateDimensionText(vars, value, prefix);
}

CString kvdbDimensionContents(const KvDbDimVars& vars, const CString& text, double value, bool isAngle,
                              const wchar_t* prefix) {
  if (text == L" ") return {};
  if (text.IsEmpty()) return kvdbWholeDimensionText(vars, value, isAngle, prefix);
  CString whole = text;
  if (!isAngle && text.Find(L"[]") >= 0) {
    whole.Replace(CString(L"<>"), kvdbDimensionText(vars, value, isAngle, prefix));
    whole.Replace(CString(L"[]"), kvdbAlternateDimensionText(vars, value, prefix));
  } else {
    whole.Replace(CString(L"<>"), kvdbWholeDimensionText(vars, value, isAngle, prefix));
  }
  return whole;
}
