#include "host/commands/completion.h"

#include <algorithm>

namespace {

bool beginsWith(const CString& word, const CString& start) {
  return word.GetLength() >= start.GetLength() && word.Left(start.GetLength()).CompareNoCase(start) == 0;
}

/// The keywords between the brackets that stand last; of several words the first is the keyword.
std::vector<CString> keywordsIn(const CString& prompt) {
  std::vector<CString> words;
  const int open = prompt.ReverseFind(L'['), close = prompt.ReverseFind(L']');
  if (open < 0 || close < open) return words;
  for (int from = open + 1; from < close;) {
    int end = prompt.Find(L"/", from);
    if (end < 0 || end > close) end = close;
    CString word = prompt.Mid(from, end - from);
    if (const int blank = word.Find(L" "); blank >= 0) word = word.Left(blank);
    if (!word.IsEmpty()) words.push_back(word);
    from = end + 1;
  }
  return words;
}

}  // namespace

std::vector<CString> kvcmdCompletions(const KvEdEditor& editor, const CString& prompt, const CString& start) {
  std::vector<CString> words;
  const auto offer = [&](const CString& word) {
    const bool isThere = std::any_of(words.begin(), words.end(),
                                     [&](const CString& one) { return one.CompareNoCase(word) == 0; });
    if (beginsWith(word, start) && !isThere) words.push_back(word);
  };
  if (CString(prompt).Trim() != CString(kKvCommandPrompt).Trim()) {
    for (const CString& word : keywordsIn(prompt)) offer(word);
    return words;
  }
  std::vector<CString> names;
  for (const KvEdCommand* command : editor.commands().commands()) names.push_back(command->localName());
  std::sort(names.begin(), names.end());
  for (const CString& name : names) offer(name);
  if (start.IsEmpty() || !words.empty()) return words;
  for (const KvEdVariable* variable : editor.variables().all()) offer(variable->name);
  return words;
}

CString kvcmdCommonStart(const std::vector<CString>& words) {
  if (words.empty()) return {};
  CString common = words.front();
  for (const CString& word : words)
    while (!common.IsEmpty() && !beginsWith(word, common)) common = common.Left(common.GetLength() - 1);
  return common;
}
