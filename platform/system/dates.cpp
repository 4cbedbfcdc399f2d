#include "platform/system/dates.h"

#include <langinfo.h>
#include <locale.h>

#include "platform/system/services.h"
#include "platform/text/codepage.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

// Consecutive in the C library, but only by habit of its authors; so they are listed.
constexpr nl_item kLongDays[] = {DAY_1, DAY_2, DAY_3, DAY_4, DAY_5, DAY_6, DAY_7};
constexpr nl_item kShortDays[] = {ABDAY_1, ABDAY_2, ABDAY_3, ABDAY_4, ABDAY_5, ABDAY_6, ABDAY_7};
constexpr nl_item kLongMonths[] = {MON_1, MON_2, MON_3, MON_4,  MON_5,  MON_6,
                                   MON_7, MON_8, MON_9, MON_10, MON_11, MON_12};
constexpr nl_item kShortMonths[] = {ABMON_1, ABMON_2, ABMON_3, ABMON_4,  ABMON_5,  ABMON_6,
                                    ABMON_7, ABMON_8, ABMON_9, ABMON_10, ABMON_11, ABMON_12};

struct Token {
  wchar_t letter;
  const wchar_t* padded;
  const wchar_t* plain;  ///< behind a `-`
};
constexpr Token kTokens[] = {{L'Y', L"yyyy", L"yyyy"},
                             {L'y', L"yy", L"yy"},
                             {L'm', L"MM", L"M"},
                             {L'd', L"dd", L"d"},
                             {L'e', L"d", L"d"},
                             {L'b', L"MMM", L"MMM"},
                             {L'h', L"MMM", L"MMM"},
                             {L'B', L"MMMM", L"MMMM"},
                             {L'a', L"ddd", L"ddd"},
                             {L'A', L"dddd", L"dddd"},
                             {L'D', L"MM/dd/yy", L"M/d/yy"},
                             {L'F', L"yyyy-MM-dd", L"yyyy-M-d"},
                             {L'%', L"%", L"%"}};

constexpr const wchar_t* kDefaultFormat = L"yyyy-M-d";

/// A locale of the C library that frees itself; the C locale stands in for one that isn't there.
class Locale {
 public:
  explicit Locale(const char* name) : handle_(::newlocale(LC_TIME_MASK | LC_CTYPE_MASK, name, nullptr)) {
    if (!handle_) handle_ = ::newlocale(LC_ALL_MASK, "C", nullptr);
  }
  ~Locale() { ::freelocale(handle_); }
  Locale(const Locale&) = delete;
  Locale& operator=(const Locale&) = delete;

  CString text(nl_item item) const {
    const std::string_view bytes = ::nl_langinfo_l(item, handle_);
    const std::string charset = ::nl_langinfo_l(CODESET, handle_);
    if (charset == "UTF-8") return CString(fromUtf8(bytes));
    return CString(fromCharset(bytes, charset.c_str()).value_or(fromUtf8(bytes)));
  }
  template <std::size_t Count>
  void fill(std::array<CString, Count>& names, const nl_item (&items)[Count]) const {
    for (std::size_t i = 0; i < Count; ++i) names[i] = text(items[i]);
  }

 private:
  locale_t handle_;
};

}  // namespace

CString datePicture(std::wstring_view format) {
  CString result;
  for (std::size_t at = 0; at < format.size(); ++at) {
    if (format[at] != L'%') {
      result.AppendChar(format[at]);
      continue;
    }
    bool plain = false;
    // Flags and modifiers: - leaves zeros out, the others don't change what is shown of a date.
    while (++at < format.size() && std::wstring_view(L"-_0^#EO").find(format[at]) != std::wstring_view::npos)
      plain = plain || format[at] == L'-';
    for (const Token& token : kTokens)
      if (at < format.size() && token.letter == format[at]) result += plain ? token.plain : token.padded;
  }
  return result;
}

DateNames dateNamesOfLocale(const char* name) {
  const Locale locale(name);
  const Locale plain("C");
  DateNames names;
  const CString format = locale.text(D_FMT);
  // The C locale's American format is nobody's choice.
  if (format != plain.text(D_FMT)) names.shortFormat = datePicture(format.view());
  if (names.shortFormat.IsEmpty()) names.shortFormat = kDefaultFormat;
  locale.fill(names.longDays, kLongDays);
  locale.fill(names.shortDays, kShortDays);
  locale.fill(names.longMonths, kLongMonths);
  locale.fill(names.shortMonths, kShortMonths);
  return names;
}

DateNames userDateNames() {
  const auto& own = systemServices().dates;
  return own ? *own : dateNamesOfLocale("");
}

}  // namespace platform
