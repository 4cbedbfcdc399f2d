#pragma once
// Calls into the symbol module. The library is loaded and freed around each call; nothing is kept.
#include "platform/system/dynamic_library.h"

namespace mek {

/// How the symbol module is named when it is loaded: by its bare name, through the search path, or by its
/// full path below the product's root.
enum class SiblingLoad { Bare, Full };

/// One export of the symbol module for the length of one call.
template <class Function>
class SiblingExport;

/// The loaded library; empty when it can't be loaded.
class SymbolModule {
 public:
  explicit SymbolModule(SiblingLoad load);
  ~SymbolModule();
  SymbolModule(const SymbolModule&) = delete;
  SymbolModule& operator=(const SymbolModule&) = delete;
  void* find(const char* name) const;

 private:
  HMODULE module_;
};

template <class Result, class... Args>
class SiblingExport<Result(Args...)> {
 public:
  SiblingExport(SiblingLoad load, const char* name)
      : module_(load), function_(reinterpret_cast<Result (*)(Args...)>(module_.find(name))) {}
  /// False without the library or the export.
  explicit operator bool() const { return function_ != nullptr; }
  Result operator()(Args... args) const { return function_(args...); }

 private:
  SymbolModule module_;
  Result (*function_)(Args...);
};

/// The text of an export that answers with a fresh buffer (array new), which is freed before the library is;
/// `fallBack` without library, export or buffer.
template <class... Args>
CString siblingText(SiblingLoad load, const char* name, const wchar_t* fallBack, Args... args) {
  const SiblingExport<wchar_t*(Args...)> function(load, name);
  const wchar_t* buffer = function ? function(args...) : nullptr;
  if (!buffer) return fallBack;
  const CString text(buffer);
  delete[] buffer;
  return text;
}

/// Of results told as numbers only the low byte counts.
template <class... Args>
bool siblingFlag(SiblingLoad load, const char* name, Args... args) {
  const SiblingExport<int(Args...)> function(load, name);
  constexpr int kLowByte = 0xFF;
  return function && (function(args...) & kLowByte) != 0;
}

}  // namespace mek
