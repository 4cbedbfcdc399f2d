#pragma once
// The host's growing array. Indices are int; reading outside the bounds is the caller's mistake and is caught
// by an assertion in debug builds.
#include <algorithm>
#include <cassert>
#include <vector>

/// Names how elements move when an array grows; kept for signatures, the array itself decides.
template <class T>
class KvArrayMemCopyReallocator {};

template <class T, class R = KvArrayMemCopyReallocator<T>>
class KvArray {
 public:
  /// `physicalLength` elements are reserved; the array then grows by at least `growLength`.
  explicit KvArray(int physicalLength = 0, int growLength = 8)
      : growLength_(growLength < 1 ? 1 : growLength) {
    if (physicalLength > 0) items_.reserve(static_cast<std::size_t>(physicalLength));
  }

  int length() const { return static_cast<int>(items_.size()); }
  int logicalLength() const { return length(); }
  bool isEmpty() const { return items_.empty(); }
  int growLength() const { return growLength_; }

  const T& at(int index) const {
    assert(index >= 0 && index < length());
    return items_[static_cast<std::size_t>(index)];
  }
  T& at(int index) {
    assert(index >= 0 && index < length());
    return items_[static_cast<std::size_t>(index)];
  }
  const T& operator[](int index) const { return at(index); }
  T& operator[](int index) { return at(index); }
  const T& first() const { return at(0); }
  const T& last() const { return at(length() - 1); }
  T& last() { return at(length() - 1); }

  /// The index of the new element.
  int append(const T& value) {
    reserveForOne();
    items_.push_back(value);
    return length() - 1;
  }
  KvArray& append(const KvArray& other) {
    items_.insert(items_.end(), other.items_.begin(), other.items_.end());
    return *this;
  }
  KvArray& insertAt(int index, const T& value) {
    assert(index >= 0 && index <= length());
    items_.insert(items_.begin() + index, value);
    return *this;
  }
  KvArray& removeAt(int index) {
    assert(index >= 0 && index < length());
    items_.erase(items_.begin() + index);
    return *this;
  }
  /// Removes the first equal element; false when there is none.
  bool remove(const T& value) {
    auto found = std::find(items_.begin(), items_.end(), value);
    if (found == items_.end()) return false;
    items_.erase(found);
    return true;
  }
  void removeAll() { items_.clear(); }
  KvArray& setLogicalLength(int length) {
    items_.resize(static_cast<std::size_t>(length < 0 ? 0 : length));
    return *this;
  }
  KvArray& reverse() {
    std::reverse(items_.begin(), items_.end());
    return *this;
  }

  /// The index of the first equal element from `start` on, or -1.
  int find(const T& value, int start = 0) const {
    for (int i = std::max(start, 0); i < length(); ++i)
      if (at(i) == value) return i;
    return -1;
  }
  bool contains(const T& value) const { return find(value) >= 0; }

  const T* asArrayPtr() const { return items_.data(); }
  T* asArrayPtr() { return items_.data(); }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }
  auto begin() { return items_.begin(); }
  auto end() { return items_.end(); }
  friend bool operator==(const KvArray& a, const KvArray& b) { return a.items_ == b.items_; }

 private:
  void reserveForOne() {
    if (items_.size() == items_.capacity())
      items_.reserve(
          std::max(items_.size() + static_cast<std::size_t>(growLength_), items_.size() + items_.size() / 2));
  }

  std::vector<T> items_;
  int growLength_;
};
