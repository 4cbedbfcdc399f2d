#include "host/database/dxffiler.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

struct KindRange {
  int first, last;
  KvDxfKind kind;
};

/// Group codes of drawing files; what stands nowhere is text. Source: the published tables of group-code
/// value types.
constexpr KindRange kKinds[] = {
    {0, 4, KvDxfKind::Text},        {5, 5, KvDxfKind::Handle},       {6, 9, KvDxfKind::Text},
    {10, 18, KvDxfKind::Point},     {19, 59, KvDxfKind::Real},       {60, 79, KvDxfKind::Int16},
    {90, 99, KvDxfKind::Int32},     {100, 102, KvDxfKind::Text},     {105, 105, KvDxfKind::Handle},
    {110, 112, KvDxfKind::Point},   {113, 149, KvDxfKind::Real},     {160, 169, KvDxfKind::Int64},
    {170, 179, KvDxfKind::Int16},   {210, 213, KvDxfKind::Point},    {214, 239, KvDxfKind::Real},
    {270, 289, KvDxfKind::Int16},   {290, 299, KvDxfKind::Bool},     {300, 309, KvDxfKind::Text},
    {310, 319, KvDxfKind::Binary},  {320, 369, KvDxfKind::Handle},   {370, 389, KvDxfKind::Int16},
    {390, 399, KvDxfKind::Handle},  {400, 409, KvDxfKind::Int16},    {410, 419, KvDxfKind::Text},
    {420, 429, KvDxfKind::Int32},   {430, 439, KvDxfKind::Text},     {440, 459, KvDxfKind::Int32},
    {460, 469, KvDxfKind::Real},    {470, 479, KvDxfKind::Text},     {480, 481, KvDxfKind::Handle},
    {999, 1003, KvDxfKind::Text},   {1004, 1004, KvDxfKind::Binary}, {1005, 1009, KvDxfKind::Text},
    {1010, 1013, KvDxfKind::Point}, {1014, 1059, KvDxfKind::Real},   {1060, 1070, KvDxfKind::Int16},
    {1071, 1071, KvDxfKind::Int32},
};

constexpr auto kKindOfCode = [] {
  std::array<KvDxfKind, 1072> kinds{};
  for (const KindRange& range : kKinds)
    for (int code = range.first; code <= range.last; ++code)
      kinds[static_cast<std::size_t>(code)] = range.kind;
  return kinds;
}();
static_assert(kKindOfCode.size() == std::size_t{std::end(kKinds)[-1].last + 1});

}  // namespace

KvDxfKind kvdxfKind(int code) {
  const auto index = static_cast<std::size_t>(code);
  return code >= 0 && index < kKindOfCode.size() ? kKindOfCode[index] : KvDxfKind::Text;
}

double kvdxfRadians(double degrees) {
  return degrees * (kvge::kPi / 180);
}

double kvdxfDegrees(double radians) {
  constexpr int kNeighbours = 2;
  const double nearest = radians * (180 / kvge::kPi);
  double best = nearest;
  std::size_t bestDigits = SIZE_MAX;
  double candidate = nearest;
  for (int i = 0; i < kNeighbours; ++i) candidate = std::nextafter(candidate, -INFINITY);
  for (int i = 0; i <= 2 * kNeighbours; ++i, candidate = std::nextafter(candidate, INFINITY)) {
    if (kvdxfRadians(candidate) != radians) continue;
    char digits[40];
    const auto length =
        static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, candidate).ptr - digits);
    if (length >= bestDigits) continue;
    bestDigits = length;
    best = candidate;
  }
  return best;
}

void KvDxfWriter::marker(std::wstring_view name) {
  if (!hasMarkers()) return;
  lastMarker_ = name;
  text(100, name);
}

void KvDxfWriter::beginObject() {
  lastMarker_ = {};
  flushed_.clear();
}

bool KvDxfWriter::isFlushed(std::wstring_view marker) const {
  return std::find(flushed_.begin(), flushed_.end(), marker) != flushed_.end();
}

void KvDxfWriter::group(const KvDxfGroup& group) {
  switch (group.kind) {
    case KvDxfKind::Text:
      text(group.code, group.text);
      break;
    case KvDxfKind::Point:
      if (group.dimensions == 2)
        point2d(group.code, kvge::planar(group.point));
      else
        point(group.code, group.point);
      break;
    case KvDxfKind::Real:
      real(group.code, group.real());
      break;
    case KvDxfKind::Handle:
      handleValue(group.code, static_cast<std::uint64_t>(group.integer));
      break;
    case KvDxfKind::Binary: {
      std::vector<std::uint8_t> bytes;
      for (wchar_t c : group.text) bytes.push_back(static_cast<std::uint8_t>(c));
      binary(group.code, bytes);
      break;
    }
    default:
      integer(group.code, group.integer);
      break;
  }
}
