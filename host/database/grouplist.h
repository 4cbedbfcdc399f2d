#pragma once
// A row of groups kept as they are, packed into one piece of memory: a group takes a head of four bytes and
// its value.
#include <cstdint>
#include <iterator>
#include <memory>
#include <span>

#include "host/database/dxffiler.h"

class KvDbGroupList {
 public:
  /// Walks the row; each step hands out the group as a view into the row, good until the row changes.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = KvDxfGroup;
    using difference_type = std::ptrdiff_t;
    using pointer = const KvDxfGroup*;
    using reference = KvDxfGroup;

    Iterator() = default;
    explicit Iterator(const wchar_t* at) : at_(at) {}
    KvDxfGroup operator*() const;
    Iterator& operator++();
    friend bool operator==(Iterator, Iterator) = default;

   private:
    const wchar_t* at_ = nullptr;
  };

  KvDbGroupList() = default;
  /// Of the groups, with no room to spare.
  explicit KvDbGroupList(std::span<const KvDxfGroup> groups);
  KvDbGroupList(const KvDbGroupList& other);
  KvDbGroupList(KvDbGroupList&& other) noexcept;
  KvDbGroupList& operator=(KvDbGroupList other) noexcept;
  ~KvDbGroupList() = default;

  Iterator begin() const { return Iterator(words_.get()); }
  Iterator end() const { return Iterator(words_.get() + used_); }
  bool isEmpty() const { return used_ == 0; }
  std::uint32_t count() const;
  /// Copies the group. One piece holds at most 16 GiB.
  void append(const KvDxfGroup& group);
  /// Gives the first group of the code, which is a whole number or a handle, another value. False when there
  /// is none.
  bool setInteger(int code, std::int64_t value);

 private:
  void reserve(std::size_t words);

  // Words of four bytes; texts lie in them as they are.
  std::unique_ptr<wchar_t[]> words_;
  std::uint32_t used_ = 0, capacity_ = 0;
};
