#include "host/editor/prompts.h"

#include "host/base/context.h"
#include "platform/text/casemap.h"
#include "platform/text/number.h"

namespace {

constexpr int kMostRetries = 100;

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
  return length >= shortForm(keyword).GetLength() && length <= keyword.GetLength() &&
         keyword.Left(length).CompareNoCase(reply) == 0;
}

/// Common frame of the prompts for numbers: null replies, keywords, limits, asking again.
template <class Number>
int getNumber(const wchar_t* prompt, Number* result, bool (*readToken)(const KvEdToken&, Number&),
              const wchar_t* wanted) {
  KvEdEditor* editor = currentEditor();
  if (!editor || !result) return RTERROR;
  const auto options = editor->takeGetOptions();
  for (int attempt = 0; attempt < kMostRetries; ++attempt) {
    const KvEdToken token = editor->readToken(KvEdReadMode::Word, CString(prompt));
    if (token.kind == Kind::Cancel) return RTCAN;
    if (token.kind == Kind::Text && token.text.IsEmpty()) {
      if (!(options.flags & KVED_NONULL)) return RTNONE;
      editor->printLine(L"A value is needed.");
      continue;
    }
    if (token.kind == Kind::Text) {
      editor->lastInput = kvedMatchKeyword(options.keywords, token.text);
      if (!editor->lastInput.IsEmpty()) return RTKWORD;
    }
    Number value{};
    if (!readToken(token, value)) {
      if (token.kind == Kind::Text && (options.flags & KVED_ARBITRARY)) {
        editor->lastInput = token.text;
        return RTKWORD;
      }
      editor->printLine(wanted);
    } else if ((options.flags & KVED_NOZERO) && value == Number{}) {
      editor->printLine(L"The value must not be zero.");
    } else if ((options.flags & KVED_NONEG) && value < Number{}) {
      editor->printLine(L"The value must not be negative.");
    } else {
      *result = value;
      return RTNORM;
    }
  }
  return RTCAN;
}

bool readWhole(const KvEdToken& token, int& value) {
  if (token.kind == Kind::Whole) {
    value = token.whole;
    return true;
  }
  return token.kind == Kind::Text && platform::parseWhole(token.text.view(), value);
}

bool readReal(const KvEdToken& token, double& value) {
  if (token.kind == Kind::Real || token.kind == Kind::Angle) {
    value = token.numbers[0];
    return true;
  }
  if (token.kind == Kind::Whole) {
    value = token.whole;
    return true;
  }
  return token.kind == Kind::Text && platform::parseWhole(token.text.view(), value);
}

}  // namespace

CString kvedMatchKeyword(const CString& keywords, const CString& reply) {
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
  if (token.kind == Kind::Cancel) return RTCAN;
  if (token.kind == Kind::Whole)
    result.Format(L"%d", token.whole);
  else if (token.kind == Kind::Real)
    result = platform::wideFromUtf8(platform::shortest(token.numbers[0]));
  else
    result = token.text;
  return RTNORM;
}

int kvedGetKword(const wchar_t* prompt, CString& result) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  const auto options = editor->takeGetOptions();
  for (int attempt = 0; attempt < kMostRetries; ++attempt) {
    const KvEdToken token = editor->readToken(KvEdReadMode::Word, CString(prompt));
    if (token.kind == Kind::Cancel) return RTCAN;
    if (token.text.IsEmpty()) {
      if (!(options.flags & KVED_NONULL)) return RTNONE;
      continue;
    }
    result = kvedMatchKeyword(options.keywords, token.text);
    if (result.IsEmpty() && (options.flags & KVED_ARBITRARY)) result = token.text;
    if (!result.IsEmpty()) return RTNORM;
    editor->printLine(L"Not one of the options: " + options.keywords + L".");
  }
  return RTCAN;
}

int kvedGetInt(const wchar_t* prompt, int* result) {
  return getNumber<int>(prompt, result, readWhole, L"A whole number is needed.");
}

int kvedGetReal(const wchar_t* prompt, double* result) {
  return getNumber<double>(prompt, result, readReal, L"A number is needed.");
}

int kvedGetInput(CString& result) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return RTERROR;
  result = editor->lastInput;
  return RTNORM;
}
