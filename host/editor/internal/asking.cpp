#include "host/editor/internal/asking.h"

#include <cmath>

#include "host/editor/prompts.h"
#include "platform/text/number.h"

namespace kved {

namespace {

constexpr int kMostRetries = 100;

using Kind = KvEdToken::Kind;

}  // namespace

int ask(KvEdEditor& editor, const CString& prompt, const KvEdEditor::GetOptions& options, const Judge& judge,
        KvEdReadMode mode) {
  for (int attempt = 0; attempt < kMostRetries; ++attempt) {
    const KvEdToken token = editor.readToken(mode, prompt);
    if (token.kind == Kind::Cancel || token.kind == Kind::End) return RTCAN;
    const bool isText = token.kind == Kind::Text;
    if (isText && token.text.IsEmpty()) {
      if (!(options.flags & KVED_NONULL)) return RTNONE;
      editor.printLine(L"A value is needed.");
      continue;
    }
    if (isText) {
      const CString keyword = kvedMatchKeyword(options.keywords, token.text);
      if (!keyword.IsEmpty()) {
        editor.lastInput = keyword;
        return RTKWORD;
      }
    }
    if (isText && mode == KvEdReadMode::Word && editor.runTransparent(token.text)) {
      --attempt;
      continue;
    }
    const Verdict verdict = judge(token);
    if (verdict.isTaken) return verdict.status;
    if (isText && (options.flags & KVED_ARBITRARY)) {
      editor.lastInput = token.text;
      return RTKWORD;
    }
    editor.printLine(verdict.complaint);
  }
  return RTCAN;
}

std::optional<KvGePoint3d> pointOf(const KvEdToken& token) {
  if (token.kind == Kind::Text) return kvedParsePoint(token.text.view(), kvedPointContext());
  if (token.kind != Kind::Point) return std::nullopt;
  KvGePoint3d point(token.numbers[0], token.numbers[1], token.numbers[2]);
  if (token.dimensions == 2) point.z = kvedPointContext().elevation;
  for (const double coordinate : {point.x, point.y, point.z})
    if (!(std::fabs(coordinate) <= kKvedFarthest)) return std::nullopt;
  return point;
}

std::optional<double> numberOf(const KvEdToken& token) {
  switch (token.kind) {
    case Kind::Real:
    case Kind::Angle:
      if (!(std::fabs(token.numbers[0]) <= kKvedFarthest)) return std::nullopt;
      return token.numbers[0];
    case Kind::Whole:
      return token.whole;
    case Kind::Text:
      return kvedParseNumber(token.text.view());
    default:
      return std::nullopt;
  }
}

CString textOf(const KvEdToken& token) {
  CString text;
  switch (token.kind) {
    case Kind::Whole:
      text.Format(L"%d", token.whole);
      return text;
    case Kind::Real:
    case Kind::Angle:
      return platform::wideFromUtf8(platform::shortest(token.numbers[0]));
    case Kind::Point:
      for (int i = 0; i < token.dimensions; ++i)
        text += (i ? L"," : L"") + platform::wideFromUtf8(platform::shortest(token.numbers[i]));
      return text;
    default:
      return token.text;
  }
}

void notePoint(KvEdEditor& editor, const KvGePoint3d& raw, const KvGePoint3d& computed, bool isComputed) {
  editor.lastPoint = computed;
  const KvGeMatrix3d toWorld = kvedPointContext().userToWorld;
  editor.inputPoints().tell(KvEdInputPoint(toWorld * raw, toWorld * computed, isComputed));
}

}  // namespace kved
