// LINE.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/curves.h"

namespace kvcmd {
namespace {

KvDbObjectId addLine(const KvGePoint3d& from, const KvGePoint3d& to) {
  auto line = std::make_unique<KvDbLine>(toWorld(from), toWorld(to));
  if (const double thickness = drawing()->thickness(); thickness != 0) line->setThickness(thickness);
  line->setNormal(userToWorld().column(2));
  return add(std::move(line));
}

void runLine() {
  KvGePoint3d point;
  const Got first = Ask(L"\nSpecify first point: ").point(point);
  if (first == Got::Nothing && editor()) point = editor()->lastPoint;
  if (first == Got::Cancelled || !drawing()) return;
  std::vector<KvGePoint3d> points = {point};
  std::vector<KvDbObjectId> lines;
  for (;;) {
    constexpr std::size_t kEnoughToClose = 2;
    const bool mayClose = lines.size() >= kEnoughToClose;
    Ask ask(mayClose ? L"\nSpecify next point or [Close/Undo]: " : L"\nSpecify next point or [Undo]: ");
    ask.keywords(mayClose ? L"Close Undo" : L"Undo").base(points.back());
    switch (ask.point(point)) {
      case Got::Value:
        lines.push_back(addLine(points.back(), point));
        points.push_back(point);
        break;
      case Got::Keyword:
        if (ask.keyword == L"Close") {
          addLine(points.back(), points.front());
          return;
        }
        if (lines.empty()) {
          say(L"All segments already undone.");
          break;
        }
        change<KvDbEntity>(lines.back(), [](KvDbEntity& line) { line.erase(); });
        lines.pop_back();
        points.pop_back();
        break;
      default:
        return;
    }
  }
}

constexpr KvCommandRow kRows[] = {
    {L"LINE", L"L", KVRX_CMD_MODAL, runLine, L"Draws straight lines from point to point.",
     L"Specify first point: (empty: the last point)\nSpecify next point or [Close/Undo]: (empty: ends)"},
};

}  // namespace

std::span<const KvCommandRow> lineRows() {
  return kRows;
}

}  // namespace kvcmd
