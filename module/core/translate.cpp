#include "module/core/translate.h"

#include <map>
#include <memory>

#include "module/core/files.h"
#include "module/core/names.h"
#include "module/core/paths.h"
#include "module/core/settings.h"
#include "module/core/text.h"
#include "platform/text/number.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kMostMacros = 100;

/// File key to message number to language number to text.
using Table = std::map<CString, std::map<int, std::map<int, CString>>>;

std::unique_ptr<Table>& table() {
  static std::unique_ptr<Table> own;
  return own;
}

/// The language numbers of the columns; empty when the line isn't a heading.
std::vector<int> readHeading(const CString& line) {
  std::vector<int> languages;
  if (line.Left(3) != L"/lg") return languages;
  CStringArray codes;
  IM_SplitString(line.Mid(3).Trim(), codes);
  for (const CString& code : codes) languages.push_back(mek::IM_LanguageCodeToId(code));
  return languages;
}

CString lookUp(const CString& fileKey, int number) {
  if (!table()) return CString();
  const auto file = table()->find(CString(fileKey).MakeUpper());
  if (file == table()->end()) return CString();
  const auto message = file->second.find(number);
  if (message == file->second.end()) return CString();
  const auto text = message->second.find(g_eSoftLanguage);
  return text == message->second.end() ? CString() : text->second;
}

/// The file key and message number of a macro's inside; false when it has another form.
bool readMacro(CString inside, CString& fileKey, int& number) {
  inside.Trim(L"()");
  CStringArray words;
  if (IM_SplitString(inside, words) != 3) {
    if (IM_SplitString(inside, L"\"", words) != 3) return false;
    words.SetAt(0, words.GetAt(0).Trim());
    words.SetAt(2, words.GetAt(2).Trim());
  }
  fileKey = words.GetAt(1).Trim(L'"');
  number = _wtoi(words.GetAt(2));
  return true;
}

/// Cuts a number in braces off the text's end.
void takeValue(CString& text, double* value) {
  if (value) *value = -1.0;
  if (text.IsEmpty() || text.GetAt(text.GetLength() - 1) != L'}') return;
  const int brace = text.ReverseFind(L'{');
  if (brace < 1) return;
  if (value) *value = _wtof(text.Mid(brace + 1, text.GetLength() - brace - 2));
  text = text.Left(brace);
}

CString translate(CString text, double* value, int macrosLeft) {
  takeValue(text, value);
  const CString upper = CString(text).MakeUpper();
  int start = upper.Find(L"(GENMSG");
  if (start < 0) start = upper.Find(L"(GEFMSG");
  if (start < 0 || macrosLeft == 0) return text;
  const int end = text.Find(L')', start);
  if (end < 0) return text;
  CString fileKey;
  int number = 0;
  if (!readMacro(text.Mid(start, end - start + 1), fileKey, number)) return text;
  const CString message = lookUp(fileKey, number);
  if (message.IsEmpty()) return text;
  return translate(text.Left(start) + message + text.Mid(end + 1), nullptr, macrosLeft - 1);
}

}  // namespace

void IM_TranslateGenMsg() {
  mek::releaseTranslations();
  table() = std::make_unique<Table>();
  std::vector<CString> files;
  IM_FindFile(mek::IM_GetTranslatorPath() + L"*.mld", files, 1);
  for (const CString& file : files) {
    CString content;
    if (IM_ReadUnicodeFile(file, content))
      mek::addTranslations(ImFileName::GetFileNameWithoutExt(file), content);
  }
}

CString IM_TranslateGenMsg(CString const& text, double* value) {
  return translate(text, value, kMostMacros);
}

void mek::releaseTranslations() {
  table().reset();
}

void mek::addTranslations(const CString& fileKey, const CString& content) {
  if (!table()) table() = std::make_unique<Table>();
  std::vector<CString> lines;
  if (IM_SplitString(content, L"\r\n", lines) < 2) return;
  const std::vector<int> languages = readHeading(lines.front());
  if (languages.empty()) return;
  auto& messages = (*table())[CString(fileKey).MakeUpper()];
  for (std::size_t i = 1; i < lines.size(); ++i) {
    std::vector<CString> parts;
    if (IM_SplitString(lines[i], L"\"", parts) != static_cast<int>(2 * languages.size() + 1)) continue;
    auto& texts = messages[_wtoi(parts.front().Trim())];
    for (std::size_t column = 0; column < languages.size(); ++column)
      texts[languages[column]] = parts[2 * column + 1];
  }
}
