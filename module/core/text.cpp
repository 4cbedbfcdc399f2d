#include "module/core/text.h"

#include <algorithm>

namespace {

void addPart(CStringArray& out, const CString& part) {
  out.Add(part);
}
void addPart(CStringArrayA& out, const CStringA& part) {
  out.Add(part);
}
template <class Text>
void addPart(std::vector<Text>& out, const Text& part) {
  out.push_back(part);
}

void emptyParts(CStringArray& out) {
  out.RemoveAll();
}
void emptyParts(CStringArrayA& out) {
  out.RemoveAll();
}
template <class Text>
void emptyParts(std::vector<Text>& out) {
  out.clear();
}

/// The one splitter: `cuts(index)` tells whether the occurrence at `index` cuts.
template <class Text, class Parts, class Cuts>
int split(const Text& text, const Text& separator, Parts& out, Cuts cuts) {
  emptyParts(out);
  if (text.IsEmpty() || separator.IsEmpty()) return 0;
  int count = 1;
  int partStart = 0;
  for (int hit = text.Find(separator); hit >= 0; hit = text.Find(separator, hit + 1)) {
    if (!cuts(hit)) continue;
    addPart(out, text.Mid(partStart, hit - partStart));
    partStart = hit + separator.GetLength();
    ++count;
  }
  addPart(out, text.Mid(partStart));
  return count;
}

template <class Text, class Parts>
int splitAtEach(const Text& text, const Text& separator, Parts& out) {
  return split(text, separator, out, [](int) { return true; });
}

/// Tabs as blanks, and no two blanks side by side.
template <class Text>
Text withSingleBlanks(const Text& text) {
  Text out;
  for (int i = 0; i < text.GetLength(); ++i) {
    auto c = text.GetAt(i);
    if (c == '\t') c = ' ';
    if (c == ' ' && !out.IsEmpty() && out.GetAt(out.GetLength() - 1) == ' ') continue;
    out += c;
  }
  return out;
}

bool sameText(const CString& a, const CString& b, int ignoreCase) {
  return ignoreCase ? a.CompareNoCase(b) == 0 : a == b;
}

/// IM_FindString on texts that are brought to one case already.
int findUnescaped(const CString& text, const CString& what, int start) {
  int hit = text.Find(what, std::max(start, 0));
  while (hit > 0 && IM_IsStringEscapedAt(text, hit)) hit = text.Find(what, hit + 1);
  return hit;
}

}  // namespace

int IM_SplitString(CString text, CString separator, CStringArray& out) {
  return splitAtEach(text, separator, out);
}
int IM_SplitString(CString text, CString separator, std::vector<CString>& out) {
  return splitAtEach(text, separator, out);
}
int IM_SplitString(CString text, CStringArray& out) {
  return splitAtEach(withSingleBlanks(text), CString(L" "), out);
}

int IM_SplitStringA(CStringA text, CStringA separator, CStringArrayA& out) {
  return splitAtEach(text, separator, out);
}
int IM_SplitStringA(CStringA text, CStringA separator, std::vector<CStringA>& out) {
  return splitAtEach(text, separator, out);
}
int IM_SplitStringA(CStringA text, CStringArrayA& out) {
  return splitAtEach(withSingleBlanks(text), CStringA(" "), out);
}
int IM_SplitStringA(CStringA text, char separator, CStringArrayA& out) {
  return splitAtEach(text, separator ? CStringA(separator) : CStringA(), out);
}

int IM_SplitStringESC(CString text, CString separator, CStringArray& out) {
  return split(text, separator, out, [&](int hit) { return hit > 0 && text.GetAt(hit - 1) != L'\\'; });
}

int IM_IsStringEscapedAt(CString const& text, int index) {
  int backslashes = 0;
  for (int i = index - 1; i >= 0 && text.GetAt(i) == L'\\'; --i) ++backslashes;
  return backslashes % 2;
}

int IM_FindString(CString text, CString what, int start, int ignoreCase) {
  if (ignoreCase) {
    text.MakeUpper();
    what.MakeUpper();
  }
  return findUnescaped(text, what, start);
}

int IM_ReverseFindString(CString text, CString what, int end, int ignoreCase) {
  if (ignoreCase) {
    text.MakeUpper();
    what.MakeUpper();
  }
  if (end < 0) end = text.GetLength();
  int last = -1;
  for (int hit = findUnescaped(text, what, 0); hit >= 0 && hit + what.GetLength() <= end;
       hit = findUnescaped(text, what, hit + 1))
    last = hit;
  return last;
}

CString IM_TrimRight(CString text, CString suffix, int ignoreCase) {
  const int kept = text.GetLength() - suffix.GetLength();
  return kept >= 0 && sameText(text.Mid(kept), suffix, ignoreCase) ? text.Left(kept) : text;
}

CString IM_TrimLeft(CString text, CString prefix, int ignoreCase) {
  const int length = prefix.GetLength();
  return text.GetLength() >= length && sameText(text.Left(length), prefix, ignoreCase) ? text.Mid(length)
                                                                                       : text;
}
