#pragma once
// The four stores of settings: the XML start-up file, profile (INI) files, the registry, and the order in
// which a product switch is looked up in them. Nothing is cached: a change in a file takes effect at the next
// read. No call reports a failure other than by its fall-back.
#include <map>

#include "module/core/export.h"
#include "platform/system/registry.h"
#include "platform/text/cstring.h"

/// The text of `StartupInfor//<section>//<key>` in the start-up file, also when it is empty; `defaultValue`
/// when file or node is missing.
MEK_API CString IM_GetSystemSettingString(CString section, CString key, CString defaultValue);
/// `_wtoi` of a text that isn't empty, else `defaultValue`.
MEK_API int IM_GetSystemSettingInt(CString section, CString key, int defaultValue);

/// At most `size` characters (the last place is the terminator's). An empty section or key gives an empty
/// text, whatever the default.
MEK_API CString IM_GetPrivateProfileString(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPCWSTR file,
                                           unsigned long size);
/// A file that doesn't exist is made first, empty but for its UTF-16 mark, and is written in UTF-16 from then
/// on. The write's own result.
MEK_API int IM_WritePrivateProfileString(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file);
MEK_API int IM_WritePrivateProfileInt(LPCWSTR section, LPCWSTR key, int value, LPCWSTR file);
/// Adds the section's pairs to `out`, trimmed; of equal keys the first stays. Entries without `=`, or with it
/// at index 0, are skipped. A section is cut at 2000 characters.
MEK_API void IM_GetPrivateProfileSectionMap(CString section, CString file, std::map<CString, CString>& out);
/// `defaultValue` when the file doesn't exist, the value is empty, or the read ended with an error.
MEK_API CString IM_GetConfigFileValue(CString file, CString section, CString key, CString defaultValue,
                                      unsigned long size);
/// Only into a file that exists; otherwise 0, and nothing is made.
MEK_API int IM_SetConfigFileValue(CString file, CString section, CString key, CString value);

/// Text values (types 1, 2) as they are, type 4 as `%d`, type 7 with a line feed before each string. Any
/// failure, another type, no bytes, or 5000 bytes and more: empty. `type`, if given, receives the value's
/// type.
MEK_API CString IM_GetRegeditValue(HKEY root, LPCWSTR subKey, LPCWSTR valueName, unsigned long* type);
/// The current user's branch, then the local machine's, then `defaultValue` (null: empty).
MEK_API CString IM_GetRegeditValue(LPCWSTR subKey, LPCWSTR valueName, LPCWSTR defaultValue,
                                   unsigned long* type);
/// Type 1, two bytes a character and no terminator, in the current user's branch, or when that fails in the
/// local machine's. 1 when one succeeded.
MEK_API int IM_SetRegeditValue(LPCWSTR subKey, LPCWSTR valueName, LPCWSTR value);

namespace mek {

/// From the user's `impro.ini`, 255 characters at most.
CString IM_GetProSettingString(const CString& section, const CString& key, const CString& defaultValue);
/// The user's `impro.ini` first, by presence; the start-up file next; the default last.
int IM_GetProSettingInt(const CString& section, const CString& key, int defaultValue);
/// `CHS` 1, `CHT` 2, `ENU` 3, `JPN` 4, `DEU` 5, `KOR` 6, `PLK` 7, `CSY` 8 in either case; 0 for anything
/// else.
int IM_LanguageCodeToId(CString code);

}  // namespace mek
