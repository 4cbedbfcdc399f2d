#pragma once
// A shared wide text and a tagged value: what query results are made of.
#include <sys/single_threaded.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

#include "platform/text/cstring.h"

/// Wide text that never changes; copies share it. One pointer in size.
class _bstr_t {
 public:
  _bstr_t() = default;
  _bstr_t(std::wstring_view text) : block_(make(text)) {}
  _bstr_t(const wchar_t* text) : _bstr_t(text ? std::wstring_view(text) : std::wstring_view()) {}
  _bstr_t(const CString& text) : _bstr_t(text.view()) {}
  _bstr_t(const _bstr_t& other) noexcept : block_(other.block_) { retain(); }
  _bstr_t(_bstr_t&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  _bstr_t& operator=(_bstr_t other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~_bstr_t() { release(); }

  /// Text of `length` characters that `fill(wchar_t*)` writes.
  template <class Fill>
  static _bstr_t filled(std::size_t length, Fill fill) {
    _bstr_t out;
    if (length == 0) return out;
    out.block_ = allocate(length);
    fill(out.block_->text());
    return out;
  }

  std::size_t length() const { return block_ ? block_->length : 0; }
  std::wstring_view view() const {
    return block_ ? std::wstring_view(block_->text(), block_->length) : std::wstring_view();
  }
  /// Ends in a zero; never null.
  operator const wchar_t*() const { return block_ ? block_->text() : L""; }
  CString text() const { return CString(view()); }
  friend bool operator==(const _bstr_t& a, const _bstr_t& b) {
    return a.block_ == b.block_ || a.view() == b.view();
  }
  friend bool operator==(const _bstr_t& a, const wchar_t* b) {
    return a.view() == std::wstring_view(b ? b : L"");
  }

 private:
  friend class _variant_t;
  struct Block {
    std::atomic<std::size_t> users;
    std::size_t length;
    wchar_t* text() { return reinterpret_cast<wchar_t*>(this + 1); }
  };

  static Block* allocate(std::size_t length);
  static Block* make(std::wstring_view text);
  static void destroy(Block* block);

  // Counting needs no locked instruction while the process has one thread.
  void retain() noexcept {
    if (!block_) return;
    if (__libc_single_threaded)
      block_->users.store(block_->users.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    else
      block_->users.fetch_add(1, std::memory_order_relaxed);
  }
  void release() noexcept {
    if (!block_) return;
    if (__libc_single_threaded) {
      const std::size_t users = block_->users.load(std::memory_order_relaxed);
      block_->users.store(users - 1, std::memory_order_relaxed);
      if (users == 1) destroy(block_);
    } else if (block_->users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      destroy(block_);
    }
  }

  Block* block_ = nullptr;
};

using VARTYPE = unsigned short;

/// Kinds of value, by their stored numbers.
enum VARENUM : VARTYPE {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_BOOL = 11,
  VT_INT = 22,
};

inline constexpr short VARIANT_TRUE = -1;
inline constexpr short VARIANT_FALSE = 0;

/// The kind of a value, as exported signatures name it. The value itself is _variant_t's.
struct tagVARIANT {
  VARTYPE vt = VT_EMPTY;
};

/// Empty, null, a number or a text.
class _variant_t : public tagVARIANT {
 public:
  _variant_t() : number_{.integer = 0} {}
  _variant_t(short value) : _variant_t(VT_I2, value) {}
  _variant_t(int value) : _variant_t(VT_INT, value) {}
  _variant_t(long value) : _variant_t(VT_I4, value) {}
  _variant_t(bool value) : _variant_t(VT_BOOL, value ? VARIANT_TRUE : VARIANT_FALSE) {}
  /// VT_R8, or VT_R4, VT_DATE (days), VT_CY (held in ten-thousandths).
  _variant_t(double value, VARTYPE type = VT_R8);
  _variant_t(_bstr_t text) : number_{.integer = 0}, text_(std::move(text)) { vt = VT_BSTR; }
  _variant_t(const wchar_t* text) : _variant_t(_bstr_t(text)) {}
  _variant_t(const CString& text) : _variant_t(_bstr_t(text)) {}
  static _variant_t null() {
    _variant_t out;
    out.vt = VT_NULL;
    return out;
  }

  bool isText() const { return vt == VT_BSTR; }
  /// The whole number of VT_I2, VT_I4, VT_INT and VT_BOOL; 0 for the other kinds.
  std::int64_t integer() const;
  /// Text as it is, whole numbers in decimal digits, others in the shortest form that reads back the same
  /// (currency with up to four decimals), VT_BOOL as -1 or 0; empty and null give the empty text.
  CString text() const;
  /// The text of VT_BSTR without a copy; empty for the other kinds.
  const _bstr_t& bstr() const { return text_; }

  friend bool operator==(const _variant_t& a, const _variant_t& b);

 private:
  _variant_t(VARTYPE type, std::int64_t value) : number_{.integer = value} { vt = type; }
  union Number {
    std::int64_t integer;
    double real;
  };
  Number number_;
  _bstr_t text_;
};
