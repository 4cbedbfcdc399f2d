#include "host/commands/command_table.h"

#include <algorithm>

#include "host/commands/internal/rows.h"

namespace {

/// The words of a row's aliases.
std::vector<CString> words(const wchar_t* text) {
  std::vector<CString> all;
  std::wstring_view left(text);
  while (!left.empty()) {
    const std::size_t blank = left.find(L' ');
    if (blank != 0) all.emplace_back(left.substr(0, blank));
    left = blank == std::wstring_view::npos ? std::wstring_view() : left.substr(blank + 1);
  }
  return all;
}

constexpr const wchar_t* kGroup = L"HOST";

}  // namespace

std::vector<const KvCommandRow*> kvcmdRows() {
  std::vector<const KvCommandRow*> rows;
  for (std::span<const KvCommandRow> part : kvcmd::allRows())
    for (const KvCommandRow& row : part) rows.push_back(&row);
  std::sort(rows.begin(), rows.end(), [](const KvCommandRow* a, const KvCommandRow* b) {
    return std::wstring_view(a->name) < std::wstring_view(b->name);
  });
  return rows;
}

const KvCommandRow* kvcmdFind(const wchar_t* name) {
  const CString wanted(name ? name : L"");
  for (const KvCommandRow* row : kvcmdRows()) {
    if (wanted.CompareNoCase(row->name) == 0) return row;
    for (const CString& alias : words(row->aliases))
      if (wanted.CompareNoCase(alias) == 0) return row;
  }
  return nullptr;
}

void kvcmdRegister(KvEdCommandStack& stack) {
  for (const KvCommandRow* row : kvcmdRows()) {
    stack.addCommand(kGroup, row->name, row->name, row->flags, row->run);
    for (const CString& alias : words(row->aliases))
      stack.addCommand(kGroup, alias, alias, row->flags, row->run);
  }
}

CString kvcmdHelp(const KvCommandRow& row) {
  CString text = row.name;
  if (*row.aliases) text += L" (" + CString(row.aliases) + L")";
  text += L": " + CString(row.purpose);
  if (*row.prompts) text += L"\n" + CString(row.prompts);
  return text;
}

CString kvcmdDocument() {
  CString text =
      L"# Commands\n\nMade by `korvane help --markdown` from the commands' own table. Points are typed as "
      L"`x,y`, `@dx,dy`, "
      L"`@distance<angle` or `*x,y` (world); an empty line takes the default or ends a list; `Esc`, or `^C` "
      L"in a script, cancels.\n\nIn place of a point there may stand object snaps before a rough one (`end`, "
      L"`mid,cen`), `.x` and the like (these coordinates from one point, the others from the next), `from` "
      L"(a "
      L"base and an offset), `mtp` (the middle of two points), `tt` (a point to count from), a distance (on "
      L"in "
      L"the direction shown last), or `<angle` and a distance. Transparent commands run inside others behind "
      L"an "
      L"apostrophe: `'ZOOM`.\n";
  for (const KvCommandRow* row : kvcmdRows()) {
    text += L"\n## " + CString(row->name) + L"\n\n" + CString(row->purpose) + L"\n";
    if (*row->aliases) text += L"\nAlso: `" + CString(row->aliases) + L"`\n";
    if (*row->prompts) text += L"\n```\n" + CString(row->prompts) + L"\n```\n";
  }
  return text;
}
