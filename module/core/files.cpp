#include "module/core/files.h"

#include "module/core/encoding.h"
#include "module/core/names.h"
#include "platform/files/files.h"
#include "platform/text/utf.h"

namespace {

/// Beyond it no file system takes a path; without the limit every part of one would be tried.
constexpr int kLongestPath = 4096;
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

int collect(const std::vector<platform::FoundFile>& found, const CString& folder, std::vector<CString>& out,
            int fullPath) {
  for (const auto& entry : found)
    if (!entry.isFolder && !entry.isDots) out.push_back(fullPath ? folder + L"\\" + entry.name : entry.name);
  return !out.empty();
}

}  // namespace

int IM_IsFileExist(CString path) {
  return !path.IsEmpty() && platform::findsAny(path);
}

int IM_FindFile(CString const& folder, CString const& pattern, std::vector<CString>& out, int fullPath) {
  const CString trimmed = CString(folder).TrimRight(L'\\');
  return collect(platform::findFiles(trimmed + L"\\" + pattern), trimmed, out, fullPath);
}

int IM_FindFile(CString const& pathPattern, std::vector<CString>& out, int fullPath) {
  const CString folder = pathPattern.Left(pathPattern.ReverseFind(L'\\'));
  return collect(platform::findFiles(pathPattern), folder, out, fullPath && !folder.IsEmpty());
}

int IM_CreateAllDirectory(CString path) {
  path.TrimRight(L'\\');
  if (path.IsEmpty() || path.GetLength() > kLongestPath) return 0;
  if (platform::isFolder(path) || platform::createFolder(path)) return 1;
  const CString parent = ImFileName::GetFilePath(path, 0);
  return !parent.IsEmpty() && IM_CreateAllDirectory(parent) && platform::createFolder(path);
}

int IM_EnsureFileDirectory(CString filePath) {
  const CString folder = ImFileName::GetFilePath(filePath, 0);
  return !folder.IsEmpty() && IM_CreateAllDirectory(folder);
}

int IM_WriteCFile(CString path, CString text) {
  return bool(platform::writeFile(path, IM_CStringW2A(text, 0).view()));
}

int IM_ReadCFile(CString path, CString& out) {
  std::string bytes;
  if (!platform::readFile(path, bytes)) return 0;
  out = IM_CStringA2W(CStringA(bytes), 0);
  return 1;
}

int IM_WriteUnicodeFile(CString path, CString text) {
  return bool(platform::writeFile(path, std::string(kUtf16Mark) + platform::toUtf16Bytes(text.view())));
}

int IM_ReadUnicodeFile(CString path, CString& out) {
  std::string bytes;
  if (!platform::readFile(path, bytes) || !bytes.starts_with(kUtf16Mark)) return 0;
  out = platform::fromUtf16Bytes(std::string_view(bytes).substr(kUtf16Mark.size()));
  return 1;
}

int IM_ReadFile(CString path, CString& out) {
  return IM_ReadUnicodeFile(path, out) || IM_ReadCFile(path, out);
}
