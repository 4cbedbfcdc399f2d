#include "module/nest/nester_frame.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "module/nest/debug_sink.h"
#include "module/nest/internal/nest_outline.h"
#include "platform/text/cstring.h"
#include "siblings/resources/mekres.h"

namespace {

using mek::nest::NestGap;
using mek::nest::NestOutline;

constexpr double kUnlimitedLength = 1e7;
constexpr double kLargestSheet = 1e12;
constexpr double kGoodFit = 80.0;   ///< height that a good fit leaves over stays under this; a contract
constexpr double kRounding = 1e-9;  ///< taken for an exact fit
constexpr unsigned kGapMessage = 1148;
constexpr int kMessageLength = 255;

double gapOrNone(double gap) {
  return gap > 0 ? std::min(gap, kLargestSheet) : 0;
}

struct Part {
  double width, height;
  int item;
  bool placed;
};

/// Parts by the larger side, largest first, with those placed skipped and from time to time swept out.
class PartSequence {
 public:
  PartSequence(const NestItem* items, int count) {
    for (int i = 0; i < count; ++i) {
      const NestItem& item = items[i];
      const double width = std::abs(item.x0 - item.x1), height = std::abs(item.y0 - item.y1);
      if (std::isfinite(width) && std::isfinite(height)) parts_.push_back({width, height, i, false});
    }
    std::stable_sort(parts_.begin(), parts_.end(), [](const Part& a, const Part& b) {
      return std::max(a.width, a.height) > std::max(b.width, b.height);
    });
    left_ = parts_.size();
  }

  bool empty() const { return left_ == 0; }
  void take(Part& part) {
    part.placed = true;
    --left_;
    if (left_ < parts_.size() / 2) std::erase_if(parts_, [](const Part& other) { return other.placed; });
  }

  template <class Accept>
  Part* find(Accept accept) {
    for (Part& part : parts_)
      if (!part.placed && accept(part)) return &part;
    return nullptr;
  }

 private:
  std::vector<Part> parts_;
  std::size_t left_ = 0;
};

/// What a gap offers to a part, with the distances to keep taken off.
struct Room {
  double height, below, above;  ///< below and above are lost whatever share of the height is tested
  double width, freeWidth, partGap, offsetX;

  double left(double share, double partHeight) const { return height * share - below - partHeight - above; }
  bool takesHeight(double share, double partHeight) const { return left(share, partHeight) >= -kRounding; }
  bool takesWidth(double partWidth) const {
    return width - partWidth - partGap >= -kRounding && freeWidth - offsetX - partWidth >= -kRounding;
  }
  /// False when no orientation can pass a test below: a glance for the many parts that are too large for a
  /// small gap.
  bool mayTake(const Part& part) const {
    const double high = height - below - above + kRounding;
    const double wide = std::min(width - partGap, freeWidth - offsetX) + kRounding;
    return std::min(part.width, part.height) <= std::min(high, wide) &&
           std::max(part.width, part.height) <= std::max(high, wide);
  }
  bool fitsWell(double share, double partWidth, double partHeight) const {
    return takesHeight(share, partHeight) && left(share, partHeight) < kGoodFit && takesWidth(partWidth);
  }
};

enum class Fit { None, Upright, Turned };

/// The first of the six good fits.
Fit goodFit(const Room& room, const Part& part) {
  for (const double share : {1.0, 0.5, 0.25})
    if (room.fitsWell(share, part.width, part.height)) return Fit::Upright;
  for (const double share : {1.0, 0.5, 0.25})
    if (room.fitsWell(share, part.height, part.width)) return Fit::Turned;
  return Fit::None;
}

/// A part that fits half the height on either side puts its greater side along the height where that fits.
Fit anyFit(const Room& room, const Part& part) {
  const bool upright = room.takesHeight(1, part.height), turned = room.takesHeight(1, part.width);
  const bool small = room.takesHeight(0.5, part.height) || room.takesHeight(0.5, part.width);
  const bool turnedFirst = turned && small && part.width > part.height;
  if (turnedFirst && room.takesWidth(part.height)) return Fit::Turned;
  if (upright && room.takesWidth(part.width)) return Fit::Upright;
  return turned && room.takesWidth(part.height) ? Fit::Turned : Fit::None;
}

class Nester {
 public:
  Nester(NestItem* items, int count, const NestParams& params, double height, double length)
      : items_(items),
        spacing_{gapOrNone(params.partGap), gapOrNone(params.edgeGap), gapOrNone(params.sheetGap)},
        parts_(items, count),
        outline_(height, length, spacing_) {}

  int run() {
    bool fresh = true;  // nothing stands on the present sheet yet
    while (!parts_.empty()) {
      const std::vector<NestGap> gaps = outline_.gaps();
      if (mek::hasDebugSink()) writeGaps(gaps);
      outline_.levelFront(gaps);
      if (std::any_of(gaps.begin(), gaps.end(), [&](const NestGap& gap) { return fill(gap); })) {
        fresh = false;
        continue;
      }
      if (fresh) return std::max(1, outline_.sheets() - 1);
      if (outline_.fillNarrowestNotch()) continue;
      outline_.openSheet();
      refused_.clear();
      fresh = true;
    }
    return outline_.sheets();
  }

 private:
  bool fill(const NestGap& gap);
  bool wasRefused(const NestGap& gap) const;
  Room roomOf(const NestGap& gap) const;
  void put(const NestGap& gap, Part& part, Fit fit);
  static void writeGaps(const std::vector<NestGap>& gaps);

  NestItem* items_;
  mek::nest::OutlineSpacing spacing_;
  PartSequence parts_;
  NestOutline outline_;
  std::vector<NestGap> refused_;  ///< gaps that take none of the parts left: fewer parts won't change that
};

Room Nester::roomOf(const NestGap& gap) const {
  const bool underPart = gap.y + gap.height < outline_.height() - spacing_.part / 2;
  return {gap.height,    outline_.offsetY(gap), underPart ? spacing_.part / 2 : 0, gap.width, gap.freeWidth,
          spacing_.part, outline_.offsetX(gap)};
}

bool Nester::wasRefused(const NestGap& gap) const {
  return std::any_of(refused_.begin(), refused_.end(), [&](const NestGap& other) {
    return other.x == gap.x && other.y == gap.y && other.height == gap.height && other.width == gap.width &&
           other.freeWidth == gap.freeWidth;
  });
}

bool Nester::fill(const NestGap& gap) {
  if (wasRefused(gap)) return false;
  const Room room = roomOf(gap);
  Fit fit = Fit::None;
  const auto pass = [&](Fit (*test)(const Room&, const Part&)) {
    return parts_.find(
        [&](const Part& part) { return room.mayTake(part) && (fit = test(room, part)) != Fit::None; });
  };
  Part* part = pass(goodFit);
  if (!part) part = pass(anyFit);
  if (!part) {
    refused_.push_back(gap);
    return false;
  }
  put(gap, *part, fit);
  return true;
}

void Nester::put(const NestGap& gap, Part& part, Fit fit) {
  const bool turned = fit == Fit::Turned;
  const double width = turned ? part.height : part.width, height = turned ? part.width : part.height;
  NestItem& item = items_[part.item];
  item.x0 = gap.x + outline_.offsetX(gap);
  item.y0 = gap.y + outline_.offsetY(gap);
  item.x1 = item.x0 + width;
  item.y1 = item.y0 + height;
  item.rotated = turned ? 1 : 0;
  outline_.place(gap, width, height);
  if (mek::hasDebugSink())
    mek::writeDebug(mek::nest::hpglRectangle(item.x0, item.y0, item.x1, item.y1) + "\n");
  parts_.take(part);
}

void Nester::writeGaps(const std::vector<NestGap>& gaps) {
  const CString message = IM_GetStringFromRc(kGapMessage, kMessageLength);
  CString text;
  text.Format(message.IsEmpty() ? L"%d" : message.GetString(), static_cast<int>(gaps.size()));
  for (const NestGap& gap : gaps) text.AppendFormat(L"\n%g,%g %gx%g", gap.x, gap.y, gap.width, gap.height);
  mek::writeDebug(platform::utf8From(text) + "\n");
}

}  // namespace

int NesterFrame(NestItem* items, int count, const NestParams* params, int* sheetCount) {
  int sheets = 1;
  if (items && params) {
    for (int i = 0; i < count; ++i) items[i].rotated = 0;
    const double length = params->sheetLength < 0 ? kUnlimitedLength : params->sheetLength;
    if (params->sheetHeight > 0 && length > 0) {
      Nester nester(items, count, *params, std::min(params->sheetHeight, kLargestSheet),
                    std::min(length, kLargestSheet));
      sheets = nester.run();
    }
  }
  if (sheetCount) *sheetCount = sheets;
  return 1;
}
