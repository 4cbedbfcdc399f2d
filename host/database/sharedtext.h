#pragma once
// Names that many objects bear alike: types and subclass markers of what the host doesn't model.
#include <memory>
#include <string>
#include <string_view>

/// A text that never changes; copies share it. Fresh, it is empty.
class KvDbSharedText {
 public:
  KvDbSharedText() = default;
  explicit KvDbSharedText(std::wstring_view text)
      : text_(text.empty() ? nullptr : std::make_shared<const std::wstring>(text)) {}
  std::wstring_view view() const { return text_ ? std::wstring_view(*text_) : std::wstring_view(); }
  bool isEmpty() const { return !text_; }

 private:
  std::shared_ptr<const std::wstring> text_;
};
