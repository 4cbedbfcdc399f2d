#pragma once
// Files by the product's paths: looking, making folders, and whole texts in 8-bit and UTF-16. 1 is success, 0
// failure.
#include <vector>

#include "module/core/export.h"
#include "platform/text/cstring.h"

/// A folder counts too; `*` and `?` are understood.
MEK_API int IM_IsFileExist(CString path);
/// Adds the names, or with `fullPath` the paths, of the files (no folders) of that one folder that fit the
/// pattern, sorted by name. 1 if `out` isn't empty afterwards.
MEK_API int IM_FindFile(CString const& folder, CString const& pattern, std::vector<CString>& out,
                        int fullPath);
MEK_API int IM_FindFile(CString const& pathPattern, std::vector<CString>& out, int fullPath);
/// Makes the folder with its parents; 1 if it is there afterwards. 0, and nothing made, beyond 4096
/// characters.
MEK_API int IM_CreateAllDirectory(CString path);
/// The same for the folder of a file; 0 for a name without folder.
MEK_API int IM_EnsureFileDirectory(CString filePath);

/// 8-bit text in the system's code page, without terminator. The file is replaced whole.
MEK_API int IM_WriteCFile(CString path, CString text);
MEK_API int IM_ReadCFile(CString path, CString& out);
/// UTF-16 little-endian behind the mark FF FE.
MEK_API int IM_WriteUnicodeFile(CString path, CString text);
/// 0 unless the file begins with FF FE; `out` is then untouched.
MEK_API int IM_ReadUnicodeFile(CString path, CString& out);
/// IM_ReadUnicodeFile, and IM_ReadCFile when that fails.
MEK_API int IM_ReadFile(CString path, CString& out);
