#pragma once
// How the user writes dates. The short format is a picture of the product's kind: d dd ddd dddd, M MM MMM
// MMMM, y yy yyyy, all else literal.
#include <array>
#include <string_view>

#include "platform/text/cstring.h"

namespace platform {

struct DateNames {
  CString shortFormat;              ///< "yyyy-M-d"
  std::array<CString, 7> longDays;  ///< from Sunday
  std::array<CString, 7> shortDays;
  std::array<CString, 12> longMonths;  ///< from January
  std::array<CString, 12> shortMonths;
};

/// Those of the services in force; by default those of the user's locale (LC_ALL, LC_TIME, LANG). Without a
/// locale, and in the C locale: "yyyy-M-d" and English names.
DateNames userDateNames();

/// Those of a locale of the C library ("de_DE.UTF-8"); as above when there is no such locale.
DateNames dateNamesOfLocale(const char* name);

/// The picture for a strftime format: %Y yyyy, %y yy, %m MM, %-m M, %d dd, %e d, %b MMM, %B MMMM, %a ddd, %A
/// dddd, %D and %F in full; other conversions are left out.
CString datePicture(std::wstring_view format);

}  // namespace platform
