#pragma once
// Drawing files as a row of groups: code and raw value, from text or binary bytes.
#include <cstdint>
#include <string_view>

#include "host/database/dxffiler.h"
#include "host/io/drawing_file.h"

namespace kvio {

/// A group before its text is decoded.
struct RawGroup {
  int code = 0;
  KvDxfKind kind = KvDxfKind::Text;
  std::string_view bytes;    // Text, Binary (hexadecimal digits in text files, bytes in binary ones), Handle
  double real = 0;           // Real, Point (one coordinate)
  std::int64_t integer = 0;  // whole numbers and handles
};

/// Walks over the bytes of a whole file; refers to them.
class DxfTokens {
 public:
  explicit DxfTokens(std::string_view bytes);

  /// False at the end of the bytes and at a fault; hasFailed tells which.
  bool next(RawGroup& group);
  bool hasFailed() const { return failed_; }
  const KvIoMessage& error() const { return error_; }
  /// Where the group read last begins.
  KvIoMessage here() const;
  bool isBinary() const { return isBinary_; }
  /// A recovering reader goes on behind a value that can't be read, which then counts as 0 or empty;
  /// `wasMended` tells of it once.
  void tolerate() { tolerant_ = true; }
  bool takeMended(KvIoMessage& message);

 private:
  bool nextText(RawGroup& group);
  bool nextBinary(RawGroup& group);
  bool takeLine(std::string_view& line);
  bool readValue(std::string_view text, RawGroup& group);
  bool fail(int code, const wchar_t* expected, std::string_view found);
  template <class T>
  bool take(T& value);
  bool takeZeroEnded(std::string_view& text);

  std::string_view bytes_;
  std::size_t at_ = 0;
  std::size_t start_ = 0;
  std::uint64_t line_ = 0;  // lines taken so far
  std::uint64_t startLine_ = 0;
  int code_ = -1;
  bool isBinary_ = false;
  bool hasByteCodes_ = false;  // the oldest binary form
  bool failed_ = false;
  bool tolerant_ = false;
  bool mended_ = false;
  KvIoMessage error_;
};

}  // namespace kvio
