// A dimension line: where its arrows and its text go.
#include <algorithm>
#include <cmath>
#include <tuple>

#include "host/entities/internal/dimlayout.h"

namespace {

using V = KvDbDimVar;

// Values of DIMATFIT, DIMJUST, DIMTAD, DIMTMOVE.
enum AtFit { kBothOut = 0, kArrowsFirst = 1, kTextFirst = 2, kBest = 3 };
enum Just { kCentered = 0, kNearFirst = 1, kNearSecond = 2, kOverFirst = 3, kOverSecond = 4 };
enum Tad { kBreak = 0, kAbove = 1, kOutside = 2, kJapanese = 3, kBelow = 4 };
enum Tmove { kLineFollows = 0, kLeader = 1, kFree = 2 };

}  // namespace

double KvDbDimLayout::taken(const Track& track, bool isLevel, double place) const {
  if (!hasText()) return 0;
  const double turn = isLevel ? track.tangent(place).angle() - level() : 0;
  return std::fabs(textWidth_ * std::cos(turn)) + std::fabs(textHeight_ * std::sin(turn)) +
         2 * std::fabs(size(V::Gap));
}

/// What finds room between the extension lines, and what moves out first when not all does.
void KvDbDimLayout::fit(const Track& track, Placement& placement) const {
  const double gap = std::fabs(size(V::Gap)), length = track.length;
  const double arrows = (isStroke(1) ? 0 : arrowLength()) + (isStroke(2) ? 0 : arrowLength());
  const bool isOver = vars_.whole(V::Just) >= kOverFirst;
  placement.wanted = taken(track, vars_.on(V::Tih), length / 2);
  const double wanted = isUserPlaced() || isOver ? 0 : placement.wanted;
  if (length < wanted + arrows) {
    const bool textFits = length >= wanted, arrowsFit = length >= arrows + gap;
    switch (vars_.whole(V::Atfit)) {
      case kBothOut:
        placement.arrowsInside = placement.textInside = false;
        break;
      case kArrowsFirst:
        placement.arrowsInside = false;
        placement.textInside = textFits;
        break;
      case kTextFirst:
        placement.textInside = false;
        placement.arrowsInside = arrowsFit;
        break;
      default:
        placement.textInside = textFits;
        placement.arrowsInside = !textFits && arrowsFit;
    }
    if (vars_.on(V::Tix)) placement.textInside = true;
    if (arrows == 0) placement.arrowsInside = true;
  }
  if (!hasText() || isUserPlaced() || isOver) placement.textInside = true;
}

void KvDbDimLayout::placeText(const Track& track, Placement& placement) const {
  const double gap = std::fabs(size(V::Gap)), length = track.length, wanted = placement.wanted;
  const int just = vars_.whole(V::Just), tad = vars_.whole(V::Tad);
  const bool isLevel = vars_.on(placement.textInside ? V::Tih : V::Toh);
  if (just == kOverFirst || just == kOverSecond) {
    // Along the extension line, beyond the dimension line.
    const int which = just == kOverFirst ? 1 : 2;
    const KvGeVector2d rise = track.rise(which);
    placement.place = which == 1 ? 0 : length;
    placement.angle = readable(rise.angle());
    placement.at = track.at(placement.place) + rise * (gap + textWidth_ / 2) +
                   above(rise.angle()) * (textHeight_ / 2 + gap);
    return;
  }
  double place = length / 2;
  if (!placement.textInside)
    place = length + (placement.arrowsInside ? 0 : 2 * arrowLength()) + taken(track, isLevel, length) / 2;
  else if (just == kNearFirst)
    place = std::min(place, wanted / 2 + arrowLength());
  else if (just == kNearSecond)
    place = std::max(place, length - wanted / 2 - arrowLength());
  const double lineAngle = track.tangent(std::clamp(place, 0.0, length)).angle();
  placement.place = place;
  placement.angle = isLevel ? level() : readable(lineAngle);
  const bool runsAlong = std::fabs(std::sin(placement.angle - lineAngle)) < 1e-6;
  placement.isInLine = !hasText() || tad == kBreak || !runsAlong;
  placement.at = track.at(place);
  if (!placement.isInLine) {
    const double off = textHeight_ / 2 + gap;
    placement.at = placement.at + above(lineAngle) * (tad == kBelow ? -off : off);
  } else if (tad == kBreak && vars_.real(V::Tvp) != 0) {
    // In text heights above the line, or below; one that stands clear of it doesn't break it.
    constexpr double kClear = 0.7;
    placement.at = placement.at + above(lineAngle) * (textHeight_ * vars_.real(V::Tvp));
    placement.isInLine = std::fabs(vars_.real(V::Tvp)) < kClear;
  }
}

void KvDbDimLayout::placeMovedText(const Track& track, Placement& placement) const {
  placement.at = userPlace();
  std::tie(placement.place, placement.beside) = track.placeOf(placement.at);
  const double length = track.length, gap = std::fabs(size(V::Gap));
  const double inside = std::clamp(placement.place, 0.0, length);
  const bool isLevel = vars_.on(inside == placement.place ? V::Tih : V::Toh);
  const double lineAngle = track.tangent(inside).angle();
  placement.angle = isLevel ? level() : readable(lineAngle);
  placement.wanted = taken(track, isLevel, inside);
  const double turn = placement.angle - lineAngle;
  const double across = std::fabs(textHeight_ * std::cos(turn)) + std::fabs(textWidth_ * std::sin(turn));
  placement.isInLine = std::fabs(placement.beside) < across / 2 + gap / 2;
  // A text in the line takes room from the arrows.
  const double arrows = isStroke(1) && isStroke(2) ? 0 : 2 * arrowLength();
  if (placement.isInLine && inside == placement.place && arrows > 0 && length < arrows + placement.wanted)
    placement.arrowsInside = false;
}

void KvDbDimLayout::drawLine(const Track& track, const Placement& placement) {
  const bool isDrawn = placement.arrowsInside || vars_.on(V::Tofl) || (isStroke(1) && isStroke(2));
  if (!isDrawn) return;
  const double length = track.length, middle = length / 2;
  const auto cut = [&](int which) {
    const double whole = arrowCut(which);
    return placement.arrowsInside || whole < 0 ? whole : 0;
  };
  const double from = vars_.on(V::Sd1) ? middle : cut(1), to = vars_.on(V::Sd2) ? middle : length - cut(2);
  const double begin = placement.place - placement.wanted / 2, end = placement.place + placement.wanted / 2;
  const bool isBroken = hasText() && placement.isInLine && placement.textInside && begin < length && end > 0;
  if (!isBroken) {
    track.draw(from, to);
    return;
  }
  track.draw(from, std::max(from, begin));
  track.draw(std::min(to, end), to);
}

/// What stands beyond the extension lines.
void KvDbDimLayout::drawOutside(const Track& track, const Placement& placement) {
  const double arrowSize = arrowLength(), length = track.length, gap = std::fabs(size(V::Gap));
  const bool hasTails = !placement.arrowsInside && !(vars_.on(V::Soxd) && vars_.on(V::Tix));
  if (hasTails) {
    line(track.at(0) - track.tangent(0) * arrowSize, track.at(0) - track.tangent(0) * (2 * arrowSize));
    line(track.at(length) + track.tangent(length) * arrowSize,
         track.at(length) + track.tangent(length) * (2 * arrowSize));
  }
  // Beside the line, a text that stands over its end needs the line below it.
  if (!placement.textInside && hasText()) {
    const double beyond = length + (placement.arrowsInside ? 0 : 2 * arrowSize);
    const double wanted = taken(track, vars_.on(V::Toh), length);
    const double end = placement.isInLine ? beyond : placement.place + wanted / 2 - gap;
    if (end > beyond) line(track.at(beyond), track.at(end));
    if (placement.arrowsInside && placement.isInLine)
      line(track.at(length), track.at(length) + track.tangent(length) * gap);
  }
  if (!hasTails && !placement.arrowsInside) return;
  if (!vars_.on(V::Sd1)) arrow(track.at(0), track.tangent(0) * (placement.arrowsInside ? -1.0 : 1.0), 1);
  if (!vars_.on(V::Sd2))
    arrow(track.at(length), track.tangent(length) * (placement.arrowsInside ? 1.0 : -1.0), 2);
}

/// The line that leads to a text that was moved away.
void KvDbDimLayout::drawToMovedText(const Track& track, const Placement& placement) {
  const double gap = std::fabs(size(V::Gap)), length = track.length;
  const KvGeVector2d along(std::cos(placement.angle), std::sin(placement.angle)), up = along.perpVector();
  const double turn = placement.angle - track.tangent(std::clamp(placement.place, 0.0, length)).angle();
  const double across = std::fabs(textHeight_ * std::cos(turn)) + std::fabs(textWidth_ * std::sin(turn));
  const bool isNear = std::fabs(placement.beside) < across / 2 + 2 * gap;
  const double half = placement.wanted / 2;
  const bool isBefore = placement.place - half<0, isBehind = placement.place + half> length;
  if (isNear && vars_.whole(V::Tmove) == kLineFollows) {
    // The line runs on to the text, or below it.
    const double reach = placement.isInLine ? -half : half - gap;
    const double outer = placement.arrowsInside ? 0 : 2 * arrowLength();
    if (isBehind && placement.place + reach > length + outer)
      line(track.at(length + outer), track.at(placement.place + reach));
    else if (isBefore && placement.place - reach < -outer)
      line(track.at(-outer), track.at(placement.place - reach));
  }
  const bool isAway = !isNear || isBefore || isBehind;
  if (vars_.whole(V::Tmove) != kLeader || !isAway) return;
  const KvGePoint2d start = track.at(length / 2);
  const double side = (start - placement.at).dotProduct(along) < 0 ? -1 : 1;
  if (vars_.whole(V::Tad) == kBreak) {
    const KvGePoint2d end = placement.at + along * (side * (textWidth_ / 2 + gap));
    const KvGePoint2d hook = end + along * (side * arrowLength());
    line(start, hook);
    line(hook, end);
    return;
  }
  const KvGePoint2d under = placement.at - up * (textHeight_ / 2 + gap);
  line(start, under + along * (side * textWidth_ / 2));
  line(under + along * (side * textWidth_ / 2), under - along * (side * textWidth_ / 2));
}

void KvDbDimLayout::measureLine(const Track& track) {
  Placement placement;
  fit(track, placement);
  const bool isMoved = isUserPlaced() && hasText();
  if (isMoved)
    placeMovedText(track, placement);
  else
    placeText(track, placement);
  drawLine(track, placement);
  drawOutside(track, placement);
  if (isMoved) drawToMovedText(track, placement);
  const int just = vars_.whole(V::Just);
  if (!isMoved && hasText() && just >= kOverFirst) {
    const int which = just == kOverFirst ? 1 : 2;
    const KvGePoint2d foot = track.at(placement.place);
    const KvGeVector2d rise = track.rise(which);
    const double end = textWidth_ + 2 * std::fabs(size(V::Gap));
    if (end > size(V::Exe)) line(foot + rise * size(V::Exe), foot + rise * end, true, which);
  }
  text(placement.at, placement.angle);
}
