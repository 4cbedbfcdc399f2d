// MLINE.
#include <algorithm>

#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/mline.h"

namespace kvcmd {
namespace {

constexpr const wchar_t* kJustifications[] = {L"Top", L"Zero", L"Bottom"};

/// How the next multiline is drawn, as the variables tell.
struct MlineLook {
  int justification = std::clamp(variable(L"CMLJUST", 0), 0, 2);
  double scale = variable(L"CMLSCALE", 1.0);
  CString style = variable(L"CMLSTYLE", CString(L"STANDARD"));
};

/// False after a cancel.
bool askJustification(MlineLook& look) {
  Ask ask(L"\nEnter justification type [Top/Zero/Bottom] <" + CString(kJustifications[look.justification]) +
          L">: ");
  const Got got = ask.keywords(L"Top Zero Bottom").word();
  for (int i = 0; i < 3 && got == Got::Keyword; ++i)
    if (ask.keyword == kJustifications[i]) look.justification = i;
  setVariable(L"CMLJUST", look.justification);
  return got != Got::Cancelled;
}

bool askScale(MlineLook& look) {
  const Got got = Ask(L"\nEnter mline scale <" + numberText(look.scale) + L">: ").real(look.scale);
  if (got == Got::Value) setVariable(L"CMLSCALE", look.scale);
  return got != Got::Cancelled;
}

bool askStyle(MlineLook& look) {
  for (;;) {
    CString name;
    const Got got = Ask(L"\nEnter mline style name or [?]: ").text(name, true);
    if (got == Got::Cancelled) return false;
    if (got == Got::Nothing) return true;
    if (name == L"?") {
      for (const CString& one : kvdbMlineStyleNames(*drawing())) say(one);
      continue;
    }
    if (kvdbMlineStyleNamed(*drawing(), name).isNull()) {
      say(L"There is no multiline style \"" + name + L"\".");
      continue;
    }
    look.style = name;
    setVariable(L"CMLSTYLE", name);
    return true;
  }
}

/// The first point; nothing after a cancel or an empty answer.
std::optional<KvGePoint3d> begin(MlineLook& look) {
  for (;;) {
    say(L"Current settings: Justification = " + CString(kJustifications[look.justification]) + L", Scale = " +
        numberText(look.scale) + L", Style = " + look.style);
    KvGePoint3d point;
    Ask ask(L"\nSpecify start point or [Justification/Scale/STyle]: ");
    const Got got = ask.keywords(L"Justification Scale STyle").point(point);
    if (got == Got::Value) return point;
    if (got != Got::Keyword) return std::nullopt;
    const bool goesOn = ask.keyword == L"Justification" ? askJustification(look)
                        : ask.keyword == L"Scale"       ? askScale(look)
                                                        : askStyle(look);
    if (!goesOn) return std::nullopt;
  }
}

void runMline() {
  if (!drawing()) return;
  MlineLook look;
  const auto first = begin(look);
  if (!first) return;
  std::vector<KvGePoint3d> points{*first};
  bool isClosed = false;
  while (!isClosed) {
    const std::size_t count = points.size();
    Ask ask(count > 2    ? L"\nSpecify next point or [Close/Undo]: "
            : count == 2 ? L"\nSpecify next point or [Undo]: "
                         : L"\nSpecify next point: ");
    KvGePoint3d point;
    const Got got = ask.keywords(count > 2    ? L"Close Undo"
                                 : count == 2 ? L"Undo"
                                              : L"")
                        .base(points.back())
                        .point(point);
    if (got == Got::Value) {
      points.push_back(point);
    } else if (got == Got::Keyword && ask.keyword == L"Undo") {
      points.pop_back();
    } else {
      isClosed = got == Got::Keyword;
      if (!isClosed) break;
    }
  }
  if (points.size() < 2) return;
  const KvDbObjectId style = kvdbMlineStyleNamed(*drawing(), look.style);
  if (style.isNull()) return fail(L"There is no multiline style \"" + look.style + L"\".");
  auto made = KvDbMline::make(points, isClosed, style,
                              static_cast<KvDbMline::Justification>(look.justification), look.scale);
  if (!made || addFromUser(std::move(made)).isNull()) fail(L"Two different points expected.");
}

constexpr KvCommandRow kRows[] = {
    {L"MLINE", L"ML", KVRX_CMD_MODAL, runMline, L"Draws several parallel lines at once.",
     L"Specify start point or [Justification/Scale/STyle]:\nEnter justification type [Top/Zero/Bottom] <>: "
     L"(after Justification)\nEnter mline scale <>: (after Scale)\nEnter mline style name or [?]: (after "
     L"STyle)\nSpecify next point or [Close/Undo]: (empty: ends)"},
};

}  // namespace

std::span<const KvCommandRow> mlineRows() {
  return kRows;
}

}  // namespace kvcmd
