#pragma once
// The containers that the product's signatures name, over the standard library's. Indices are int.
// Reading outside the bounds gives a default value and writing there does nothing, so a wrong index from a
// sibling module never reaches wild memory.
#include <map>
#include <utility>
#include <vector>

#include "platform/text/cstring.h"

/// A growing array. `Arg` is how an element is handed in.
template <class T, class Arg = const T&>
class CArray {
 public:
  int GetSize() const { return static_cast<int>(items_.size()); }
  int GetCount() const { return GetSize(); }
  int GetUpperBound() const { return GetSize() - 1; }
  bool IsEmpty() const { return items_.empty(); }
  void SetSize(int size) { items_.resize(static_cast<std::size_t>(size < 0 ? 0 : size)); }
  void RemoveAll() { items_.clear(); }

  T GetAt(int index) const { return has(index) ? items_[at(index)] : T(); }
  T operator[](int index) const { return GetAt(index); }
  /// The element itself; a place of its own, thrown away, when `index` lies outside.
  T& ElementAt(int index) {
    if (has(index)) return items_[at(index)];
    outside_ = T();
    return outside_;
  }
  T& operator[](int index) { return ElementAt(index); }
  void SetAt(int index, Arg value) {
    if (has(index)) items_[at(index)] = value;
  }
  void SetAtGrow(int index, Arg value) {
    if (index < 0) return;
    if (index >= GetSize()) SetSize(index + 1);
    items_[at(index)] = value;
  }
  /// The index of the new element.
  int Add(Arg value) {
    items_.push_back(value);
    return GetUpperBound();
  }
  void InsertAt(int index, Arg value) {
    if (index < 0) return;
    if (index > GetSize()) SetSize(index);
    items_.insert(items_.begin() + index, value);
  }
  void RemoveAt(int index, int count = 1) {
    if (!has(index) || count <= 0) return;
    const int end = count > GetSize() - index ? GetSize() : index + count;
    items_.erase(items_.begin() + index, items_.begin() + end);
  }
  int Append(const CArray& other) {
    const int first = GetSize();
    items_.insert(items_.end(), other.items_.begin(), other.items_.end());
    return first;
  }
  void Copy(const CArray& other) { items_ = other.items_; }

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  bool has(int index) const { return index >= 0 && index < GetSize(); }
  static std::size_t at(int index) { return static_cast<std::size_t>(index); }

  std::vector<T> items_;
  T outside_{};
};

using CStringArray = CArray<CString>;
using CStringArrayA = CArray<CStringA>;

/// A map that is walked in the order of its keys.
template <class Key, class ArgKey, class Value, class ArgValue>
class CMap {
 public:
  int GetCount() const { return static_cast<int>(items_.size()); }
  bool IsEmpty() const { return items_.empty(); }
  bool Lookup(ArgKey key, Value& value) const {
    auto found = items_.find(key);
    if (found == items_.end()) return false;
    value = found->second;
    return true;
  }
  void SetAt(ArgKey key, ArgValue value) { items_.insert_or_assign(key, value); }
  Value& operator[](ArgKey key) { return items_[key]; }
  bool RemoveKey(ArgKey key) { return items_.erase(key) != 0; }
  void RemoveAll() { items_.clear(); }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  std::map<Key, Value> items_;
};

/// Width and height, in the units of their user.
struct CSize {
  int cx = 0;
  int cy = 0;
  friend bool operator==(const CSize&, const CSize&) = default;
};

/// The name and descent of a class that derives from CObject.
struct CRuntimeClass {
  const char* m_lpszClassName;
  const CRuntimeClass* m_pBaseClass;
  bool IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* at = this; at; at = at->m_pBaseClass)
      if (at == base) return true;
    return false;
  }
};

/// Base of classes that can tell at run time what they are.
class CObject {
 public:
  virtual ~CObject() = default;
  static const CRuntimeClass* GetThisClass() {
    static const CRuntimeClass own{"CObject", nullptr};
    return &own;
  }
  virtual const CRuntimeClass* GetRuntimeClass() const { return GetThisClass(); }
  bool IsKindOf(const CRuntimeClass* wanted) const { return GetRuntimeClass()->IsDerivedFrom(wanted); }
};

/// In a class derived from `base`: its own run-time class.
#define KORVANE_DYNAMIC(type, base)                              \
  static const CRuntimeClass* GetThisClass() {                   \
    static const CRuntimeClass own{#type, base::GetThisClass()}; \
    return &own;                                                 \
  }                                                              \
  const CRuntimeClass* GetRuntimeClass() const override {        \
    return GetThisClass();                                       \
  }
