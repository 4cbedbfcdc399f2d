#include "host/editor/input.h"

#include <algorithm>

KvEdToken KvEdToken::ofText(CString text) {
  KvEdToken token;
  token.text = std::move(text);
  return token;
}

KvEdToken KvEdToken::of(Kind kind) {
  KvEdToken token;
  token.kind = kind;
  return token;
}

void KvEdLineReader::feed(std::wstring_view text, bool isLast) {
  text_.erase(0, at_);
  at_ = 0;
  for (wchar_t c : text)
    if (c != L'\r') text_ += c;
  if (isLast && !text_.empty() && text_.back() != L'\n') text_ += L'\n';
}

void KvEdLineReader::skipComments() {
  while (atLineStart_ && at_ < text_.size() && text_[at_] == L';') {
    const auto end = text_.find(L'\n', at_);
    if (end == std::wstring::npos) return;
    at_ = end + 1;
    ++line_;
  }
}

bool KvEdLineReader::next(KvEdReadMode mode, CString& answer) {
  skipComments();
  std::size_t end = text_.find(L'\n', at_);
  if (end == std::wstring::npos) return false;
  answerLine_ = line_;
  std::wstring_view line(text_.data() + at_, end - at_);
  std::size_t taken = line.size();
  if (mode == KvEdReadMode::Word && !line.empty() && line.front() == L'"' &&
      line.find(L'"', 1) != std::wstring_view::npos) {
    const auto quote = line.find(L'"', 1);
    answer = CString(line.substr(1, quote - 1));
    taken = quote + 1;
  } else {
    if (mode == KvEdReadMode::Word) taken = std::min(line.find_first_of(L" \t"), line.size());
    answer = CString(line.substr(0, taken));
  }
  at_ += taken + 1;  // the blank or line end that ended the answer
  atLineStart_ = taken >= line.size();
  if (atLineStart_) {
    at_ = end + 1;
    ++line_;
  }
  return true;
}

KvEdScriptSource::KvEdScriptSource(const CString& text) {
  reader_.feed(text.view(), true);
}

KvEdToken KvEdScriptSource::read(KvEdReadMode mode, const CString&) {
  CString answer;
  if (!reader_.next(mode, answer)) return KvEdToken::of(KvEdToken::Kind::End);
  // What people type for Escape, and the key itself.
  if (answer == L"^C" || answer == L"\x1b") return KvEdToken::of(KvEdToken::Kind::Cancel);
  return KvEdToken::ofText(std::move(answer));
}
