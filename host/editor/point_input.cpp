#include "host/editor/point_input.h"

#include <cmath>
#include <numbers>

#include "host/base/context.h"
#include "host/database/header.h"
#include "host/editor/editor.h"
#include "host/editor/ucs.h"
#include "platform/text/casemap.h"
#include "platform/text/number.h"

namespace {

constexpr double kPi = std::numbers::pi;
enum AngleUnits { kDegrees = 0, kDegreesMinutes = 1, kGrads = 2, kRadians = 3, kCompass = 4 };

bool isNear(double value) {
  return std::fabs(value) <= kKvedFarthest;  // false for what isn't a number
}

std::optional<double> decimal(std::wstring_view text) {
  double value = 0;
  // A `d` stands for degrees here, never for an exponent.
  if (text.find_first_of(L" \tdD") != std::wstring_view::npos) return std::nullopt;
  if (!platform::parseWhole(text, value) || !isNear(value)) return std::nullopt;
  return value;
}

bool isDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

/// Degrees, minutes and seconds: 45d, 45d30', 45d30'15.5".
std::optional<double> degreesMinutes(std::wstring_view text) {
  const auto d = text.find_first_of(L"dD");
  if (d == std::wstring_view::npos) return std::nullopt;
  const auto degrees = decimal(text.substr(0, d));
  if (!degrees) return std::nullopt;
  double parts[2] = {0, 0};
  std::wstring_view rest = text.substr(d + 1);
  for (const auto& [mark, part] : {std::pair{L'\'', &parts[0]}, std::pair{L'"', &parts[1]}}) {
    const auto end = rest.find(mark);
    if (end == std::wstring_view::npos) continue;
    const auto value = decimal(rest.substr(0, end));
    if (!value || !isDigit(rest.front()) || !(*value < 60)) return std::nullopt;
    *part = *value;
    rest = rest.substr(end + 1);
  }
  if (!rest.empty()) return std::nullopt;
  const double size = std::fabs(*degrees) + parts[0] / 60 + parts[1] / 3600;
  return (text.front() == L'-' ? -size : size) * kPi / 180;
}

/// N, E, S, W alone, or an angle from north or south towards east or west: N45d30'E.
std::optional<double> compass(std::wstring_view text) {
  if (text.empty()) return std::nullopt;
  const auto quarter = [](wchar_t c) { return std::wstring_view(L"ENWS").find(platform::toUpper(c)); };
  const auto first = quarter(text.front()), last = quarter(text.back());
  if (first == std::wstring_view::npos) return std::nullopt;
  if (text.size() == 1) return static_cast<double>(first) * kPi / 2;
  if (first % 2 == 0 || last == std::wstring_view::npos || last % 2 != 0) return std::nullopt;
  const auto inner = text.substr(1, text.size() - 2);
  auto turn = degreesMinutes(inner);
  if (!turn)
    if (const auto plain = decimal(inner)) turn = *plain * kPi / 180;
  if (!turn || *turn < 0 || *turn > kPi / 2) return std::nullopt;
  const bool isCounterClockwise = (first == 1) == (last == 2);
  const double from = first == 1 ? kPi / 2 : 3 * kPi / 2;
  const double angle = isCounterClockwise ? from + *turn : from - *turn;
  return angle >= 2 * kPi ? angle - 2 * kPi : angle;
}

/// Counter-clockwise from the X axis of the user system.
double direction(double asWritten, const KvEdPointContext& context) {
  return context.angleBase + (context.isClockwise ? -asWritten : asWritten);
}

/// Coordinates, or lengths and angles, as an offset from the origin. `hasZ` tells whether Z was written.
std::optional<KvGeVector3d> parseOffset(std::wstring_view text, const KvEdPointContext& context, bool& hasZ) {
  hasZ = false;
  const auto corner = text.find(L'<');
  const auto comma = text.find(L',');
  if (corner != std::wstring_view::npos) {
    const auto length = kvedParseNumber(text.substr(0, corner));
    auto rest = text.substr(corner + 1);
    const auto second = rest.find_first_of(L"<,");
    const auto angle = kvedParseAngle(rest.substr(0, second), context.angleUnits);
    if (!length || !angle) return std::nullopt;
    const double a = direction(*angle, context);
    KvGeVector3d offset(*length * std::cos(a), *length * std::sin(a), 0);
    if (second == std::wstring_view::npos) return offset;
    hasZ = true;
    if (rest[second] == L',') {
      const auto z = kvedParseNumber(rest.substr(second + 1));
      if (!z) return std::nullopt;
      offset.z = *z;
      return offset;
    }
    const auto rise = kvedParseAngle(rest.substr(second + 1), context.angleUnits);
    if (!rise) return std::nullopt;
    const double flat = std::cos(*rise);
    return KvGeVector3d(offset.x * flat, offset.y * flat, *length * std::sin(*rise));
  }
  if (comma == std::wstring_view::npos) return std::nullopt;
  const auto next = text.find(L',', comma + 1);
  const auto x = kvedParseNumber(text.substr(0, comma));
  const auto y =
      kvedParseNumber(text.substr(comma + 1, next == std::wstring_view::npos ? next : next - comma - 1));
  if (!x || !y) return std::nullopt;
  if (next == std::wstring_view::npos) return KvGeVector3d(*x, *y, 0);
  const auto z = kvedParseNumber(text.substr(next + 1));
  if (!z) return std::nullopt;
  hasZ = true;
  return KvGeVector3d(*x, *y, *z);
}

}  // namespace

KvEdPointContext kvedPointContext() {
  KvEdPointContext context;
  if (KvEdEditor* editor = KvHostContext::current().editor) context.lastPoint = editor->lastPoint;
  if (const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr)) {
    const KvDbHeader& header = database->header();
    context.elevation = header.real(L"$ELEVATION");
    context.userToWorld = kvedUserToWorld(database);
    context.angleUnits = header.whole(L"$AUNITS");
    context.angleBase = header.angle(L"$ANGBASE");
    context.isClockwise = header.whole(L"$ANGDIR") != 0;
  }
  return context;
}

namespace {

/// A decimal number, a fraction or a mixed number.
std::optional<double> plainNumber(std::wstring_view text) {
  if (const auto value = decimal(text)) return value;
  // n/d or w-n/d
  const auto slash = text.find(L'/');
  if (slash == std::wstring_view::npos || text.empty()) return std::nullopt;
  const bool isNegative = text.front() == L'-';
  std::wstring_view above = text.substr(isNegative ? 1 : 0, slash - (isNegative ? 1 : 0));
  double whole = 0;
  if (const auto dash = above.find(L'-'); dash != std::wstring_view::npos) {
    const auto value = decimal(above.substr(0, dash));
    if (!value || !isDigit(above.front())) return std::nullopt;
    whole = *value;
    above = above.substr(dash + 1);
  }
  const std::wstring_view below = text.substr(slash + 1);
  const auto numerator = decimal(above), denominator = decimal(below);
  if (!numerator || !denominator || !isDigit(above.front()) || !isDigit(below.front())) return std::nullopt;
  const double value = whole + *numerator / *denominator;
  if (!isNear(value)) return std::nullopt;
  return isNegative ? -value : value;
}

}  // namespace

std::optional<double> kvedParseNumber(std::wstring_view text) {
  if (text.find_first_of(L"'\"") == std::wstring_view::npos) return plainNumber(text);
  const bool isNegative = !text.empty() && text.front() == L'-';
  if (isNegative) text.remove_prefix(1);
  constexpr double kInchesOfFoot = 12;
  double value = 0;
  if (const auto mark = text.find(L'\''); mark != std::wstring_view::npos) {
    const auto feet = plainNumber(text.substr(0, mark));
    if (!feet || !isDigit(text.front())) return std::nullopt;
    value = *feet * kInchesOfFoot;
    text.remove_prefix(mark + 1);
    if (text.empty()) return isNegative ? -value : value;
    if (text.front() == L'-') text.remove_prefix(1);
  }
  if (!text.empty() && text.back() == L'"') text.remove_suffix(1);
  const auto inches = plainNumber(text);
  if (!inches || !(isDigit(text.front()) || text.front() == L'.')) return std::nullopt;
  value += *inches;
  return isNear(value) ? std::optional(isNegative ? -value : value) : std::nullopt;
}

std::optional<double> kvedParseAngle(std::wstring_view text, int angleUnits) {
  if (text.empty()) return std::nullopt;
  const auto unsuffixed = text.substr(0, text.size() - 1);
  std::optional<double> angle;
  if (const auto plain = decimal(text)) {
    angle = *plain * (angleUnits == kGrads ? kPi / 200 : angleUnits == kRadians ? 1 : kPi / 180);
  } else if (const wchar_t unit = platform::toLower(text.back()); unit == L'r' || unit == L'g') {
    if (const auto value = decimal(unsuffixed)) angle = *value * (unit == L'r' ? 1 : kPi / 200);
  } else {
    angle = degreesMinutes(text);
    if (!angle) angle = compass(text);
  }
  return angle && isNear(*angle) ? angle : std::nullopt;
}

std::optional<KvGePoint3d> kvedParsePoint(std::wstring_view text, const KvEdPointContext& context) {
  bool isRelative = false, isWorld = false;
  while (!text.empty() && (text.front() == L'@' || text.front() == L'*')) {
    bool& flag = text.front() == L'@' ? isRelative : isWorld;
    if (flag) return std::nullopt;
    flag = true;
    text.remove_prefix(1);
  }
  if (text.empty() && isRelative && !isWorld) return context.lastPoint;
  KvEdPointContext used = context;
  if (isWorld) used.angleBase = 0, used.isClockwise = false;
  bool hasZ = false;
  const auto offset = parseOffset(text, used, hasZ);
  if (!offset) return std::nullopt;
  const KvGeMatrix3d toUser = isWorld ? context.userToWorld.inverse() : KvGeMatrix3d();
  KvGePoint3d point;
  if (isRelative)
    point = context.lastPoint + toUser * *offset;
  else
    point = toUser * (KvGePoint3d(0, 0, hasZ || isWorld ? 0 : context.elevation) + *offset);
  if (!isNear(point.x) || !isNear(point.y) || !isNear(point.z)) return std::nullopt;
  return point;
}
