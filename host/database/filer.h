#pragma once
// The typed binary filer: how an object's state passes into memory and back, for copies, undo and snapshots.
//
// A class writes its state in dwgOutFields and reads it in dwgInFields, in the same order. Ids are written by
// the kind of their reference, so that copying can tell what an object owns and what it only points to.
#include <cstdint>
#include <cstring>
#include <span>
#include <unordered_map>
#include <vector>

#include "host/base/kvad.h"
#include "host/database/objectid.h"
#include "host/geometry/point.h"

/// What a reference to another object means.
enum class KvDbReference : std::uint8_t {
  SoftPointer,    ///< looks at it
  HardPointer,    ///< needs it: a layer, a style
  SoftOwnership,  ///< owns it, but can do without: entries of dictionaries and tables
  HardOwnership,  ///< owns it and is nothing without: vertices, the entities of a block
};

class KvDbDwgFiler {
 public:
  /// What the filing is for.
  enum class Purpose : std::uint8_t { Copy, Undo };

  virtual ~KvDbDwgFiler() = default;
  virtual Purpose purpose() const = 0;

  virtual void writeBytes(const void* bytes, std::size_t size) = 0;
  virtual void readBytes(void* bytes, std::size_t size) = 0;
  virtual void writeId(KvDbObjectId id, KvDbReference reference) = 0;
  virtual KvDbObjectId readId(KvDbReference reference) = 0;

  void writeBool(bool v) { write<std::uint8_t>(v); }
  void writeInt8(std::int8_t v) { write(v); }
  void writeUInt8(std::uint8_t v) { write(v); }
  void writeInt16(std::int16_t v) { write(v); }
  void writeUInt16(std::uint16_t v) { write(v); }
  void writeInt32(std::int32_t v) { write(v); }
  void writeUInt32(std::uint32_t v) { write(v); }
  void writeInt64(std::int64_t v) { write(v); }
  void writeDouble(double v) { write(v); }
  void writePoint2d(const KvGePoint2d& v) { write(v); }
  void writePoint3d(const KvGePoint3d& v) { write(v); }
  void writeVector3d(const KvGeVector3d& v) { write(v); }
  void writeString(const CString& v);

  bool readBool() { return read<std::uint8_t>() != 0; }
  std::int8_t readInt8() { return read<std::int8_t>(); }
  std::uint8_t readUInt8() { return read<std::uint8_t>(); }
  std::int16_t readInt16() { return read<std::int16_t>(); }
  std::uint16_t readUInt16() { return read<std::uint16_t>(); }
  std::int32_t readInt32() { return read<std::int32_t>(); }
  std::uint32_t readUInt32() { return read<std::uint32_t>(); }
  std::int64_t readInt64() { return read<std::int64_t>(); }
  double readDouble() { return read<double>(); }
  KvGePoint2d readPoint2d() { return read<KvGePoint2d>(); }
  KvGePoint3d readPoint3d() { return read<KvGePoint3d>(); }
  KvGeVector3d readVector3d() { return read<KvGeVector3d>(); }
  CString readString();

 private:
  template <class T>
  void write(const T& v) {
    writeBytes(&v, sizeof v);
  }
  template <class T>
  T read() {
    T v{};
    readBytes(&v, sizeof v);
    return v;
  }
};

/// A filer into and out of bytes in memory. What is read beyond the end is zero.
class KvDbMemoryFiler : public KvDbDwgFiler {
 public:
  explicit KvDbMemoryFiler(Purpose purpose) : purpose_(purpose) {}
  Purpose purpose() const override { return purpose_; }
  void writeBytes(const void* bytes, std::size_t size) override {
    const auto* from = static_cast<const std::byte*>(bytes);
    bytes_.insert(bytes_.end(), from, from + size);
  }
  void readBytes(void* bytes, std::size_t size) override {
    if (size > bytes_.size() - at_) {
      std::memset(bytes, 0, size);
      at_ = bytes_.size();
      return;
    }
    std::memcpy(bytes, bytes_.data() + at_, size);
    at_ += size;
  }
  void writeId(KvDbObjectId id, KvDbReference reference) override;
  KvDbObjectId readId(KvDbReference reference) override;

  const std::vector<std::byte>& bytes() const { return bytes_; }
  std::vector<std::byte> takeBytes() { return std::move(bytes_); }
  void setBytes(std::span<const std::byte> bytes) {
    bytes_.assign(bytes.begin(), bytes.end());
    at_ = 0;
  }
  void rewind() { at_ = 0; }

 protected:
  std::vector<std::byte> bytes_;
  std::size_t at_ = 0;
  Purpose purpose_;
};

/// Old id to new id.
using KvDbIdMap = std::unordered_map<KvDbObjectId, KvDbObjectId>;

/// A memory filer that hands every id through a map while it reads. An id that the map lacks stays, or
/// becomes null when it belongs to another drawing than `target`.
class KvDbTranslatingFiler : public KvDbMemoryFiler {
 public:
  KvDbTranslatingFiler(const KvDbIdMap& map, const KvDbDatabase* target)
      : KvDbMemoryFiler(Purpose::Copy), map_(map), target_(target) {}
  KvDbObjectId readId(KvDbReference reference) override;

 private:
  const KvDbIdMap& map_;
  const KvDbDatabase* target_;
};

/// Collects the ids that an object files, by the kind of reference; nothing else is kept.
class KvDbReferenceFiler : public KvDbDwgFiler {
 public:
  struct Found {
    KvDbObjectId id;
    KvDbReference reference;
  };
  Purpose purpose() const override { return Purpose::Copy; }
  void writeBytes(const void*, std::size_t) override {}
  void readBytes(void* bytes, std::size_t size) override { std::memset(bytes, 0, size); }
  void writeId(KvDbObjectId id, KvDbReference reference) override {
    if (!id.isNull()) found_.push_back({id, reference});
  }
  KvDbObjectId readId(KvDbReference) override { return {}; }
  const std::vector<Found>& found() const { return found_; }

 private:
  std::vector<Found> found_;
};
