#include "platform/text/cstring.h"

#include <algorithm>

#include "platform/text/casemap.h"
#include "platform/text/utf.h"

namespace {

template <class Ch>
constexpr Ch kBlanks[] = {' ', '\t', '\n', '\v', '\f', '\r', 0};

template <class Ch>
Ch upperOf(Ch c) {
  if constexpr (sizeof(Ch) == 1)
    return c >= 'a' && c <= 'z' ? static_cast<Ch>(c - 0x20) : c;
  else
    return platform::toUpper(c);
}

template <class Ch>
Ch lowerOf(Ch c) {
  if constexpr (sizeof(Ch) == 1)
    return c >= 'A' && c <= 'Z' ? static_cast<Ch>(c + 0x20) : c;
  else
    return platform::toLower(c);
}

template <class Ch>
Ch foldOf(Ch c) {
  if constexpr (sizeof(Ch) == 1)
    return lowerOf(c);
  else
    return platform::foldCase(c);
}

template <class Ch>
int compareFolded(std::basic_string_view<Ch> a, std::basic_string_view<Ch> b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] == b[i]) continue;
    const Ch x = foldOf(a[i]), y = foldOf(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

template <class Ch>
std::basic_string_view<Ch> viewOf(const Ch* text) {
  return text ? std::basic_string_view<Ch>(text) : std::basic_string_view<Ch>();
}

constexpr int asInt(std::size_t position) {
  return position == std::string::npos ? -1 : static_cast<int>(position);
}

constexpr std::size_t clampedIndex(int index, std::size_t length) {
  return std::min(static_cast<std::size_t>(std::max(index, 0)), length);
}

}  // namespace

template <class Ch>
void CStringT<Ch>::SetAt(int index, Ch character) {
  if (index >= 0 && index < GetLength()) text_[static_cast<std::size_t>(index)] = character;
}

template <class Ch>
Ch* CStringT<Ch>::GetBuffer(int length) {
  if (length > GetLength()) text_.resize(static_cast<std::size_t>(length));
  return text_.data();
}

template <class Ch>
void CStringT<Ch>::ReleaseBuffer(int length) {
  text_.resize(length < 0 ? std::char_traits<Ch>::length(text_.c_str()) : static_cast<std::size_t>(length));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::Left(int count) const {
  return CStringT(View(text_).substr(0, clampedIndex(count, text_.size())));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::Right(int count) const {
  return CStringT(View(text_).substr(text_.size() - clampedIndex(count, text_.size())));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::Mid(int first) const {
  return CStringT(View(text_).substr(clampedIndex(first, text_.size())));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::Mid(int first, int count) const {
  return CStringT(
      View(text_).substr(clampedIndex(first, text_.size()), static_cast<std::size_t>(std::max(count, 0))));
}

template <class Ch>
int CStringT<Ch>::Find(const Ch* what, int start) const {
  if (start < 0 || start > GetLength()) return -1;
  return asInt(text_.find(viewOf(what), static_cast<std::size_t>(start)));
}

template <class Ch>
int CStringT<Ch>::Find(Ch character, int start) const {
  if (start < 0 || start >= GetLength()) return -1;
  return asInt(text_.find(character, static_cast<std::size_t>(start)));
}

template <class Ch>
int CStringT<Ch>::ReverseFind(Ch character) const {
  return asInt(text_.rfind(character));
}

template <class Ch>
int CStringT<Ch>::FindOneOf(const Ch* characters) const {
  return asInt(text_.find_first_of(viewOf(characters)));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::SpanIncluding(const Ch* characters) const {
  return CStringT(View(text_).substr(0, text_.find_first_not_of(viewOf(characters))));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::SpanExcluding(const Ch* characters) const {
  return CStringT(View(text_).substr(0, text_.find_first_of(viewOf(characters))));
}

template <class Ch>
CStringT<Ch> CStringT<Ch>::Tokenize(const Ch* separators, int& position) const {
  if (position >= 0) {
    const auto first = text_.find_first_not_of(viewOf(separators), static_cast<std::size_t>(position));
    if (first != Std::npos) {
      const auto end = std::min(text_.find_first_of(viewOf(separators), first), text_.size());
      position = static_cast<int>(std::min(end + 1, text_.size()));
      return CStringT(View(text_).substr(first, end - first));
    }
  }
  position = -1;
  return CStringT();
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::TrimLeft(const Ch* characters) {
  text_.erase(0, std::min(text_.find_first_not_of(viewOf(characters)), text_.size()));
  return *this;
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::TrimRight(const Ch* characters) {
  text_.erase(text_.find_last_not_of(viewOf(characters)) + 1);
  return *this;
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::TrimLeft(Ch character) {
  const Ch set[] = {character, 0};
  return TrimLeft(set);
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::TrimRight(Ch character) {
  const Ch set[] = {character, 0};
  return TrimRight(set);
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::TrimLeft() {
  return TrimLeft(kBlanks<Ch>);
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::TrimRight() {
  return TrimRight(kBlanks<Ch>);
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::MakeUpper() {
  std::transform(text_.begin(), text_.end(), text_.begin(), upperOf<Ch>);
  return *this;
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::MakeLower() {
  std::transform(text_.begin(), text_.end(), text_.begin(), lowerOf<Ch>);
  return *this;
}

template <class Ch>
CStringT<Ch>& CStringT<Ch>::MakeReverse() {
  std::reverse(text_.begin(), text_.end());
  return *this;
}

template <class Ch>
int CStringT<Ch>::Compare(const Ch* other) const {
  const int order = View(text_).compare(viewOf(other));
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

template <class Ch>
int CStringT<Ch>::CompareNoCase(const Ch* other) const {
  return compareFolded<Ch>(text_, viewOf(other));
}

template <class Ch>
int CStringT<Ch>::Replace(const Ch* from, const Ch* to) {
  const View what = viewOf(from), with = viewOf(to);
  if (what.empty()) return 0;
  Std out;
  int count = 0;
  std::size_t at = 0;
  for (auto hit = text_.find(what); hit != Std::npos; hit = text_.find(what, at), ++count) {
    out.append(text_, at, hit - at).append(with);
    at = hit + what.size();
  }
  if (count == 0) return 0;
  out.append(text_, at);
  text_ = std::move(out);
  return count;
}

template <class Ch>
int CStringT<Ch>::Replace(Ch from, Ch to) {
  const auto count = std::count(text_.begin(), text_.end(), from);
  std::replace(text_.begin(), text_.end(), from, to);
  return static_cast<int>(count);
}

template <class Ch>
int CStringT<Ch>::Remove(Ch character) {
  return static_cast<int>(std::erase(text_, character));
}

template <class Ch>
int CStringT<Ch>::Insert(int index, const Ch* text) {
  text_.insert(clampedIndex(index, text_.size()), viewOf(text));
  return GetLength();
}

template <class Ch>
int CStringT<Ch>::Insert(int index, Ch character) {
  text_.insert(clampedIndex(index, text_.size()), 1, character);
  return GetLength();
}

template <class Ch>
int CStringT<Ch>::Delete(int index, int count) {
  if (count > 0) text_.erase(clampedIndex(index, text_.size()), static_cast<std::size_t>(count));
  return GetLength();
}

template class CStringT<wchar_t>;
template class CStringT<char>;

namespace platform {

int compareNoCase(std::wstring_view a, std::wstring_view b) {
  return compareFolded<wchar_t>(a, b);
}

bool equalNoCase(std::wstring_view a, std::wstring_view b) {
  return a.size() == b.size() && compareNoCase(a, b) == 0;
}

bool equalNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && compareFolded<char>(a, b) == 0;
}

bool startsWithNoCase(std::wstring_view text, std::wstring_view prefix) {
  return text.size() >= prefix.size() && equalNoCase(text.substr(0, prefix.size()), prefix);
}

CString wideFromUtf8(std::string_view bytes) {
  return CString(fromUtf8(bytes));
}
std::string utf8From(const CString& text) {
  return toUtf8(text.view());
}

}  // namespace platform
