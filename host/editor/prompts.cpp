#include "host/editor/prompts.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/base/context.h"
#include "host/editor/internal/asking.h"
#include "platform/text/casemap.h"
#include "platform/text/number.h"

namespace {

using kved::Verdict;
using Kind = KvEdToken::Kind;

KvEdEditor* currentEditor() {
  return KvHostContext::current().editor;
}

/// The capitals (and digits) of a keyword: its shortest form.
CString shortForm(const CString& keyword) {
  CString form;
  for (int i = 0; i < keyword.GetLength(); ++i) {
    const wchar_t c = keyword.GetAt(i);
    if (platform::toLower(c) != c || (c >= L'0' && c <= L'9')) form += c;
  }
  return form.IsEmpty() ? keyword : form;
}

bool standsFor(const CString& keyword, const CString& reply) {
  const int length = reply.GetLength();
  const CString least = shortForm(keyword);
  return reply.CompareNoCase(least) == 0 || (length >= least.GetLength() && length <= keyword.GetLength() &&
                                             keyword.Left(length).CompareNoCase(reply) == 0);
}

/// Flags of kvedInitGet on a number.
Verdict judgeNumber(double value, int flags) {
  if ((flags & KVED_NOZERO) && value == 0) return Verdict::refused(L"The value must not be zero.");
  if ((flags & KVED_NONEG) && value < 0) return Verdict::refused(L"The value must not be negative.");
  return Verdict::taken();
}

bool isFinite(const double* point) {
  return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

void store(const KvGePoint3d& point, double* result) {
  result[0] = point.x;
  result[1] = point.y;
  result[2] = point.z;
}

KvGePoint3d pointAt(const double* p) {
  return {p[0], p[1], p[2]};
}

/// With a base distances and angles may stand for the point, unless any text is an answer.
int getPoint(const wchar_t* prompt, const double* base, double* result) {
  KvEdEditor* editor = currentEditor();
  if (!editor || !result) return RTERROR;
  const auto options = editor->takeGetOptions();
  kved::PointWish wish;
  if (base && !(options.flags & KVED_ARBITRARY)) wish.base = pointAt(base);
  wish.mayLeaveLimits = (options.flags & KVED_NOLIMITS) != 0;
  return kved::ask(*editor, CString(prompt), options, [&](const KvEdToken& token) {
    KvGePoint3d point;
    const Verdict verdict = kved::judgePoint(*editor, token, CString(prompt), point, wish);
    if (verdict.isTaken && verdict.status == RTNORM) store(point, result);
    return verdict;
  });
}

/// The other end of a distance or direction: from `base`, or from the point that was just given to one that
/// is asked for.
int secondPoint(KvEdEditor& editor, const double* base, KvGePoint3d& start, KvGePoint3d& end) {
  if (base) {
    end = start;
    start = pointAt(base);
    return RTNORM;
  }
  const CString prompt(L"Specify second point: ");
  return kved::ask(editor, prompt, {KVED_NONULL, {}},
                   [&](const KvEdToken& token) { return kved::judgePoint(editor, token, prompt, end); });
}

double turned(double angle) {
  constexpr double kFull = 2 * std::numbers::pi;
  if (angle >= 0 && angle <= kFull) return angle;
  const double rest = std::fmod(angle, kFull);
  return rest < 0 ? rest + kFull : rest;
}

int getAngle(const double* base, const wchar_t* prompt, double* result, bool isFromBaseDirection) {
  KvEdEditor* editor = currentEditor();
  if (!editor || !result || (base && !isFinite(base))) return RTERROR;
  const auto options = editor->takeGetOptions();
  return kved::ask(*editor, CString(prompt), options, [&](const KvEdToken& token) {
    const KvEdPointContext context = kvedPointContext();
    const double zero = isFromBaseDirection ? 0 : context.angleBase;
    std::optional<double> written;
    if (token.kind == Kind::Angle && std::isfinite(token.numbers[0])) {
      *result = token.numbers[0];  // radians that a program has worked out
      return Verdict::taken();
    }
    if (token.kind == Kind::Text) {
      std::wstring_view text = token.text.view();
      if (text.front() == L'<') text.remove_prefix(1);
      written = kvedParseAngle(text, context.angleUnits);
    } else if (token.kind == Kind::Whole || token.kind == Kind::Real) {
      written = kvedParseAngle(kved::textOf(token).view(), context.angleUnits);
    }
    if (written) {
      const Verdict verdict = judgeNumber(*written, options.flags & KVED_NOZERO);
      if (verdict.isTaken) *result = turned(zero + (context.isClockwise ? -*written : *written));
      return verdict;
    }
    KvGePoint3d start, end;
    kved::PointWish wish;
    if (base) wish.base = pointAt(base);
    Verdict verdict = kved::judgePoint(*editor, token, CString(prompt), start, wish);
    if (!verdict.isTaken) return Verdict::refused(L"An angle or a point is needed.");
    if (verdict.status == RTNORM) verdict.status = secondPoint(*editor, base, start, end);
    if (verdict.status != RTNORM) return verdict;
    const double bearing = KvGeVector2d(end.x - start.x, end.y - start.y).angle();
    *result = turned(isFromBaseDirection ? bearing - context.angleBase : bearing);
    editor->lastAngle = bearing;
    return verdict;
  });
}

int intoBuffer(int status, const CString& text, wchar_t* buffer, std::size_t size) {
  if (status != RTNORM) return status;
  if (static_cast<std::size_t>(text.GetLength()) >= size) return RTERROR;
  std::copy_n(text.GetString(), text.GetLength() + 1, buffer);
  return RTNORM;
}

}  // namespace

CString kvedMatchKeyword(const CString& keywords, const CString& given) {
  const CString reply = !given.IsEmpty() && given.GetAt(0) == L'_' ? given.Mid(1) : given;
  if (reply.IsEmpty()) return CString();
  int position = 0;
  for (CString keyword = keywords.Tokenize(L" ", position); position != -1;
       keyword = keywords.Tokenize(L" ", position))
    if (standsFor(keyword, reply)) return keyword;
  return CString();
}

int kvedInitGet(int flags, const wchar_t* keywords) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  editor->initGet(flags, CString(keywords));
  return RTNORM;
}

int kvedGetString(int allowBlanks, const wchar_t* prompt, CString& result) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  editor->takeGetOptions();
  const KvEdToken token =
      editor->readToken(allowBlanks ? KvEdReadMode::Line : KvEdReadMode::Word, CString(prompt));
  if (token.kind == Kind::Cancel || token.kind == Kind::End) return RTCAN;
  result = kved::textOf(token);
  return RTNORM;
}

int kvedGetKword(const wchar_t* prompt, CString& result) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  const auto options = editor->takeGetOptions();
  const CString wanted = L"Not one of the options: " + options.keywords + L".";
  const int status = kved::ask(*editor, CString(prompt), options, [&](const KvEdToken& token) {
    // A number that a program hands over may be a keyword too.
    result = kvedMatchKeyword(options.keywords, kved::textOf(token));
    if (!result.IsEmpty()) return Verdict::taken();
    return Verdict::refused(wanted);
  });
  if (status != RTKWORD) return status;
  result = editor->lastInput;
  return RTNORM;
}

int kvedGetInt(const wchar_t* prompt, int* result) {
  KvEdEditor* editor = currentEditor();
  if (!editor || !result) return RTERROR;
  const auto options = editor->takeGetOptions();
  return kved::ask(*editor, CString(prompt), options, [&](const KvEdToken& token) {
    int value = token.whole;
    const bool isWhole = token.kind == Kind::Whole ||
                         (token.kind == Kind::Text && platform::parseWhole(token.text.view(), value));
    if (!isWhole) return Verdict::refused(L"A whole number is needed.");
    const Verdict verdict = judgeNumber(value, options.flags);
    if (verdict.isTaken) *result = value;
    return verdict;
  });
}

int kvedGetReal(const wchar_t* prompt, double* result) {
  KvEdEditor* editor = currentEditor();
  if (!editor || !result) return RTERROR;
  const auto options = editor->takeGetOptions();
  return kved::ask(*editor, CString(prompt), options, [&](const KvEdToken& token) {
    const auto value = kved::numberOf(token);
    if (!value) return Verdict::refused(L"A number is needed.");
    const Verdict verdict = judgeNumber(*value, options.flags);
    if (verdict.isTaken) *result = *value;
    return verdict;
  });
}

int kvedGetInput(CString& result) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  result = editor->lastInput;
  return RTNORM;
}

int kvedGetString(int allowBlanks, const wchar_t* prompt, wchar_t* buffer, std::size_t size) {
  if (!buffer || size == 0) return RTERROR;
  buffer[0] = L'\0';
  CString text;
  const int status = kvedGetString(allowBlanks, prompt, text);
  return intoBuffer(status, text, buffer, size);
}

int kvedGetKword(const wchar_t* prompt, wchar_t* buffer, std::size_t size) {
  if (!buffer || size == 0) return RTERROR;
  buffer[0] = L'\0';
  CString text;
  const int status = kvedGetKword(prompt, text);
  return intoBuffer(status, text, buffer, size);
}

int kvedGetInput(wchar_t* buffer, std::size_t size) {
  if (!buffer || size == 0) return RTERROR;
  buffer[0] = L'\0';
  CString text;
  const int status = kvedGetInput(text);
  return intoBuffer(status, text, buffer, size);
}

int kvedGetPoint(const double* base, const wchar_t* prompt, double* result) {
  if (base && !isFinite(base)) return RTERROR;
  return getPoint(prompt, base, result);
}

int kvedGetCorner(const double* base, const wchar_t* prompt, double* result) {
  if (!base || !isFinite(base)) return RTERROR;
  return getPoint(prompt, nullptr, result);
}

int kvedGetDist(const double* base, const wchar_t* prompt, double* result) {
  KvEdEditor* editor = currentEditor();
  if (!editor || !result || (base && !isFinite(base))) return RTERROR;
  const auto options = editor->takeGetOptions();
  return kved::ask(*editor, CString(prompt), options, [&](const KvEdToken& token) {
    if (const auto number = kved::numberOf(token)) {
      const Verdict verdict = judgeNumber(*number, options.flags);
      if (verdict.isTaken) *result = *number;
      return verdict;
    }
    KvGePoint3d start, end;
    kved::PointWish wish;
    if (base) wish.base = pointAt(base);
    Verdict verdict = kved::judgePoint(*editor, token, CString(prompt), start, wish);
    if (!verdict.isTaken) return Verdict::refused(L"A distance or a point is needed.");
    if (verdict.status == RTNORM) verdict.status = secondPoint(*editor, base, start, end);
    if (verdict.status != RTNORM) return verdict;
    const double distance = start.distanceTo(end);
    const Verdict size = judgeNumber(distance, options.flags);
    if (size.isTaken) *result = distance;
    return size;
  });
}

int kvedGetAngle(const double* base, const wchar_t* prompt, double* result) {
  return getAngle(base, prompt, result, true);
}

int kvedGetOrient(const double* base, const wchar_t* prompt, double* result) {
  return getAngle(base, prompt, result, false);
}
