#include "host/editor/units.h"

#include <algorithm>
#include <cmath>

#include "host/geometry/tolerance.h"
#include "platform/text/number.h"

namespace {

enum LengthUnit { kScientific = 1, kDecimal = 2, kEngineering = 3, kArchitectural = 4, kFractional = 5 };
enum AngleUnit { kDegrees = 0, kDegreesMinutes = 1, kGrads = 2, kRadians = 3, kSurveyor = 4 };
constexpr double kInchesOfFoot = 12, kHalfTurn = 180;
/// Beyond this whole numbers aren't exact any more, and fractions mean nothing.
constexpr double kMostExact = 1e15;

CString fixedText(double value, int decimals) {
  CString text;
  text.Format(L"%.*f", decimals, value);
  if (text.GetAt(0) == L'-' && platform::parseDouble(text.view()) == 0) return text.Mid(1);
  return text;
}

CString wholeText(long long value) {
  CString text;
  text.Format(L"%lld", value);
  return text;
}

/// A size of so many parts of 2 to the power of `places`, as a mixed number; a lone fraction has no whole
/// part.
CString mixedText(long long parts, int places, bool needsWhole) {
  const long long denominator = 1LL << places;
  const long long whole = parts / denominator;
  long long above = parts % denominator, below = denominator;
  while (above > 0 && above % 2 == 0) {
    above /= 2;
    below /= 2;
  }
  CString text;
  if (whole > 0 || above == 0 || needsWhole) text = wholeText(whole);
  if (above > 0) text += (text.IsEmpty() ? L"" : L" ") + wholeText(above) + L"/" + wholeText(below);
  return text;
}

CString feetText(long long feet, const CString& inches) {
  return (feet > 0 ? wholeText(feet) + L"'-" : CString()) + inches + L"\"";
}

/// Degrees, minutes and seconds, as far as the places reach.
CString degreesText(double degrees, int places) {
  constexpr int kWithMinutes = 1, kWithSeconds = 3, kWholeSeconds = 4;
  if (places < kWithMinutes) return fixedText(degrees, 0) + L"d";
  const bool isNegative = degrees < 0;
  const int decimals = places > kWholeSeconds ? places - kWholeSeconds : 0;
  const double scale = places < kWithSeconds ? 60 : 3600 * std::pow(10, decimals);
  // Rounded once, in the smallest unit, so that no 60 comes out.
  const double units = std::round(std::fabs(degrees) * scale);
  const double whole = std::floor(units / scale), rest = units - whole * scale;
  CString text = (isNegative && units > 0 ? L"-" : L"") + fixedText(whole, 0) + L"d";
  if (places < kWithSeconds) return text + fixedText(rest, 0) + L"'";
  const double ofMinute = scale / 60;
  const double minutes = std::floor(rest / ofMinute);
  return text + fixedText(minutes, 0) + L"'" +
         fixedText((rest - minutes * ofMinute) / (ofMinute / 60), decimals) + L"\"";
}

CString surveyorText(double degrees, int places) {
  constexpr double kSame = 1e-9, kQuarter = 90;
  double at = std::fmod(degrees, 2 * kHalfTurn);
  if (at < 0) at += 2 * kHalfTurn;
  constexpr const wchar_t* kAxes[] = {L"E", L"N", L"W", L"S", L"E"};
  const double quarters = std::round(at / kQuarter);
  if (std::fabs(at - quarters * kQuarter) < kSame) return kAxes[static_cast<int>(quarters)];
  const bool isNorth = at < kHalfTurn, isEast = at < kQuarter || at > 3 * kQuarter;
  const double fromAxis = std::fabs((isNorth ? kQuarter : 3 * kQuarter) - at);
  return CString(isNorth ? L"N " : L"S ") + degreesText(fromAxis, places) + (isEast ? L" E" : L" W");
}

}  // namespace

CString kvedLengthText(double value, int unit, int places) {
  places = std::clamp(places, 0, kKvedMostPlaces);
  if (unit == kScientific) {
    CString text;
    text.Format(L"%.*E", places, value);
    return text;
  }
  const bool isFraction = unit == kArchitectural || unit == kFractional;
  const double size = std::fabs(value);
  if ((!isFraction && unit != kEngineering) || !(size < kMostExact)) return fixedText(value, places);
  CString text;
  bool isZero = false;
  if (unit == kEngineering) {
    const double step = std::pow(10, places), rounded = std::round(size * step) / step;
    const double feet = std::floor(rounded / kInchesOfFoot);
    isZero = rounded == 0;
    text = feetText(static_cast<long long>(feet), fixedText(rounded - feet * kInchesOfFoot, places));
  } else {
    const long long parts = std::llround(std::ldexp(size, places));
    const long long ofFoot = static_cast<long long>(kInchesOfFoot) << places;
    isZero = parts == 0;
    text = unit == kFractional ? mixedText(parts, places, false)
                               : feetText(parts / ofFoot, mixedText(parts % ofFoot, places, parts >= ofFoot));
  }
  return (value < 0 && !isZero ? L"-" : L"") + text;
}

CString kvedAngleText(double radians, int unit, int places) {
  places = std::clamp(places, 0, kKvedMostPlaces);
  const double degrees = radians * kHalfTurn / kvge::kPi;
  switch (unit) {
    case kDegreesMinutes:
      return degreesText(degrees, places);
    case kGrads:
      return fixedText(degrees / 0.9, places) + L"g";
    case kRadians:
      return fixedText(radians, places) + L"r";
    case kSurveyor:
      return surveyorText(degrees, places);
    default:
      return fixedText(degrees, places);
  }
}
