#pragma once
// Handles (the numbers by which objects stand in files) and object ids (how they are named while a drawing is
// open).
#include <compare>
#include <cstdint>
#include <functional>

#include "host/base/kvarray.h"
#include "host/base/rxclass.h"
#include "platform/text/cstring.h"

class KvDbDatabase;
class KvDbObject;
struct KvDbStub;

namespace KvDb {
enum OpenMode { kForRead = 0, kForWrite = 1, kForNotify = 2 };
}

/// The lasting number of an object within its drawing. 0 names nothing.
class KvDbHandle {
 public:
  constexpr KvDbHandle() = default;
  constexpr explicit KvDbHandle(std::uint64_t value) : value_(value) {}
  /// Hexadecimal digits of either case, at most 16; anything else gives the null handle.
  explicit KvDbHandle(const wchar_t* text);

  constexpr std::uint64_t value() const { return value_; }
  constexpr bool isNull() const { return value_ == 0; }
  /// Upper-case hexadecimal, without leading zeros, at most 16 characters.
  CString toText() const;
  /// The same into a buffer of at least 17 characters. Always true.
  bool getIntoAsciiBuffer(wchar_t* buffer) const;

  friend constexpr auto operator<=>(const KvDbHandle&, const KvDbHandle&) = default;

 private:
  std::uint64_t value_ = 0;
};

/// Names one object of an open drawing. Trivially copyable; valid as long as the drawing is open, also after
/// the object was erased.
class KvDbObjectId {
 public:
  constexpr KvDbObjectId() = default;
  constexpr explicit KvDbObjectId(KvDbStub* stub) : stub_(stub) {}

  static const KvDbObjectId kNull;

  bool isNull() const { return stub_ == nullptr; }
  /// In a drawing and not erased.
  bool isValid() const;
  bool isErased() const;
  KvDbHandle handle() const;
  KvDbDatabase* database() const;
  /// Null for a null id and for an id whose object has not been read.
  const KvRxClass* objectClass() const;
  KvDbStub* stub() const { return stub_; }
  void setNull() { stub_ = nullptr; }

  friend constexpr bool operator==(KvDbObjectId, KvDbObjectId) = default;
  friend bool operator<(KvDbObjectId a, KvDbObjectId b) { return std::less<KvDbStub*>()(a.stub_, b.stub_); }

 private:
  KvDbStub* stub_ = nullptr;
};

inline constexpr KvDbObjectId KvDbObjectId::kNull{};

using KvDbObjectIdArray = KvArray<KvDbObjectId>;

template <>
struct std::hash<KvDbObjectId> {
  std::size_t operator()(KvDbObjectId id) const { return std::hash<const void*>()(id.stub()); }
};
