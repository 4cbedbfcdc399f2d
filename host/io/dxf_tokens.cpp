#include "host/io/internal/dxf_tokens.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "platform/text/number.h"

namespace kvio {
namespace {

constexpr std::string_view kBinaryMark("AutoCAD Binary DXF\r\n\x1a\0", 22);
constexpr int kHighestCode = 1071;
constexpr unsigned char kLongCode = 255;  // in the oldest form a two-byte code follows

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
    text.remove_suffix(1);
  return text;
}

bool readWhole(std::string_view text, std::int64_t& value) {
  constexpr std::size_t kShort = 9;
  if (text.size() <= kShort) {
    std::int64_t number = 0;
    std::size_t at = 0;
    while (at < text.size() && text[at] == ' ') ++at;
    const std::size_t first = at;
    for (; at < text.size() && static_cast<unsigned char>(text[at] - '0') < 10; ++at)
      number = number * 10 + (text[at] - '0');
    if (at == text.size() && at > first) {
      value = number;
      return true;
    }
  }
  text = trimmed(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc() && end == text.data() + text.size()) return !text.empty();
  // Some writers put whole numbers down as real ones.
  double real = 0;
  const auto [realEnd, realError] = std::from_chars(text.data(), text.data() + text.size(), real);
  if (realError != std::errc() || realEnd != text.data() + text.size() || !(std::fabs(real) < 9e15) ||
      real != std::trunc(real))
    return false;
  value = static_cast<std::int64_t>(real);
  return true;
}

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// Plain decimals of at most 15 digits: these digits as a whole number and the power of ten are both exact,
/// so that their quotient is the nearest number. False for all other forms.
bool readShortReal(std::string_view text, double& value) {
  constexpr std::size_t kLongest = 17;  // 15 digits, a sign, a point
  if (text.size() > kLongest) return false;
  const char* at = text.data();
  const char* const end = at + text.size();
  const bool isNegative = at != end && *at == '-';
  if (isNegative) ++at;
  std::int64_t digits = 0;
  const char* const first = at;
  const auto takeDigits = [&] {
    const char* const from = at;
    for (; at != end && static_cast<unsigned char>(*at - '0') < 10; ++at) digits = digits * 10 + (*at - '0');
    return static_cast<std::size_t>(at - from);
  };
  std::size_t count = takeDigits(), places = 0;
  if (at != end && *at == '.') {
    ++at;
    places = takeDigits();
    count += places;
  }
  if (at != end || first == end || count == 0 || count >= std::size(kPowersOfTen)) return false;
  const double number = static_cast<double>(digits) / kPowersOfTen[places];
  value = isNegative ? -number : number;
  return true;
}

bool readReal(std::string_view text, double& value) {
  if (readShortReal(text, value)) return true;
  text = trimmed(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc() && end == text.data() + text.size()) return std::isfinite(value);
  if (error == std::errc::result_out_of_range) value = platform::parseDouble(text);
  return error == std::errc::result_out_of_range && std::isfinite(value);
}

bool readHandle(std::string_view text, std::int64_t& value) {
  text = trimmed(text);
  std::uint64_t handle = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
  value = static_cast<std::int64_t>(handle);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

/// In dimension styles of the oldest files group 5 is the name of a block.
bool isNameInOldFiles(RawGroup& group) {
  if (group.code != 5) return false;
  group.kind = KvDxfKind::Text;
  return true;
}

CString shown(std::string_view bytes) {
  constexpr std::size_t kMostShown = 40;
  CString text;
  for (char c : bytes.substr(0, kMostShown))
    text += static_cast<unsigned char>(c) < 0x20 ? L'?' : static_cast<wchar_t>(static_cast<unsigned char>(c));
  return text;
}

}  // namespace

DxfTokens::DxfTokens(std::string_view bytes) : bytes_(bytes) {
  if (bytes_.starts_with(kBinaryMark)) {
    isBinary_ = true;
    at_ = kBinaryMark.size();
    // The first group is always code 0; with one-byte codes its text follows at once.
    hasByteCodes_ = at_ + 1 < bytes_.size() && bytes_[at_ + 1] != 0;
  } else if (bytes_.starts_with("\xEF\xBB\xBF")) {
    at_ = 3;
  }
}

KvIoMessage DxfTokens::here() const {
  KvIoMessage message;
  message.line = isBinary_ ? 0 : startLine_;
  message.offset = start_;
  message.code = code_;
  return message;
}

bool DxfTokens::takeMended(KvIoMessage& message) {
  if (!mended_) return false;
  mended_ = false;
  message = error_;
  return true;
}

bool DxfTokens::fail(int code, const wchar_t* expected, std::string_view found) {
  code_ = code;
  error_ = here();
  error_.text.Format(L"%s expected, \"%s\" found", expected, shown(found));
  if (tolerant_) {
    mended_ = true;
    return true;
  }
  failed_ = true;
  return false;
}

bool DxfTokens::next(RawGroup& group) {
  if (failed_) return false;
  start_ = at_;
  startLine_ = line_ + 1;
  code_ = -1;
  group = RawGroup();
  return isBinary_ ? nextBinary(group) : nextText(group);
}

bool DxfTokens::takeLine(std::string_view& line) {
  if (at_ >= bytes_.size()) return false;
  // Most lines are shorter than what a call would cost.
  constexpr std::size_t kNear = 16;
  std::size_t end = at_;
  const std::size_t near = std::min(at_ + kNear, bytes_.size());
  while (end < near && bytes_[end] != '\n') ++end;
  if (end == near) end = std::min(bytes_.find('\n', end), bytes_.size());
  line = bytes_.substr(at_, end - at_);
  at_ = end < bytes_.size() ? end + 1 : end;
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  ++line_;
  return true;
}

bool DxfTokens::nextText(RawGroup& group) {
  std::string_view codeLine, valueLine;
  std::int64_t code = 0;
  for (;;) {
    if (!takeLine(codeLine)) return false;
    if (readWhole(codeLine, code) && code >= -5 && code <= kHighestCode) break;
    if (trimmed(codeLine).empty() && at_ >= bytes_.size()) return false;
    if (!fail(-1, L"a group code", codeLine)) return false;
    // The recovering reader looks for the next line that can be a code.
    start_ = at_;
    startLine_ = line_ + 1;
  }
  group.code = code_ = static_cast<int>(code);
  group.kind = kvdxfKind(group.code);
  if (!takeLine(valueLine)) return fail(group.code, L"a value", "end of file") && false;
  return readValue(valueLine, group);
}

bool DxfTokens::readValue(std::string_view text, RawGroup& group) {
  group.bytes = text;
  switch (group.kind) {
    case KvDxfKind::Text:
    case KvDxfKind::Binary:
      return true;
    case KvDxfKind::Handle:
      if (readHandle(text, group.integer)) return true;
      if (isNameInOldFiles(group)) return true;
      return fail(group.code, L"a handle", text);
    case KvDxfKind::Point:
    case KvDxfKind::Real:
      return readReal(text, group.real) || fail(group.code, L"a real number", text);
    default:
      return readWhole(text, group.integer) || fail(group.code, L"a whole number", text);
  }
}

template <class T>
bool DxfTokens::take(T& value) {
  if (bytes_.size() - at_ < sizeof value) return false;
  std::memcpy(&value, bytes_.data() + at_, sizeof value);
  at_ += sizeof value;
  return true;
}

bool DxfTokens::takeZeroEnded(std::string_view& text) {
  const auto end = bytes_.find('\0', at_);
  if (end == std::string_view::npos) return false;
  text = bytes_.substr(at_, end - at_);
  at_ = end + 1;
  return true;
}

bool DxfTokens::nextBinary(RawGroup& group) {
  if (at_ >= bytes_.size()) return false;
  std::int16_t code = 0;
  std::uint8_t byteCode = 0;
  bool isRead = hasByteCodes_ ? take(byteCode) : take(code);
  if (hasByteCodes_ && isRead) {
    code = byteCode;
    if (byteCode == kLongCode) isRead = take(code);
  }
  if (!isRead) {
    at_ = bytes_.size();
    return fail(-1, L"a group code", "end of file") && false;
  }
  if (code < -5 || code > kHighestCode) {
    tolerant_ = false;  // nothing tells where the next group begins
    return fail(-1, L"a group code", std::to_string(code));
  }
  group.code = code_ = code;
  group.kind = kvdxfKind(code);
  bool isWhole = false;
  switch (group.kind) {
    case KvDxfKind::Text:
      isWhole = takeZeroEnded(group.bytes);
      break;
    case KvDxfKind::Handle:
      isWhole = takeZeroEnded(group.bytes);
      if (isWhole && !readHandle(group.bytes, group.integer) && !isNameInOldFiles(group))
        return fail(code, L"a handle", group.bytes);
      break;
    case KvDxfKind::Point:
    case KvDxfKind::Real:
      isWhole = take(group.real);
      if (isWhole && !std::isfinite(group.real)) {
        group.real = 0;
        return fail(code, L"a real number", "not a number");
      }
      break;
    case KvDxfKind::Int16: {
      std::int16_t value = 0;
      isWhole = take(value);
      group.integer = value;
      break;
    }
    case KvDxfKind::Int32: {
      std::int32_t value = 0;
      isWhole = take(value);
      group.integer = value;
      break;
    }
    case KvDxfKind::Int64:
      isWhole = take(group.integer);
      break;
    case KvDxfKind::Bool: {
      std::uint8_t value = 0;
      isWhole = take(value);
      group.integer = value;
      break;
    }
    case KvDxfKind::Binary: {
      std::uint8_t length = 0;
      isWhole = take(length) && bytes_.size() - at_ >= length;
      if (isWhole) {
        group.bytes = bytes_.substr(at_, length);
        at_ += length;
      }
      break;
    }
  }
  if (isWhole) return true;
  at_ = bytes_.size();  // what is cut off ends the file
  return fail(code, L"a whole value", "end of file") && false;
}

}  // namespace kvio
