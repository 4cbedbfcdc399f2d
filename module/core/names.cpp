#include "module/core/names.h"

#include <chrono>
#include <set>

#include "platform/system/dates.h"
#include "platform/text/number.h"

namespace {

constexpr int kLetters = 26;

/// The next code of one character: one or two characters, or empty for one that has no next.
CString nextOfCharacter(wchar_t c) {
  if (c == L'9') return L"10";
  if (c == L'z') return L"aa";
  if (c == L'Z') return L"AA";
  const bool counts = (c >= L'0' && c < L'9') || (c >= L'a' && c < L'z') || (c >= L'A' && c < L'Z');
  return counts ? CString(static_cast<wchar_t>(c + 1)) : CString();
}

CString nextCode(CString code) {
  for (int at = code.GetLength() - 1; at >= 0; --at) {
    const CString next = nextOfCharacter(code.GetAt(at));
    if (next.IsEmpty()) return code;
    if (next.GetLength() == 1) {
      code.SetAt(at, next.GetAt(0));
      return code;
    }
    code.SetAt(at, next.GetAt(1));
    if (at == 0) code.Insert(0, next.GetAt(0));
  }
  return code;
}

/// The number of a text that is decimal digits only; false for any other text.
bool decimalNumber(const CString& text, int& number) {
  if (text.IsEmpty() || !text.SpanIncluding(L"0123456789").GetLength() ||
      text.SpanIncluding(L"0123456789") != text)
    return false;
  number = _wtoi(text);
  return true;
}

/// Brings the longest token of one kind that occurs (four, three, two or one letters) to the four-letter
/// form, and answers how many letters it had; 0 when none occurs.
int unifyToken(CString& format, wchar_t letter) {
  for (int length = 4; length >= 1; --length) {
    const CString token(letter, length);
    if (format.Find(token) < 0) continue;
    if (length < 4) format.Replace(token, CString(letter, 4));
    return length;
  }
  return 0;
}

/// 0 for Sunday; -1 for a date that doesn't exist.
int dayOfWeek(int year, int month, int day) {
  using namespace std::chrono;
  const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day))};
  return date.ok() ? static_cast<int>(weekday(sys_days(date)).c_encoding()) : -1;
}

template <class Names>
CString nameAt(const Names& names, int index) {
  return index >= 0 && index < static_cast<int>(names.size()) ? names[static_cast<std::size_t>(index)]
                                                              : CString();
}

CString twoDigits(int value) {
  CString text;
  text.Format(L"%02d", value);
  return text;
}

CString plain(int value) {
  CString text;
  text.Format(L"%d", value);
  return text;
}

}  // namespace

CString IM_FormatNumberToAlphabet(int number, CString excluded, int upperCase) {
  excluded.MakeUpper();
  CString alphabet;
  for (int i = 0; i < kLetters; ++i) {
    const auto letter = static_cast<wchar_t>(L'A' + i);
    if (excluded.Find(letter) < 0) alphabet += letter;
  }
  const int size = alphabet.GetLength();
  if (number <= 0 || size < 2) return CString();
  CString label;
  for (; number > 0; number = (number - 1) / size) label.Insert(0, alphabet.GetAt((number - 1) % size));
  return upperCase ? label : label.MakeLower();
}

CString IM_GetNextCode(CString code, int steps) {
  for (int i = 0; i < steps; ++i) {
    const CString next = nextCode(code);
    if (next == code) break;
    code = next;
  }
  return code;
}

CString IM_GetNewItemName(std::vector<CString> const& existing, CString prefix, int first) {
  std::set<int> used;
  for (const CString& name : existing) {
    int number = 0;
    if (platform::startsWithNoCase(name.view(), prefix.view()) &&
        decimalNumber(name.Mid(prefix.GetLength()), number))
      used.insert(number);
  }
  int number = first;
  while (used.count(number)) ++number;
  CString name;
  name.Format(L"%s%d", prefix, number);
  return name;
}

CString ImFileName::GetFileName(CString path) {
  return path.Mid(path.ReverseFind(L'\\') + 1);
}

CString ImFileName::GetFileNameWithoutExt(CString path) {
  const CString name = GetFileName(path);
  const int point = name.ReverseFind(L'.');
  return point < 0 ? name : name.Left(point);
}

CString ImFileName::GetFileExtName(CString path) {
  const CString name = GetFileName(path);
  const int point = name.ReverseFind(L'.');
  return point < 0 ? CString() : name.Mid(point + 1);
}

CString ImFileName::GetFilePath(CString path, int keepSeparator) {
  const int separator = path.ReverseFind(L'\\');
  return separator < 1 ? CString() : path.Left(separator + (keepSeparator ? 1 : 0));
}

int IM_IsFilePathNameAbsolute(CString path) {
  return path.Find(L':', 1) >= 1 || (path.GetLength() > 2 && path.Left(2) == L"\\\\");
}

CString IM_GetSystemDateFormat(int date, CString format) {
  const platform::DateNames names = platform::userDateNames();
  if (format.IsEmpty()) format = names.shortFormat;
  const int year = date / 10000, month = date / 100 % 100, day = date % 100;
  const int weekday = dayOfWeek(year, month, day);

  const int dayLetters = unifyToken(format, L'd');
  const int monthLetters = unifyToken(format, L'M');
  const int yearLetters = format.Find(L"yyyy") >= 0 ? 4
                          : format.Find(L"yy") >= 0 ? 2
                          : format.Find(L'y') >= 0  ? 1
                                                    : 0;
  if (yearLetters == 2) format.Replace(L"yy", L"yyyy");
  if (yearLetters == 1) format.Replace(L"y", L"yyyy");

  const CString yearText = yearLetters == 4   ? plain(year)
                           : yearLetters == 2 ? twoDigits(year % 100)
                                              : plain(year % 100);
  const CString dayText = dayLetters == 4   ? nameAt(names.longDays, weekday)
                          : dayLetters == 3 ? nameAt(names.shortDays, weekday)
                          : dayLetters == 2 ? twoDigits(day)
                                            : plain(day);
  const CString monthText = monthLetters == 4   ? nameAt(names.longMonths, month - 1)
                            : monthLetters == 3 ? nameAt(names.shortMonths, month - 1)
                            : monthLetters == 2 ? twoDigits(month)
                                                : plain(month);
  format.Replace(L"yyyy", yearText);
  format.Replace(L"dddd", dayText);
  format.Replace(L"MMMM", monthText);
  return format;
}
